// A bus of one test's own, which it may stop. Main thread.
#pragma once

#include <csignal>

#include <QDeadlineTimer>
#include <QProcess>

#include <gtest/gtest.h>

#include "support/QtEventLoop.h"

namespace orvo::test {

// Starts a program and waits for the first line that it prints.
inline QString startAndReadLine(QProcess& process, const QString& program, const QStringList& arguments) {
  process.start(program, arguments);
  const QDeadlineTimer deadline(waitLimit);
  while (!process.canReadLine() && process.state() != QProcess::NotRunning && !deadline.hasExpired())
    process.waitForReadyRead(100);
  return QString::fromUtf8(process.readLine()).trimmed();
}

class PrivateBus {
 public:
  PrivateBus()
      : address_(startAndReadLine(daemon_, QStringLiteral("dbus-daemon"),
                                  {QStringLiteral("--config-file=" ORVO_BUS_CONFIGURATION), QStringLiteral("--nofork"),
                                   QStringLiteral("--print-address")})) {
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

  const QString& address() const { return address_; }

 private:
  QProcess daemon_;
  const QString address_;
};

}  // namespace orvo::test
