#include "PrivateSession.h"

#include "support/QtEventLoop.h"

#include <QDBusMessage>
#include <QDBusPendingCall>

namespace orvo::test {

namespace {

const auto* const session = ::testing::AddGlobalTestEnvironment(new PrivateSession);

}  // namespace

void PrivateSession::SetUp() {
  application_ = std::make_unique<QGuiApplication>(count_, arguments_);
  const QByteArray home = home_.path().toUtf8();
  qputenv("HOME", home);
  qputenv("XDG_CONFIG_HOME", home + "/.config");
  qputenv("XDG_CACHE_HOME", home + "/.cache");
  qputenv("XDG_DATA_HOME", home + "/.local/share");
  qputenv("XDG_RUNTIME_DIR", home);
  bus_.setStandardErrorFile(QProcess::nullDevice());
  bus_.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
  ASSERT_TRUE(bus_.waitForReadyRead(10000));
  qputenv("DBUS_SESSION_BUS_ADDRESS", bus_.readLine().trimmed());
  ASSERT_TRUE(QDBusConnection::sessionBus().isConnected());
}

void PrivateSession::TearDown() {
  bus_.terminate();
  bus_.waitForFinished();
  application_.reset();
}

std::shared_ptr<QDBusConnection> otherConnection() {
  static int last = 0;
  const QString name = "other-" + QString::number(++last);
  const auto connection = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), name);
  return {new QDBusConnection(connection), [name](QDBusConnection* closed) {
            delete closed;
            QDBusConnection::disconnectFromBus(name);
          }};
}

QDBusMessage callAndWait(const QDBusConnection& connection, const QDBusMessage& call) {
  const QDBusPendingCall pending = connection.asyncCall(call);
  EXPECT_TRUE(runUntil([&] { return pending.isFinished(); })) << call.member().toStdString();
  return pending.reply();
}

}  // namespace orvo::test
