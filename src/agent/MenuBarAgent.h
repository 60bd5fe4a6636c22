// The agent's own interface, see platform/linux/AgentProtocol.h. Owned by main; main thread.
#pragma once

#include <cstdint>
#include <vector>

#include <QDBusConnection>
#include <QDBusContext>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include "agent/PanelReader.h"
#include "agent/TreeElement.h"
#include "agent/rules/StatusControls.h"

namespace orvo {

class MenuBarService;
class StatusNotifierWatcher;

class MenuBarAgent : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "local.orvo.MenuBarAgent1")
  Q_PROPERTY(bool WatcherHeld READ isWatcherHeld SCRIPTABLE true)

 public:
  MenuBarAgent(QDBusConnection bus, MenuBarService& service, StatusNotifierWatcher& watcher, PanelReader& panel);

  // False when another agent has it.
  bool claimName();
  bool isWatcherHeld() const;

  Q_SCRIPTABLE Q_SLOT uint Activate(const QList<int>& allowedSystemItems, const QStringList& allowedBundleIdentifiers);
  Q_SCRIPTABLE Q_SLOT void Invalidate(uint assertion);
  Q_SCRIPTABLE Q_SLOT QList<orvo::TreeElement> Tree();
  Q_SCRIPTABLE Q_SLOT QList<orvo::ItemRecord> Items() const;

 Q_SIGNALS:
  Q_SCRIPTABLE void ItemAdded(const QString& address, uint processIdentifier, const QString& bundleIdentifier);
  Q_SCRIPTABLE void TreeChanged();

 private:
  void announceHeld();
  QList<TreeElement> tree(const PanelReader::Reading& panel) const;

  QDBusConnection bus_;
  MenuBarService& service_;
  StatusNotifierWatcher& watcher_;
  PanelReader& panel_;
  // With the last tree, whoever asked for it, and when the panel was last looked at.
  std::vector<DockControls> told_;
  std::vector<DockControls> seen_;
};

}  // namespace orvo
