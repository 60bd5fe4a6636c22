// What tests on a session bus share: an application off screen, a home folder, a bus, and programs on
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
  int pid() const { return static_cast<int>(process_.processId()); }
  void signal(int number) const { ::kill(pid(), number); }
  // Waits for the next line that it prints; empty when it ends instead.
  QString readLine();
  // Waits for its answer, a line.
  QString ask(const QString& expression);

 private:
  QProcess process_;
};

std::unique_ptr<Program> sleeper();
// The agent, once it is on the bus and there is a tray.
std::unique_ptr<Program> agent();
// peer.py, which the agent takes for the application of this name.
std::unique_ptr<Program> peer(const QString& name);
// Once the bus knows it, or not.
bool hasOwner(const char* name, bool wanted = true);

// Files below the home folder, which is XDG_DATA_HOME too.
QString inHome(const QString& name);
QString writeFile(const QString& name, const QByteArray& content);

}  // namespace orvo::test
