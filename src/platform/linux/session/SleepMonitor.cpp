#include "platform/linux/session/SleepMonitor.h"

#include "platform/linux/bus/SessionBus.h"

#include <QDBusServiceWatcher>
#include <QPointer>

#include <chrono>
#include <utility>

namespace orvo {

using session_bus::latin;

namespace {

constexpr const char* loginService = "org.freedesktop.login1";
constexpr const char* loginPath = "/org/freedesktop/login1";
constexpr const char* loginInterface = "org.freedesktop.login1.Manager";

}  // namespace

SleepMonitor::SleepMonitor(NotificationCenter& center, MainQueue& mainQueue, QDBusConnection bus)
    : center_(center), mainQueue_(mainQueue), bus_(std::move(bus)) {
  if (!bus_.isConnected()) return;
  bus_.connect(latin(loginService), latin(loginPath), latin(loginInterface), QStringLiteral("PrepareForSleep"), this,
               SLOT(prepareForSleep(bool)));
  // A lock dies with the login manager that gave it, and so may the news that the machine is awake.
  auto* watcher = new QDBusServiceWatcher(latin(loginService), bus_, QDBusServiceWatcher::WatchForRegistration, this);
  connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] {
    if (std::exchange(sleeping_, false)) center_.post(Notification::didWake);
    delaySleep();
  });
  delaySleep();
}

void SleepMonitor::prepareForSleep(bool sleeping) {
  sleeping_ = sleeping;
  center_.post(sleeping ? Notification::willSleep : Notification::didWake);
  if (!sleeping) return delaySleep();
  mainQueue_.post([self = QPointer(this)] {
    if (self) self->delay_ = {};
  });
}

void SleepMonitor::delaySleep() {
  QDBusMessage message = session_bus::call(latin(loginService), latin(loginPath), loginInterface, "Inhibit");
  message << QStringLiteral("sleep") << QStringLiteral("Orvo") << QStringLiteral("Show hidden icons before sleep")
          << QStringLiteral("delay");
  message.setAutoStartService(false);
  session_bus::ask(bus_, message, session_bus::patience, this, [this](const QDBusMessage& reply) {
    // A lock that comes once sleep has begun would hold it up for nothing.
    if (reply.signature() == QLatin1String("h") && !sleeping_)
      delay_ = reply.arguments().constFirst().value<QDBusUnixFileDescriptor>();
  });
}

}  // namespace orvo
