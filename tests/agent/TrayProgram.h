// A real program with tray items, told over its standard input what to do. Killed with this object;
// main thread.
#pragma once

#include <csignal>

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "platform/linux/busSupport/PrivateBus.h"

namespace orvo::test {

// An application whose bundle identifier is the given name.
class TrayProgram {
 public:
  TrayProgram(const QTemporaryDir& folder, const QString& name) {
    const QString script = folder.filePath(name);
    QFile::copy(QStringLiteral(ORVO_TRAY_PROGRAM), script);
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    bus = startAndReadLine(process_, QStringLiteral("/usr/bin/python3"), {script});
    EXPECT_FALSE(bus.isEmpty());
  }
  TrayProgram(const TrayProgram&) = delete;
  TrayProgram& operator=(const TrayProgram&) = delete;
  ~TrayProgram() { kill(); }

  // The answer: "ok" and a result, or "error" and its name.
  QString say(const QString& command) {
    process_.write(command.toUtf8() + '\n');
    if (!runUntil([this] { return process_.canReadLine(); })) ADD_FAILURE() << command.toStdString();
    return QString::fromUtf8(process_.readLine()).trimmed();
  }

  void signal(int number) const { ::kill(static_cast<pid_t>(process_.processId()), number); }

  void kill() {
    process_.kill();
    process_.waitForFinished();
  }

  qint64 pid() const { return process_.processId(); }

  QString bus;  // its unique name

 private:
  QProcess process_;
};

}  // namespace orvo::test
