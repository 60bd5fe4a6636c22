#include "platform/linux/session/DesktopWorkspace.h"

#include "platform/linux/busSupport/TestSession.h"

#include <QDir>
#include <QFile>

#include <sys/wait.h>
#include <unistd.h>

namespace orvo {
namespace {

using test::inHome;
using test::runUntil;
using test::writeFile;

TEST(DesktopWorkspaceTest, AProgramIsTakenForLaunchedByItsFirstItemAloneAndForTerminatedByItsEnd) {
  const auto agent = test::agent();
  DesktopWorkspace workspace{std::nullopt};
  std::vector<Notification> told;
  for (const auto name : {Notification::applicationLaunched, Notification::applicationTerminated})
    workspace.notificationCenter().addObserver(name, [&](Notification news) { told.push_back(news); });
  for (const char* name : {"first", "second"}) {
    const auto program = test::peer(name);
    for (const char* item : {"'/item'", "'/another'"}) program->ask(QStringLiteral("register(%1)").arg(item));
    ASSERT_TRUE(runUntil([&] { return !told.empty(); }));
    program->end();
    EXPECT_TRUE(runUntil([&] { return told.back() == Notification::applicationTerminated; }));
    EXPECT_EQ(std::exchange(told, {}).size(), 2U);
  }
}

TEST(ApplicationRegistryTest, AWordOnWhoItIsHoldsForAKnownProcessTooAndNoNumberStandsForOneThatHasEnded) {
  ApplicationRegistry registry;
  int launches = 0;
  int ends = 0;
  QObject::connect(&registry, &ApplicationRegistry::launched, [&] { ++launches; });
  QObject::connect(&registry, &ApplicationRegistry::terminated, [&] { ++ends; });
  // What the agent conceals by has to be what Orvo allows.
  const auto known = test::sleeper();
  for (const char* name : {"", "org.example.Known", ""}) EXPECT_TRUE(registry.add(known->pid(), name));
  EXPECT_EQ(registry.application(known->pid())->bundleIdentifier, "org.example.Known");
  EXPECT_EQ(launches, 1);
  for (const int nobody : {0, -1, 4194305}) EXPECT_FALSE(registry.add(nobody)) << nobody;

  const pid_t child = ::fork();
  if (child == 0)
    for (;;) ::pause();
  EXPECT_TRUE(registry.add(child));
  ::kill(child, SIGKILL);
  siginfo_t zombie;
  ::waitid(P_PID, static_cast<id_t>(child), &zombie, WEXITED | WNOWAIT);
  EXPECT_FALSE(registry.add(child)) << "before its end is heard of";
  ::waitpid(child, nullptr, 0);
  QCoreApplication::processEvents();
  EXPECT_EQ(ends, 1);
}

// Where programs of the desktop would open something, scripts note what they were given.
class OpeningTest : public ::testing::Test {
 protected:
  OpeningTest() {
    const QByteArray file = inHome("opened").toUtf8();
    for (const char* name :
         {"bin/xdg-open", "bin/xfce4-accessibility-settings", "bin/gnome-control-center", "Test App.app/bin/orvo"})
      writeFile(name,
                "#!/bin/sh\necho \"$(basename \"$0\") $*\" > '" + file + "~'; mv '" + file + "~' '" + file + "'\n");
    writeFile("Test App.app/Info.json", R"({"CFBundleIdentifier": "local.orvo.Orvo"})");
    qputenv("PATH", inHome("bin:").toUtf8() + path_);
  }
  ~OpeningTest() override {
    qputenv("PATH", path_);
    QDir(inHome("applications")).removeRecursively();  // entries would name the programs of other tests
  }

  // What has been opened since it was asked last, once there is some; empty once `until` holds.
  static std::string opened(const std::function<bool()>& until = [] { return false; }) {
    QFile file(inHome("opened"));
    EXPECT_TRUE(runUntil([&] { return file.exists() || until(); }));
    std::string text = file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "";
    file.remove();
    return text;
  }

  const QByteArray path_ = qgetenv("PATH");
  const std::string bundle_ = inHome("Test App.app").toStdString();
  DesktopWorkspace workspace_{std::nullopt};
};

TEST_F(OpeningTest, EachPlaceGoesToTheProgramOfTheDesktopThatShowsItAndWhatNothingOpensIsTold) {
  constexpr const char* page = "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
  writeFile("failing/xdg-open", "#!/bin/sh\nexit 3\n");
  const QByteArray all = qgetenv("PATH");
  const struct {
    std::string url;
    const char* desktop;
    QByteArray path;
    std::string opened;
  } cases[]{{page, "XFCE", all, "xfce4-accessibility-settings \n"},
            {page, "ubuntu:GNOME", all, "gnome-control-center universal-access\n"},
            {page, "Other", all, "xfce4-accessibility-settings \n"},
            {page, "XFCE", "/nowhere", ""},
            {fileURL("/Applications", true), "XFCE", all, "xdg-open file:///Applications/\n"},
            {"https://example.org/a?b=c%20d", "XFCE", all, "xdg-open https://example.org/a?b=c%20d\n"},
            {"https://example.org/", "XFCE", inHome("failing:").toUtf8() + all, ""},
            {"https://example.org/", "XFCE", "/nowhere", ""}};
  for (const auto& [url, desktop, path, expected] : cases) {
    qputenv("XDG_CURRENT_DESKTOP", desktop);
    qputenv("PATH", path);
    int failures = 0;
    workspace_.openURL(url, [&] { ++failures; });
    EXPECT_EQ(failures, 0) << "told inside the call";
    EXPECT_EQ(opened([&] { return failures > 0; }), expected) << url;
    EXPECT_EQ(failures, expected.empty() ? 1 : 0) << url << " with " << path.toStdString();
  }
}

TEST_F(OpeningTest, ABundleThatRunsIsReopenedAndAnotherIsLaunched) {
  const auto copy = test::peer("copy");
  copy->ask("own('local.orvo.Orvo')");
  copy->ask("serve(Activate=lambda *_: print('reopened', flush=True) or '()')");
  workspace_.openURL(fileURL(bundle_, true), {});
  EXPECT_EQ(copy->readLine(), "reopened");
  copy->signal(SIGSTOP);  // One that hangs runs all the same.
  workspace_.openURL(fileURL(bundle_, true), {});
  EXPECT_FALSE(QFile::exists(inHome("opened")));
  copy->end();
  ASSERT_TRUE(test::hasOwner("local.orvo.Orvo", false));
  workspace_.openURL(fileURL(bundle_, true), {});
  EXPECT_EQ(opened(), "orvo \n");
}

TEST_F(OpeningTest, ARegisteredApplicationLiesWhereItsDesktopEntryStartsIt) {
  const std::pair<const char*, QByteArray> entries[]{
      {"local.orvo.Orvo", '"' + inHome("Test App.app").toUtf8() + "/bin/orvo\" %u"},
      {"plain", "sleep 1"},
      {"missing", "/nowhere/at/all"}};
  for (const auto& [name, command] : entries)
    writeFile(QStringLiteral("applications/%1.desktop").arg(name),
              "[Desktop Entry]\nType=Application\nName=x\nExec=" + command + "\n");
  EXPECT_EQ(workspace_.applicationPath("local.orvo.Orvo"), bundle_);
  EXPECT_EQ(workspace_.applicationPath("plain"), "/usr/bin/sleep");
  for (const char* none : {"missing", "unknown", "", "../applications/plain"}) {
    EXPECT_EQ(workspace_.applicationPath(none), std::nullopt) << none;
    EXPECT_TRUE(workspace_.runningApplications(none).empty()) << none;
  }
}

}  // namespace
}  // namespace orvo
