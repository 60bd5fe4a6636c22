#include "platform/linux/session/SessionBus.h"

#include "platform/linux/AgentProtocol.h"

namespace orvo::session_bus {

namespace {

constexpr const char* busService = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* itemPath = "/StatusNotifierItem";

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

std::vector<TrayItem> itemsAnswer(const QDBusMessage& reply) {
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("a(sus)")) return {};
  std::vector<TrayItem> items;
  const auto list = reply.arguments().constFirst().value<QDBusArgument>();
  list.beginArray();
  while (!list.atEnd()) {
    TrayItem item;
    quint32 process = 0;
    list.beginStructure();
    list >> item.address >> process >> item.bundle;
    list.endStructure();
    item.process = static_cast<std::int32_t>(process);
    items.push_back(std::move(item));
  }
  list.endArray();
  return items;
}

std::pair<QString, QString> splitItemAddress(const QString& address) {
  const auto slash = address.indexOf(QLatin1Char('/'));
  if (slash < 0) return {address, latin(itemPath)};
  return {address.left(slash), address.mid(slash)};
}

}  // namespace orvo::session_bus
