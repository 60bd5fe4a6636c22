// Tells which processes own tray items, as items come, which process the agent is, and what it says of its tree
// and of those who have something concealed. Owned by DesktopWorkspace; main thread. Without the agent, nothing
// can be hidden and no owner matters.
#pragma once

#include "platform/linux/bus/FollowedProperty.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace orvo {

class TrayOwners : public QObject {
  Q_OBJECT

 public:
  struct Found {
    std::function<void(std::int32_t processIdentifier)> agent;
    std::function<void()> agentLost;
    std::function<void()> treeChanged;
    // All processes that have something concealed, this one included.
    std::function<void(const QList<quint32>& processes)> requesters;
    // Whether the agent, and no panel that came first, manages the items.
    std::function<void(bool managesItems)> manager;
    // With the agent's word on whose item it is; empty for none.
    std::function<void(std::int32_t processIdentifier, const std::string& bundleIdentifier)> owner;
  };

  // How long begin() may wait for one answer.
  static constexpr std::chrono::milliseconds answerLimit{1000};

  TrayOwners(QDBusConnection bus, Found found);

  // Starts the agent if need be and reports all owners before it returns, within the limit; from
  // then on new ones as they come.
  void begin();

  // Has the agent end every concealment that is not this process's.
  void endOthers();
  // Has the agent take over the tray, see Workspace.
  void takeOver(std::function<void(const std::optional<std::string>& hindrance)> done);

 private:
  Q_SLOT void itemAdded(const QString& address, quint32 processIdentifier, const QString& bundleIdentifier);

  Q_SLOT void treeChanged() { found_.treeChanged(); }

  Q_SLOT void requestersChanged(const QDBusMessage& message);

  void subscribe();
  void agentStarted(const QString& name);
  void askItems();
  void askRequesters();
  void takeItems(const QDBusMessage& reply);

  QDBusConnection bus_;
  Found found_;
  FollowedProperty managesItems_;
};

}  // namespace orvo
