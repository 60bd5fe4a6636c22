#include "platform/linux/busSupport/TestSession.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <sys/prctl.h>

#include <csignal>
#include <optional>

namespace orvo::test {

namespace {

QTemporaryDir& home() {
  static QTemporaryDir folder;
  return folder;
}

class TestSession final : public ::testing::Environment {
  // glib and libdbus look at the environment once.
  void SetUp() override {
    for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"}) qputenv(name, home().path().toUtf8());
    static Program screen("Xvfb", {"-displayfd", "1", "-nolisten", "tcp"});
    qputenv("DISPLAY", ':' + screen.readLine().toUtf8());
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("GSETTINGS_BACKEND", "memory");
    static Program bus("dbus-daemon", {"--config-file=" ORVO_SOURCE "/tests/platform/linux/busSupport/bus.conf",
                                       "--nofork", "--print-address"});
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.readLine().toUtf8());
    application_.emplace(count_, &arguments_[0]);
  }
  void TearDown() override { application_.reset(); }

  int count_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  std::optional<QGuiApplication> application_;
};

const auto* const environment = ::testing::AddGlobalTestEnvironment(new TestSession);

}  // namespace

Program::Program(const QString& program, const QStringList& arguments) {
  process_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
  process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  process_.start(program, arguments);
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

std::unique_ptr<Program> agent() {
  auto started = std::make_unique<Program>(QStringLiteral(ORVO_AGENT), QStringList());
  const auto* bus = QDBusConnection::sessionBus().interface();
  for (const char* name : {"local.orvo.MenuBarAgent", "org.kde.StatusNotifierWatcher"})
    EXPECT_TRUE(runUntil([&] { return bus->isServiceRegistered(name).value(); }));
  return started;
}

std::unique_ptr<Program> peer(const QString& name) {
  qputenv("PYTHONPATH", ORVO_SOURCE "/desktop");
  QFile::copy(ORVO_SOURCE "/tests/desktop/peer.py", inHome(name));
  return std::make_unique<Program>("/usr/bin/python3", QStringList{inHome(name)});
}

std::shared_ptr<QDBusConnection> otherConnection() {
  static int last = 0;
  const QString name = "other-" + QString::number(++last);
  const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
  return {new QDBusConnection(QDBusConnection::connectToBus(address, name)), [name](QDBusConnection* closed) {
            delete closed;
            QDBusConnection::disconnectFromBus(name);
          }};
}

QString inHome(const QString& name) { return home().filePath(name); }

QString writeFile(const QString& name, const QByteArray& content, bool executable) {
  QDir().mkpath(QFileInfo(inHome(name)).path());
  QFile file(inHome(name));
  EXPECT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(content);
  if (executable) file.setPermissions(file.permissions() | QFile::ExeOwner);
  return file.fileName();
}

QString readFile(const QString& name) {
  QFile file(inHome(name));
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

}  // namespace orvo::test
