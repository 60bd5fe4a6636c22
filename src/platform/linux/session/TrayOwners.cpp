#include "platform/linux/session/TrayOwners.h"

#include "platform/linux/AgentProtocol.h"
#include "platform/linux/bus/SessionBus.h"

#include <QDBusServiceWatcher>

#include <utility>

namespace orvo {

using session_bus::latin;

namespace {

// The agent answers within six seconds.
constexpr std::chrono::milliseconds takeOverPatience{7000};

}  // namespace

TrayOwners::TrayOwners(QDBusConnection bus, Found found)
    : bus_(std::move(bus)),
      found_(std::move(found)),
      managesItems_(bus_, {agent_protocol::service, agent_protocol::path, agent_protocol::interface,
                           agent_protocol::heldProperty}) {
  connect(&managesItems_, &FollowedProperty::told, this, [this](bool managesItems) { found_.manager(managesItems); });
}

void TrayOwners::begin() {
  subscribe();
  const auto limit = static_cast<int>(answerLimit.count());
  const QDBusMessage items = bus_.call(session_bus::agentCall("Items"), QDBus::Block, limit);
  const auto agent = session_bus::processOf(bus_, latin(agent_protocol::service));
  if (!agent) return;
  found_.agent(*agent);
  askRequesters();
  managesItems_.fetch();
  if (items.type() == QDBusMessage::ReplyMessage) {
    takeItems(items);
  } else {
    askItems();
  }
}

void TrayOwners::subscribe() {
  managesItems_.follow();
  const QString agent = latin(agent_protocol::service);
  bus_.connect(agent, latin(agent_protocol::path), latin(agent_protocol::interface), QStringLiteral("ItemAdded"), this,
               SLOT(itemAdded(QString, quint32, QString)));
  bus_.connect(agent, latin(agent_protocol::path), latin(agent_protocol::interface), QStringLiteral("TreeChanged"),
               this, SLOT(treeChanged()));
  bus_.connect(agent, latin(agent_protocol::path), latin(agent_protocol::interface),
               QStringLiteral("RequestersChanged"), this, SLOT(requestersChanged(QDBusMessage)));
  auto* watch = new QDBusServiceWatcher(agent, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
  connect(watch, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString& oldOwner, const QString& newOwner) {
            if (!oldOwner.isEmpty()) found_.requesters({});
            if (!oldOwner.isEmpty()) found_.agentLost();
            if (!newOwner.isEmpty()) agentStarted(newOwner);
          });
}

void TrayOwners::itemAdded(const QString&, quint32 processIdentifier, const QString& bundleIdentifier) {
  found_.owner(static_cast<std::int32_t>(processIdentifier), bundleIdentifier.toStdString());
}

void TrayOwners::agentStarted(const QString& name) {
  session_bus::ask(bus_, session_bus::processQuestion(name), session_bus::patience, this,
                   [this](const QDBusMessage& reply) {
                     if (const auto process = session_bus::processAnswer(reply)) found_.agent(*process);
                   });
  askItems();
  askRequesters();
}

void TrayOwners::endOthers() { bus_.send(session_bus::agentCall("EndOthers")); }

void TrayOwners::takeOver(std::function<void(const std::optional<std::string>&)> done) {
  session_bus::ask(bus_, session_bus::agentCall("TakeOver"), takeOverPatience, this,
                   [done = std::move(done)](const QDBusMessage& reply) {
                     if (reply.type() == QDBusMessage::ReplyMessage) return done(std::nullopt);
                     const bool isAgents = QDBusError(reply).type() == QDBusError::Failed;
                     done(isAgents ? reply.errorMessage().toStdString()
                                   : "Orvo’s agent does not answer. Install Orvo again, then log in.");
                   });
}

void TrayOwners::askRequesters() {
  session_bus::ask(bus_, session_bus::agentCall("Requesters"), session_bus::patience, this,
                   [this](const QDBusMessage& reply) {
                     if (reply.type() == QDBusMessage::ReplyMessage) requestersChanged(reply);
                   });
}

void TrayOwners::requestersChanged(const QDBusMessage& message) {
  if (message.signature() != latin(agent_protocol::requestersForm)) return;
  found_.requesters(qdbus_cast<QList<quint32>>(message.arguments().value(0)));
}

void TrayOwners::askItems() {
  session_bus::ask(bus_, session_bus::agentCall("Items"), session_bus::patience, this,
                   [this](const QDBusMessage& reply) { takeItems(reply); });
}

void TrayOwners::takeItems(const QDBusMessage& reply) {
  for (const auto& item : session_bus::itemsAnswer(reply)) itemAdded({}, item.process, item.bundle);
}

}  // namespace orvo
