// A program beside the test, such as busPeer.py. Main thread.
#pragma once

#include "platform/linux/busSupport/PrivateBus.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace orvo::test {

// Ends with the object.
class Program {
 public:
  Program(const QString& program, const QStringList& arguments) { process_.start(program, arguments); }
  // A peer on the session bus; ready when it is made.
  explicit Program(const QStringList& peerArguments) {
    busName_ = startAndReadLine(process_, QStringLiteral("/usr/bin/python3"),
                                QStringList{QStringLiteral(ORVO_BUS_SUPPORT "/busPeer.py")} + peerArguments);
    EXPECT_FALSE(busName_.isEmpty()) << process_.readAllStandardError().toStdString();
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program() { end(); }

  void end() {
    process_.kill();
    process_.waitForFinished();
  }

  int pid() {
    process_.waitForStarted();
    return static_cast<int>(process_.processId());
  }
  const QString& busName() const { return busName_; }
  QProcess& process() { return process_; }

 private:
  QProcess process_;
  QString busName_;
};

}  // namespace orvo::test
