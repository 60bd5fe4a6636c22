#include "agent/IconRestorer.h"

#include <chrono>
#include <utility>
#include <vector>

#include <QDBusMessage>
#include <QDBusVariant>
#include <QTimer>

#include "agent/BusCall.h"
#include "agent/StatusNotifierWatcher.h"
#include "agent/rules/KeptItems.h"

namespace orvo {

namespace {

// A waiting panel has the name at once; an agent that is started again needs a moment.
constexpr std::chrono::seconds limit{3};

}  // namespace

IconRestorer::IconRestorer(QDBusConnection bus, pid_t agent, std::string kept)
    : bus_(std::move(bus)),
      kept_(std::move(kept)),
      owner_(watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange) {
  QTimer::singleShot(limit, this, &IconRestorer::finished);
  connect(&owner_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& owner) {
            if (!owner.isEmpty()) askWatcher();
          });
  // The agent's end may be known here before the bus has noticed it.
  send(bus_, aboutName(QStringLiteral("GetConnectionUnixProcessID"), watcherName), limit, this,
       [this, agent](const QDBusMessage& answer) {
         const bool isOwned = answer.type() == QDBusMessage::ReplyMessage;
         if (isOwned && answer.arguments().value(0).toUInt() != static_cast<uint>(agent)) askWatcher();
       });
}

void IconRestorer::askWatcher() {
  send(bus_, propertyOf(watcherName, watcherPath, watcherName, QStringLiteral("RegisteredStatusNotifierItems")), limit,
       this, [this](const QDBusMessage& answer) {
         if (answer.type() == QDBusMessage::ReplyMessage)
           registerMissing(answer.arguments().value(0).value<QDBusVariant>().variant().toStringList());
       });
}

void IconRestorer::registerMissing(const QStringList& listed) {
  std::vector<std::string> known;
  for (const QString& address : listed) known.push_back(address.toStdString());
  const auto missing = itemsToRestore(kept_, known);
  if (missing.empty()) Q_EMIT finished();
  open_ += missing.size();
  for (const std::string& name : missing) {
    send(bus_, {watcherName, watcherPath, watcherName, "RegisterStatusNotifierItem", {QString::fromStdString(name)}},
         limit, this, [this](const QDBusMessage&) {
           if (--open_ == 0) Q_EMIT finished();
         });
  }
}

}  // namespace orvo
