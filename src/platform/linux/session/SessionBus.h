// Shorthand for talking to the session bus and to the agent on it.
#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace orvo::session_bus {

inline constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

struct TrayItem {
  QString address;
  std::int32_t process = 0;
  QString bundle;  // as the agent names it; empty where unknown
};

inline QString latin(const char* text) { return QString::fromLatin1(text); }

QDBusMessage agentCall(const char* method);
QDBusMessage call(const QString& service, const QString& path, const char* interface, const char* method);
// GetConnectionUnixProcessID of a bus name.
QDBusMessage processQuestion(const QString& busName);
std::optional<std::int32_t> processAnswer(const QDBusMessage& reply);

// Empty for anything but a list of items.
std::vector<TrayItem> itemsAnswer(const QDBusMessage& reply);

// Calls `answer` with the reply, once, unless `context` is gone by then.
template <typename Answer>
void ask(const QDBusConnection& bus, const QDBusMessage& message, std::chrono::milliseconds limit, QObject* context,
         Answer answer) {
  auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message, static_cast<int>(limit.count())), context);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                   [watcher, answer = std::move(answer)]() mutable {
                     answer(watcher->reply());
                     watcher->deleteLater();
                   });
}

// What a service and its object path make of the address of a tray item.
std::pair<QString, QString> splitItemAddress(const QString& address);

}  // namespace orvo::session_bus
