#include "PrivateSession.h"

#include <QGuiApplication>
#include <QProcess>

#include <gtest/gtest.h>

namespace orvo::test {

namespace {

class PrivateSession final : public ::testing::Environment {
  void SetUp() override {
    application_ = std::make_unique<QGuiApplication>(count_, arguments_);
    bus_.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
    ASSERT_TRUE(bus_.waitForReadyRead(10000));
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus_.readLine().trimmed());
  }
  void TearDown() override {
    bus_.terminate();
    bus_.waitForFinished();
    application_.reset();
  }

  int count_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> application_;
  QProcess bus_;
};

const auto* const session = ::testing::AddGlobalTestEnvironment(new PrivateSession);

}  // namespace

std::shared_ptr<QDBusConnection> otherConnection() {
  static int last = 0;
  const QString name = "other-" + QString::number(++last);
  const auto connection = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), name);
  return {new QDBusConnection(connection), [name](QDBusConnection* closed) {
            delete closed;
            QDBusConnection::disconnectFromBus(name);
          }};
}

}  // namespace orvo::test
