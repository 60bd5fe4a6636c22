#include "platform/linux/bus/SessionBus.h"

#include "platform/linux/AgentProtocol.h"

namespace orvo::session_bus {

namespace {

constexpr const char* busService = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* noOwner = "org.freedesktop.DBus.Error.NameHasNoOwner";
constexpr const char* applicationInterface = "org.freedesktop.Application";

// Long enough for a busy machine.
constexpr int activationLimit = 2000;  // milliseconds

}  // namespace

QDBusMessage call(const QString& service, const QString& path, const char* interface, const char* method) {
  return QDBusMessage::createMethodCall(service, path, latin(interface), latin(method));
}

QDBusMessage agentCall(const char* method) {
  return call(latin(agent_protocol::service), latin(agent_protocol::path), agent_protocol::interface, method);
}

QDBusMessage processQuestion(const QString& busName) {
  QDBusMessage message = call(latin(busService), latin(busPath), busService, "GetConnectionUnixProcessID");
  message << busName;
  return message;
}

std::optional<std::int32_t> processAnswer(const QDBusMessage& reply) {
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("u")) return std::nullopt;
  return static_cast<std::int32_t>(reply.arguments().constFirst().toUInt());
}

std::optional<std::int32_t> processOf(const QDBusConnection& bus, const QString& busName) {
  constexpr int limit = 1000;  // milliseconds
  return processAnswer(bus.call(processQuestion(busName), QDBus::Block, limit));
}

QList<KnownItem> itemsAnswer(const QDBusMessage& reply) {
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != latin(agent_protocol::itemsForm)) return {};
  return qdbus_cast<QList<KnownItem>>(reply.arguments().constFirst());
}

QString activateApplication(const QDBusConnection& bus, const QString& identifier, const QVariantMap& platformData) {
  QDBusMessage message = call(identifier, applicationPath(identifier), applicationInterface, "Activate");
  message << platformData;
  message.setAutoStartService(false);
  const QString error = bus.call(message, QDBus::Block, activationLimit).errorName();
  // One that was ending answers in its own way, or not.
  return error.isEmpty() || processOf(bus, identifier) ? error : latin(noOwner);
}

bool meansNoOwner(const QString& error) {
  return error == QLatin1String(noOwner) || error == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown");
}

QString applicationPath(QString identifier) {
  return '/' + identifier.replace(QLatin1Char('.'), QLatin1Char('/')).replace(QLatin1Char('-'), QLatin1Char('_'));
}

}  // namespace orvo::session_bus
