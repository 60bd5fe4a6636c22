// A bus of the test's own, and programs that tell when they are ready. Main thread.
#pragma once

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>

#include <gtest/gtest.h>

#include "support/QtEventLoop.h"

namespace orvo::test {

// Starts a program and waits for the first line that it prints.
inline QString startAndReadLine(QProcess& process, const QString& program, const QStringList& arguments) {
  process.setReadChannel(QProcess::StandardOutput);
  process.start(program, arguments);
  const QDeadlineTimer deadline(10000);
  while (!process.canReadLine() && process.state() != QProcess::NotRunning && !deadline.hasExpired())
    process.waitForReadyRead(100);
  return QString::fromUtf8(process.readLine()).trimmed();
}

class PrivateBus {
 public:
  PrivateBus() {
    address_ = startAndReadLine(daemon_, QStringLiteral("dbus-daemon"),
                                {QStringLiteral("--config-file=") + writeConfiguration(), QStringLiteral("--nofork"),
                                 QStringLiteral("--print-address")});
    EXPECT_FALSE(address_.isEmpty());
  }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;
  ~PrivateBus() { stop(); }

  void signal(int number) const { ::kill(static_cast<pid_t>(daemon_.processId()), number); }

  void stop() {
    daemon_.kill();
    daemon_.waitForFinished();
  }

  // From now on the session bus of this process; libdbus looks only once.
  void becomeSessionBus() const { qputenv("DBUS_SESSION_BUS_ADDRESS", address_.toUtf8()); }

  const QString& address() const { return address_; }

  // A further connection, open as long as nobody closes it by its name.
  QDBusConnection connect(const QString& name) const { return QDBusConnection::connectToBus(address_, name); }

 private:
  // No service files: nothing of the machine is started.
  QString writeConfiguration() {
    QFile file(folder_.filePath(QStringLiteral("bus.conf")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<busconfig><type>session</type><listen>unix:dir=");
    file.write(folder_.path().toUtf8());
    file.write(
        "</listen><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
        "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
    return file.fileName();
  }

  QTemporaryDir folder_;
  QProcess daemon_;
  QString address_;
};

}  // namespace orvo::test
