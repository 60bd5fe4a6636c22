#include "agent/TrayHeir.h"

#include <chrono>
#include <utility>

#include <QDBusVariant>

#include "agent/BusCall.h"
#include "agent/StatusNotifierWatcher.h"

namespace orvo {

namespace {

constexpr std::chrono::seconds limit{25};

}  // namespace

TrayHeir::TrayHeir(QDBusConnection bus)
    : bus_(std::move(bus)), owners_(watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange) {
  connect(&owners_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& owner) { follow(owner); });
  bus_.connect({}, watcherPath, watcherName, QStringLiteral("StatusNotifierItemRegistered"), this,
               SLOT(itemRegistered(QString, QDBusMessage)));
  bus_.connect({}, watcherPath, watcherName, QStringLiteral("StatusNotifierItemUnregistered"), this,
               SLOT(itemUnregistered(QString, QDBusMessage)));
  askOwner();
}

void TrayHeir::askOwner() {
  send(bus_, aboutName(QStringLiteral("GetNameOwner"), watcherName), limit, this, [this](const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ReplyMessage) follow(answer.arguments().value(0).toString());
  });
}

// What the last one knew counts until another one tells.
void TrayHeir::follow(const QString& owner) {
  owner_ = owner == bus_.baseService() ? QString() : owner;
  if (owner_.isEmpty()) return;
  send(bus_, propertyOf(owner_, watcherPath, watcherName, QStringLiteral("RegisteredStatusNotifierItems")), limit, this,
       [this, owner](const QDBusMessage& answer) {
         if (answer.type() == QDBusMessage::ReplyMessage && owner == owner_)
           items_ = answer.arguments().value(0).value<QDBusVariant>().variant().toStringList();
       });
}

void TrayHeir::itemRegistered(const QString& item, const QDBusMessage& signal) {
  if (signal.service() == owner_ && !items_.contains(item)) items_.append(item);
}

void TrayHeir::itemUnregistered(const QString& item, const QDBusMessage& signal) {
  if (signal.service() == owner_) items_.removeAll(item);
}

}  // namespace orvo
