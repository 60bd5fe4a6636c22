#include "platform/linux/session/DesktopWorkspace.h"

#include "platform/linux/AgentProtocol.h"
#include "platform/linux/busSupport/TestSession.h"
#include "platform/linux/x11/XConnection.h"

#include <QDir>
#include <QFile>

#include <sys/wait.h>
#include <unistd.h>

namespace orvo {
namespace {

using test::inHome;
using test::runUntil;
using test::sleeper;
using test::writeFile;

constexpr const char* ownIdentifier = "local.orvo.Orvo";

struct Follower {
  explicit Follower(DesktopWorkspace& workspace) {
    auto& center = workspace.notificationCenter();
    center.addObserver(Notification::applicationLaunched, [this](Notification) { ++launches; });
    center.addObserver(Notification::applicationTerminated, [this](Notification) { ++exits; });
  }
  int launches = 0;
  int exits = 0;
};

// Its bundle identifier; empty when it is not running.
std::string identifierOf(const DesktopWorkspace& workspace, int process) {
  const auto application = workspace.runningApplication(process);
  return application ? application->bundleIdentifier.value_or("") : "";
}

// The screen as a window manager keeps it: a list of client windows on the root.
class Screen {
 public:
  void addWindow(int claimedProcess, const std::string& type = "") {
    const xcb_window_t window = xcb_generate_id(x_->get());
    xcb_create_window(x_->get(), 0, window, x_->root(), 0, 0, 9, 9, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, 0, 0, nullptr);
    if (claimedProcess > 0) set(window, "_NET_WM_PID", XCB_ATOM_CARDINAL, {static_cast<std::uint32_t>(claimedProcess)});
    if (!type.empty()) set(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {x_->atom("_NET_WM_WINDOW_TYPE_" + type)});
    windows_.push_back(window);
    set(x_->root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW, windows_);
    (void)x_->atom("_NET_CLIENT_LIST");  // answered once the server has it all
  }

 private:
  void set(xcb_window_t window, const char* name, xcb_atom_t type, const std::vector<std::uint32_t>& values) {
    xcb_change_property(x_->get(), XCB_PROP_MODE_REPLACE, window, x_->atom(name), type, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
  }

  std::unique_ptr<XConnection> x_ = XConnection::open({}, "test");
  std::vector<std::uint32_t> windows_;
};

TEST(DesktopWorkspaceTest, ProgramsFoundAtStartAreNoLaunchesAndLaterOnesCountUntilTheyExit) {
  Screen screen;
  const auto agent = test::agent();
  const auto withItem = test::peer("with-item");
  const auto withWindow = sleeper();
  withItem->ask("register('/item')");
  screen.addWindow(withWindow->pid());
  DesktopWorkspace workspace{std::string(ownIdentifier)};
  EXPECT_EQ(workspace.runningApplications().size(), 1U);
  Follower follower(workspace);
  EXPECT_EQ(identifierOf(workspace, withItem->pid()), "with-item");
  EXPECT_EQ(identifierOf(workspace, withWindow->pid()), "sleep");
  EXPECT_EQ(identifierOf(workspace, static_cast<int>(::getpid())), ownIdentifier);
  EXPECT_EQ(identifierOf(workspace, agent->pid()), agent_protocol::hostBundleIdentifier);
  EXPECT_EQ(workspace.runningApplications().size(), 4U);
  EXPECT_EQ(follower.launches, 0);

  const auto late = test::peer("late");
  screen.addWindow(late->pid());
  ASSERT_TRUE(runUntil([&] { return identifierOf(workspace, late->pid()) == "late"; }));
  late->ask("register('/item')");
  const auto last = test::peer("last");
  last->ask("register('/item')");
  ASSERT_TRUE(runUntil([&] { return identifierOf(workspace, last->pid()) == "last"; }));
  EXPECT_EQ(follower.launches, 2);
  const int ended = withItem->pid();
  withItem->end();
  EXPECT_TRUE(runUntil([&] { return follower.exits == 1; }));
  EXPECT_EQ(identifierOf(workspace, ended), "");
  EXPECT_EQ(workspace.runningApplications().size(), 5U);
}

TEST(ApplicationRegistryTest, AWordOnWhoItIsHoldsForAKnownProcessTooAndNoNumberStandsForOneThatHasEnded) {
  ApplicationRegistry registry;
  int launches = 0;
  int ends = 0;
  QObject::connect(&registry, &ApplicationRegistry::launched, [&] { ++launches; });
  QObject::connect(&registry, &ApplicationRegistry::terminated, [&] { ++ends; });
  // What the agent conceals by has to be what Orvo allows.
  const auto known = sleeper();
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

TEST(ClientWindowsTest, WindowsOfApplicationsAloneBelongToWhomTheyClaimElseToWhoeverIsConnected) {
  Screen screen;
  constexpr int insideItsSandbox = 4194305;
  std::vector<int> told;
  ClientWindows windows([&](int process) {
    told.push_back(process);
    return process != insideItsSandbox;
  });
  screen.addWindow(10);
  windows.begin();
  for (const char* type : {"DOCK", "DESKTOP", "NOTIFICATION", "SPLASH", "UTILITY"}) screen.addWindow(20, type);
  screen.addWindow(11, "DIALOG");
  screen.addWindow(12, "NORMAL");
  screen.addWindow(insideItsSandbox);
  screen.addWindow(0);
  EXPECT_TRUE(runUntil([&] { return told.size() >= 6; }));
  const int connected = ::getpid();
  EXPECT_EQ(told, (std::vector<int>{10, 11, 12, insideItsSandbox, connected, connected}));
}

// Where programs of the desktop would open something, scripts note what they were given.
class OpeningTest : public ::testing::Test {
 protected:
  OpeningTest() {
    const auto note = [](const QString& program) {
      const QByteArray file = inHome("opened").toUtf8();
      writeFile(program, "#!/bin/sh\necho \"$(basename $0) $*\" > '" + file + "~'; mv '" + file + "~' '" + file + "'\n",
                true);
    };
    for (const char* name : {"xdg-open", "xfce4-accessibility-settings", "gnome-control-center"})
      note(QStringLiteral("bin/") + name);
    note("Test App.app/bin/orvo");
    writeFile("Test App.app/Info.json", R"({"CFBundleIdentifier": "local.orvo.Orvo"})");
    qputenv("PATH", inHome("bin:").toUtf8() + path_);
    QFile::remove(inHome("opened"));
  }
  ~OpeningTest() override {
    qputenv("PATH", path_);
    QDir(inHome("applications")).removeRecursively();  // entries would name the programs of other tests
  }

  static bool opened() { return QFile::exists(inHome("opened")); }

  const QByteArray path_ = qgetenv("PATH");
  const std::string bundle_ = inHome("Test App.app").toStdString();
  DesktopWorkspace workspace_{std::nullopt};
};

TEST_F(OpeningTest, EachPlaceGoesToTheProgramOfTheDesktopThatShowsItAndWhatNothingOpensIsTold) {
  constexpr const char* page = "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
  writeFile("failing/xdg-open", "#!/bin/sh\nexit 3\n", true);
  const QByteArray all = qgetenv("PATH");
  const QByteArray failing = inHome("failing:").toUtf8() + all;
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
            {"https://example.org/", "XFCE", failing, ""},
            {"https://example.org/", "XFCE", "/nowhere", ""}};
  for (const auto& [url, desktop, path, expected] : cases) {
    QFile::remove(inHome("opened"));
    qputenv("XDG_CURRENT_DESKTOP", desktop);
    qputenv("PATH", path);
    int failures = 0;
    workspace_.openURL(url, [&] { ++failures; });
    EXPECT_EQ(failures, 0) << "told inside the call";
    EXPECT_TRUE(runUntil([&] { return failures > 0 || opened(); })) << url;
    EXPECT_EQ(test::readFile("opened").toStdString(), expected);
    EXPECT_EQ(failures, expected.empty() ? 1 : 0) << url << " with " << path.toStdString();
  }
}

TEST_F(OpeningTest, ABundleThatRunsIsReopenedAndAnotherIsLaunched) {
  for (const bool hung : {false, true}) {
    const auto copy = test::peer("copy");
    copy->ask("own('local.orvo.Orvo')");
    copy->ask("serve(Activate=lambda *_: print('reopened', flush=True) or '()')");
    if (hung) copy->signal(SIGSTOP);
    workspace_.openURL(fileURL(bundle_, true), {});
    EXPECT_EQ(hung ? "reopened" : copy->readLine(), "reopened");
    EXPECT_FALSE(opened());
  }
  const auto* bus = QDBusConnection::sessionBus().interface();
  ASSERT_TRUE(runUntil([&] { return !bus->isServiceRegistered(ownIdentifier).value(); }));
  workspace_.openURL(fileURL(bundle_, true), {});
  EXPECT_TRUE(runUntil(opened));
}

TEST_F(OpeningTest, ARegisteredApplicationLiesWhereItsDesktopEntryStartsIt) {
  const auto entry = [](const QString& id, const QString& exec) {
    writeFile("applications/" + id + ".desktop",
              "[Desktop Entry]\nType=Application\nName=x\nExec=" + exec.toUtf8() + "\n");
  };
  entry("local.orvo.Orvo", QString::fromStdString('"' + bundle_ + "/bin/orvo\" %u"));
  entry("plain", "sleep 1");
  entry("missing", "/nowhere/at/all");
  EXPECT_EQ(workspace_.applicationPath("local.orvo.Orvo"), bundle_);
  EXPECT_EQ(workspace_.applicationPath("plain"), "/usr/bin/sleep");
  for (const char* none : {"missing", "unknown", "", "../applications/plain"}) {
    EXPECT_EQ(workspace_.applicationPath(none), std::nullopt) << none;
    EXPECT_TRUE(workspace_.runningApplications(none).empty()) << none;
  }
}

}  // namespace
}  // namespace orvo
