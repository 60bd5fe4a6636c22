// A menu exported as com.canonical.dbusmenu, which is how a panel shows a status item's menu: it
// announces that it is about to show it, fetches the rows, and reports the choice. Owned by the
// status item; main thread only. Status menus are flat: submenus are not exported.
#pragma once

#include "platform/MainQueue.h"
#include "platform/Menu.h"
#include "platform/linux/bus/WireStruct.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>

namespace orvo {

// The wire types of the protocol.
struct MenuLayout {
  int id = 0;
  QVariantMap properties;
  QVariantList children;  // of this kind

  static auto membersOf(auto& layout) { return std::tie(layout.id, layout.properties, layout.children); }
};

struct MenuProperties {
  int id = 0;
  QVariantMap properties;

  static auto membersOf(auto& row) { return std::tie(row.id, row.properties); }
};

struct MenuEvent {
  int id = 0;
  QString name;
  QDBusVariant data;
  uint timestamp = 0;

  static auto membersOf(auto& event) { return std::tie(event.id, event.name, event.data, event.timestamp); }
};

class ExportedMenu final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
  Q_PROPERTY(uint Version READ version)
  Q_PROPERTY(QString TextDirection READ textDirection)
  Q_PROPERTY(QString Status READ status)
  Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

 public:
  // `aboutToShow` is called when a host is about to show the menu and may call setMenu() inside the
  // call. Chosen actions run from `queue`, after the host has its answer.
  ExportedMenu(QDBusConnection bus, QString path, MainQueue& queue, std::function<void()> aboutToShow);
  ~ExportedMenu() override;
  ExportedMenu(const ExportedMenu&) = delete;
  ExportedMenu& operator=(const ExportedMenu&) = delete;

  void setMenu(const Menu& menu);
  // The next menu is likely to read differently. Some panels size the menu before they fetch its new
  // rows, so those are asked for and told ahead of its showing.
  void invalidate();

  uint version() const { return 3; }
  QString textDirection() const { return "ltr"; }
  QString status() const { return "normal"; }
  QStringList iconThemePath() const { return {}; }

  Q_SLOT uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames, orvo::MenuLayout& layout);
  Q_SLOT QList<orvo::MenuProperties> GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames);
  Q_SLOT QDBusVariant GetProperty(int id, const QString& name);
  Q_SLOT void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
  Q_SLOT QList<int> EventGroup(const QList<orvo::MenuEvent>& events);
  Q_SLOT bool AboutToShow(int id);
  Q_SLOT QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

 signals:
  void LayoutUpdated(uint revision, int parent);
  void ItemsPropertiesUpdated(const QList<orvo::MenuProperties>& updated, const QList<orvo::MenuProperties>& removed);
  void ItemActivationRequested(int id, uint timestamp);

 private:
  bool announce();
  bool handle(int id, const QString& eventId);
  bool knows(int id) const { return id >= 0 && id <= static_cast<int>(menu_.items.size()); }
  QVariantMap properties(int id) const;

  QDBusConnection bus_;
  const QString path_;
  MainQueue& queue_;
  const std::function<void()> aboutToShow_;
  MainQueue::Handle refresh_ = MainQueue::Handle::none;
  Menu menu_;
  uint revision_ = 0;  // zero until a host has been given the first menu
};

}  // namespace orvo
