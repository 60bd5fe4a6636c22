#include "platform/linux/session/SleepMonitor.h"

#include "platform/linux/busSupport/TestSession.h"
#include "support/ManualMainQueue.h"

#include <QDBusArgument>

#include <vector>

namespace orvo {
namespace {

using test::runUntil;

// As long as logind's stand-in knows of one, sleep waits.
struct LoginManager {
  LoginManager() {
    EXPECT_TRUE(runUntil([&] { return bus->interface()->isServiceRegistered("org.freedesktop.login1").value(); }));
  }

  QDBusMessage call(const char* interface, const char* method, const QVariantList& arguments = {}) {
    auto message =
        QDBusMessage::createMethodCall("org.freedesktop.login1", "/org/freedesktop/login1", interface, method);
    message.setArguments(arguments);
    return bus->call(message);
  }
  void prepareForSleep(bool sleeping) {
    call("org.freedesktop.DBus.Mock", "EmitSignal",
         {"org.freedesktop.login1.Manager", "PrepareForSleep", "b", QVariantList{sleeping}});
  }
  bool delaysSleep() {
    const auto locks = call("org.freedesktop.login1.Manager", "ListInhibitors").arguments().value(0);
    const auto list = locks.value<QDBusArgument>();
    list.beginArray();
    if (list.atEnd()) return false;
    QString what, who, why, mode;
    list.beginStructure();
    list >> what >> who >> why >> mode;
    EXPECT_EQ(what + '/' + mode, "sleep/delay");
    return true;
  }

  std::shared_ptr<QDBusConnection> bus = test::otherConnection();
  test::Program process{"/usr/bin/env",
                        {"DBUS_SYSTEM_BUS_ADDRESS=" + qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                         "/usr/bin/python3", "-m", "dbusmock", "--template", "logind"}};
};

TEST(SleepMonitorTest, SleepWaitsUntilWhatTheObserversPostedHasRun) {
  LoginManager manager;
  NotificationCenter center;
  ManualMainQueue queue;
  std::vector<std::string> log;
  center.addObserver(Notification::willSleep, [&](Notification) {
    log.emplace_back("will sleep");
    queue.post([&] { log.emplace_back(manager.delaysSleep() ? "revealed in time" : "too late"); });
  });
  center.addObserver(Notification::didWake, [&](Notification) { log.emplace_back("did wake"); });
  const SleepMonitor monitor(center, queue, QDBusConnection::sessionBus());
  ASSERT_TRUE(runUntil([&] { return manager.delaysSleep(); }));
  manager.prepareForSleep(true);
  ASSERT_TRUE(runUntil([&] { return !log.empty(); }));
  queue.runPosted();
  EXPECT_TRUE(runUntil([&] { return !manager.delaysSleep(); }));
  manager.prepareForSleep(false);
  EXPECT_TRUE(runUntil([&] { return manager.delaysSleep(); }));
  EXPECT_EQ(log, (std::vector<std::string>{"will sleep", "revealed in time", "did wake"}));
}

}  // namespace
}  // namespace orvo
