#include "agent/BusCall.h"

#include <utility>

#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>

namespace orvo {

void send(const QDBusConnection& bus, const BusCall& call, std::chrono::milliseconds limit, QObject* context,
          std::function<void(const QDBusMessage&)> answer) {
  auto message = QDBusMessage::createMethodCall(call.service, call.path, call.interface, call.method);
  message.setArguments(call.arguments);
  message.setAutoStartService(false);
  auto* pending = new QDBusPendingCallWatcher(bus.asyncCall(message, static_cast<int>(limit.count())), context);
  QObject::connect(pending, &QDBusPendingCallWatcher::finished, context,
                   [answer = std::move(answer)](QDBusPendingCallWatcher* finished) {
                     finished->deleteLater();
                     answer(finished->reply());
                   });
}

BusCall propertyOf(const QString& service, const QString& path, const QString& interface, const QString& name) {
  return {service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"), {interface, name}};
}

BusCall aboutName(const QString& method, const QString& name) {
  const QString bus = QStringLiteral("org.freedesktop.DBus");
  return {bus, QStringLiteral("/org/freedesktop/DBus"), bus, method, {name}};
}

}  // namespace orvo
