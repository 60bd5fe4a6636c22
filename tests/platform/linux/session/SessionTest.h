// What the tests of the session adapters share: an application off screen, data folders of its own, one
// session bus, and programs that act on it.
#pragma once

#include "platform/linux/busSupport/PrivateBus.h"
#include "platform/linux/busSupport/Program.h"
#include "platform/linux/busSupport/ScriptedAgent.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace orvo::test {

class SessionTest : public ::testing::Test {
 public:
  SessionTest() = default;
  SessionTest(const SessionTest&) = delete;
  SessionTest& operator=(const SessionTest&) = delete;

 protected:
  static void SetUpTestSuite() {
    home();
    session();
    static int count = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    static QGuiApplication application(count, arguments);
  }

  // Entries of one test would name the programs of the next.
  ~SessionTest() override { QDir(home().filePath("applications")).removeRecursively(); }

  // Made before anything reads it: glib and libdbus look at the environment once.
  static QTemporaryDir& home() {
    static QTemporaryDir folder;
    qputenv("XDG_DATA_HOME", folder.path().toUtf8());
    qputenv("XDG_RUNTIME_DIR", folder.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("GSETTINGS_BACKEND", "memory");
    return folder;
  }

  static PrivateBus& session() {
    static PrivateBus instance;
    instance.becomeSessionBus();
    return instance;
  }

  static QString writeFile(const QString& name, const QByteArray& content, bool executable = false) {
    const QString path = home().filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    if (executable) file.setPermissions(file.permissions() | QFile::ExeOwner);
    return path;
  }

  static QString readFile(const QString& name) {
    QFile file(home().filePath(name));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
  }
};

inline std::unique_ptr<Program> sleeper() {
  return std::make_unique<Program>(QStringLiteral("sleep"), QStringList{QStringLiteral("600")});
}

}  // namespace orvo::test
