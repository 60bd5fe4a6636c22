// Shorthand for talking to the session bus and to the agent on it.
#pragma once

#include "platform/linux/bus/WireStruct.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <utility>

namespace orvo {

// One of what Items answers.
struct KnownItem {
  QString address;
  quint32 process = 0;
  QString bundle;  // as the agent names it; empty where unknown

  static auto membersOf(auto& item) { return std::tie(item.address, item.process, item.bundle); }
};

namespace session_bus {

inline constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

// For answers that nobody waits for: a busy service may take its time, and the bus tells of one that ends.
inline constexpr std::chrono::milliseconds patience{std::numeric_limits<int>::max()};

inline QString latin(const char* text) { return QString::fromLatin1(text); }

QDBusMessage agentCall(const char* method);
QDBusMessage call(const QString& service, const QString& path, const char* interface, const char* method);
// GetConnectionUnixProcessID of a bus name.
QDBusMessage processQuestion(const QString& busName);
std::optional<std::int32_t> processAnswer(const QDBusMessage& reply);
// Asks and waits, for a second at most: the bus itself answers.
std::optional<std::int32_t> processOf(const QDBusConnection& bus, const QString& busName);

// Empty for anything but a list of items.
QList<KnownItem> itemsAnswer(const QDBusMessage& reply);

// Calls `answer` with the reply, once, unless `context` is gone by then. The watcher goes with the answer.
template <typename Answer>
QDBusPendingCallWatcher* ask(const QDBusConnection& bus, const QDBusMessage& message, std::chrono::milliseconds limit,
                             QObject* context, Answer answer) {
  auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message, static_cast<int>(limit.count())), context);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                   [watcher, answer = std::move(answer)]() mutable {
                     answer(watcher->reply());
                     watcher->deleteLater();
                   });
  return watcher;
}

// Asks a running application to come to the front, and waits: the name of the error, empty on success. meansNoOwner()
// tells that no copy is running, or that the bus does not answer; a copy that is slow is a running one all the same.
QString activateApplication(const QDBusConnection& bus, const QString& identifier, const QVariantMap& platformData);
bool meansNoOwner(const QString& error);
// As the desktop entry specification derives it from the application's bus name.
QString applicationPath(QString identifier);

}  // namespace session_bus

}  // namespace orvo
