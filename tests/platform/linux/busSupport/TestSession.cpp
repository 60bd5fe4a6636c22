#include "platform/linux/busSupport/TestSession.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <sys/prctl.h>

namespace orvo::test {

Program::Program(const QString& program, const QStringList& arguments) {
  process_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
  process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  process_.start(program, arguments);
  process_.waitForStarted();
}

QString Program::readLine() {
  const QDeadlineTimer deadline(waitLimit);
  while (!process_.canReadLine() && process_.state() != QProcess::NotRunning && !deadline.hasExpired())
    process_.waitForReadyRead(100);
  return QString::fromUtf8(process_.readLine()).trimmed();
}

QString Program::ask(const QString& expression) {
  process_.write(expression.toUtf8() + '\n');
  return readLine();
}

std::unique_ptr<Program> sleeper() { return std::make_unique<Program>("sleep", QStringList{"600"}); }

std::unique_ptr<Program> agent() {
  auto started = std::make_unique<Program>(QStringLiteral(ORVO_AGENT), QStringList());
  EXPECT_TRUE(hasOwner("local.orvo.MenuBarAgent") && hasOwner("org.kde.StatusNotifierWatcher"));
  return started;
}

std::unique_ptr<Program> peer(const QString& name) {
  QFile::copy(ORVO_SOURCE "/tests/desktop/peer.py", inHome(name));
  return std::make_unique<Program>("/usr/bin/python3", QStringList{inHome(name)});
}

bool hasOwner(const char* name, bool wanted) {
  return runUntil(
      [&] { return QDBusConnection::sessionBus().interface()->isServiceRegistered(name).value() == wanted; });
}

QString inHome(const QString& name) { return qEnvironmentVariable("HOME") + '/' + name; }

QString writeFile(const QString& name, const QByteArray& content) {
  QDir().mkpath(QFileInfo(inHome(name)).path());
  QFile file(inHome(name));
  EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.setPermissions(file.permissions() | QFile::ExeOwner));
  file.write(content);
  return file.fileName();
}

}  // namespace orvo::test

int main(int count, char** arguments) {
  testing::InitGoogleTest(&count, arguments);
  static const QTemporaryDir home;
  for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"}) qputenv(name, home.path().toUtf8());
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("GSETTINGS_BACKEND", "memory");
  qputenv("PYTHONPATH", ORVO_SOURCE "/desktop");
  static orvo::test::Program bus("dbus-daemon", {"--session", "--nofork", "--print-address"});
  qputenv("DBUS_SESSION_BUS_ADDRESS", bus.readLine().toUtf8());
  const QGuiApplication application(count, arguments);
  return RUN_ALL_TESTS();
}
