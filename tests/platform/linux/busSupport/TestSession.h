// What tests on a session bus share: an application on a screen of its own, a home folder, a bus, and programs on
// it. All of it is there before the first test and until the process ends. Main thread.
#pragma once

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

#include "support/QtEventLoop.h"

namespace orvo::test {

// Ends with the object, or with this process.
class Program {
 public:
  Program(const QString& program, const QStringList& arguments);
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program() { end(); }

  void end() {
    process_.kill();
    process_.waitForFinished();
  }
  void signal(int number) { ::kill(pid(), number); }
  int pid() {
    process_.waitForStarted();
    return static_cast<int>(process_.processId());
  }
  // Waits for the next line that it prints; empty when it ends instead.
  QString readLine();
  // Waits for its answer, a line.
  QString ask(const QString& expression);

 private:
  QProcess process_;
};

inline std::unique_ptr<Program> sleeper() { return std::make_unique<Program>("sleep", QStringList{"600"}); }
// The agent, once it is on the bus and there is a tray.
std::unique_ptr<Program> agent();
// peer.py, which the agent takes for the application of this name.
std::unique_ptr<Program> peer(const QString& name);

// A connection to the bus as another process would have; closed with the last reference.
std::shared_ptr<QDBusConnection> otherConnection();

// Files below the home folder, which is XDG_DATA_HOME too.
QString inHome(const QString& name);
QString writeFile(const QString& name, const QByteArray& content, bool executable = false);
QString readFile(const QString& name);

}  // namespace orvo::test
