#include "agent/PanelViews.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

#include <QDBusVariant>

#include "agent/BusCall.h"
#include "agent/StatusNotifierWatcher.h"

namespace orvo {

namespace {

// xfce4-panel 4.18 asks three times, and turns to other work before the first.
constexpr int neededRounds = 5;

// Behind one that takes longer, others are no longer held back.
constexpr std::chrono::seconds patience{1};

// Whoever is stopped answers when he goes on.
constexpr std::chrono::milliseconds unlimited{std::numeric_limits<int>::max()};

}  // namespace

BusCall propertyOfItem(const TrayItem& item, const QString& name) {
  return propertyOf(QString::fromStdString(item.owner), QString::fromStdString(item.path),
                    QStringLiteral("org.kde.StatusNotifierItem"), name);
}

void PanelViews::ask(const TrayItem& item, const QString& property, std::function<void(const QString&)> answer) {
  send(bus_, propertyOfItem(item, property), unlimited, this,
       [answer = std::move(answer)](const QDBusMessage& message) {
         answer(message.arguments().value(0).value<QDBusVariant>().variant().toString());
       });
}

void PanelViews::follow(const TrayItem& item) {
  const QString address = QString::fromStdString(item.address());
  Following& following = *(open_[address] = std::make_unique<Following>());
  following.item = item;
  following.patience.setSingleShot(true);
  connect(&following.patience, &QTimer::timeout, this, [this, address] { Q_EMIT delayed(address); });
  following.patience.start(patience);
  // Panels stand in the queue for the watcher's name.
  send(bus_, aboutName(QStringLiteral("ListQueuedOwners"), watcherName), unlimited, this,
       ifStill(following, [this](Following& each, const QDBusMessage& message) {
         if (message.type() == QDBusMessage::ReplyMessage) each.panels = message.arguments().value(0).toStringList();
         each.panels.removeAll(bus_.baseService());
         if (each.panels.empty()) each.rounds = neededRounds;
         proceed(each);
       }));
}

void PanelViews::proceed(Following& following) {
  if (following.rounds < neededRounds) return askPanels(following);
  const QString address = QString::fromStdString(following.item.address());
  open_.erase(address);
  Q_EMIT made(address);
}

void PanelViews::askPanels(Following& following) {
  following.answers = static_cast<int>(following.panels.size());
  for (const QString& panel : std::as_const(following.panels)) {
    send(bus_, propertyOf(panel, watcherPath, watcherName, QStringLiteral("ProtocolVersion")), unlimited, this,
         ifStill(following, [this](Following& each, const QDBusMessage&) {
           if (--each.answers == 0) askItem(each);
         }));
  }
}

void PanelViews::askItem(Following& following) {
  send(bus_, propertyOfItem(following.item, QStringLiteral("Status")), unlimited, this,
       ifStill(following, [this](Following& each, const QDBusMessage&) {
         ++each.rounds;
         proceed(each);
       }));
}

std::function<void(const QDBusMessage&)> PanelViews::ifStill(
    const Following& following, std::function<void(Following&, const QDBusMessage&)> step) {
  return [this, address = QString::fromStdString(following.item.address()), same = &following,
          step = std::move(step)](const QDBusMessage& message) {
    const auto found = open_.find(address);
    if (found != open_.end() && found->second.get() == same) step(*found->second, message);
  };
}

}  // namespace orvo
