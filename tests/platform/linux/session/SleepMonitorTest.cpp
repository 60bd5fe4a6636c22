#include "platform/linux/session/SleepMonitor.h"

#include "SessionTest.h"
#include "support/ManualMainQueue.h"

#include <QDBusArgument>
#include <QDBusInterface>

#include <vector>

namespace orvo {
namespace {

using test::runUntil;

class SleepMonitorTest : public test::SessionTest {
 protected:
  struct LoginManager {
    explicit LoginManager(const test::PrivateBus& bus) : connection(bus.connect(QStringLiteral("logind-user"))) {
      auto environment = QProcessEnvironment::systemEnvironment();
      environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), bus.address());
      process.setProcessEnvironment(environment);
      process.start(QStringLiteral("/usr/bin/python3"), {"-m", "dbusmock", "--template", "logind"});
      const QString name = QStringLiteral("org.freedesktop.login1");
      EXPECT_TRUE(runUntil([&] { return connection.interface()->isServiceRegistered(name).value(); }));
    }
    LoginManager(const LoginManager&) = delete;
    LoginManager& operator=(const LoginManager&) = delete;
    ~LoginManager() {
      process.kill();
      process.waitForFinished();
    }

    QDBusMessage call(const char* interface, const char* method, const QVariantList& arguments = {}) {
      auto message =
          QDBusMessage::createMethodCall("org.freedesktop.login1", "/org/freedesktop/login1", interface, method);
      message.setArguments(arguments);
      return connection.call(message);
    }
    void prepareForSleep(bool sleeping) {
      call("org.freedesktop.DBus.Mock", "EmitSignal",
           {"org.freedesktop.login1.Manager", "PrepareForSleep", "b", QVariantList{sleeping}});
    }
    qsizetype locks() {
      const auto list =
          call("org.freedesktop.login1.Manager", "ListInhibitors").arguments().value(0).value<QDBusArgument>();
      qsizetype count = 0;
      for (list.beginArray(); !list.atEnd(); ++count) {
        QString what, who, why, mode;
        list.beginStructure();
        list >> what >> who >> why >> mode;
        quint32 user = 0, holder = 0;
        list >> user >> holder;
        list.endStructure();
        EXPECT_EQ(what + '/' + mode, "sleep/delay");
      }
      list.endArray();
      return count;
    }

    QDBusConnection connection;
    QProcess process;
  };
};

TEST_F(SleepMonitorTest, SleepWaitsUntilWhatTheObserversPostedHasRun) {
  const test::PrivateBus system;
  LoginManager manager(system);
  NotificationCenter center;
  ManualMainQueue queue;
  std::vector<std::string> log;
  center.addObserver(Notification::willSleep, [&](Notification) {
    log.emplace_back("will sleep");
    queue.post([&] { log.emplace_back(manager.locks() == 1 ? "revealed in time" : "too late"); });
  });
  center.addObserver(Notification::didWake, [&](Notification) { log.emplace_back("did wake"); });
  const SleepMonitor monitor(center, queue, system.connect(QStringLiteral("sleep-monitor")));
  ASSERT_TRUE(runUntil([&] { return manager.locks() == 1; }));
  manager.prepareForSleep(true);
  ASSERT_TRUE(runUntil([&] { return !log.empty(); }));
  queue.runPosted();
  EXPECT_TRUE(runUntil([&] { return manager.locks() == 0; }));
  manager.prepareForSleep(false);
  EXPECT_TRUE(runUntil([&] { return manager.locks() == 1; }));
  EXPECT_EQ(log, (std::vector<std::string>{"will sleep", "revealed in time", "did wake"}));
}

}  // namespace
}  // namespace orvo
