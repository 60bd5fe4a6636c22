#include "platform/linux/busSupport/TestSession.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <dlfcn.h>
#include <sys/prctl.h>

#include <csignal>
#include <cstdarg>
#include <optional>

#ifdef __SANITIZE_THREAD__
// QProcess starts a child on shared memory. The thread sanitizer's own clone() counts such a call as ended twice and
// sees none of the thread's locks from then on, so QProcess gets the C library's instead.
extern "C" __attribute__((visibility("default"))) int clone(int (*child)(void*), void* stack, int flags, void* argument,
                                                            ...) noexcept {
  using Clone = int (*)(int (*)(void*), void*, int, void*, void*);
  static const auto real = reinterpret_cast<Clone>(dlsym(dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD), "clone"));
  va_list rest;
  va_start(rest, argument);
  void* const descriptor = va_arg(rest, void*);
  va_end(rest);
  return real(child, stack, flags, argument, descriptor);
}
#endif

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
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("GSETTINGS_BACKEND", "memory");
    static Program bus("dbus-daemon", {"--config-file=" ORVO_BUS_SUPPORT "/bus.conf", "--nofork", "--print-address"});
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
  process_.start(program, arguments);
}

Program::Program(const QStringList& peerArguments)
    : Program("/usr/bin/python3", QStringList{ORVO_BUS_SUPPORT "/busPeer.py"} + peerArguments) {
  busName_ = readLine();
  EXPECT_FALSE(busName_.isEmpty()) << process_.readAllStandardError().toStdString();
}

QString Program::readLine() {
  const QDeadlineTimer deadline(waitLimit);
  while (!process_.canReadLine() && process_.state() != QProcess::NotRunning && !deadline.hasExpired())
    process_.waitForReadyRead(100);
  return QString::fromUtf8(process_.readLine()).trimmed();
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
