#include "platform/linux/session/DesktopWorkspace.h"

#include "platform/linux/busSupport/ScriptedAgent.h"
#include "platform/linux/x11/XConnection.h"

#include <QDir>
#include <QFile>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvo {
namespace {

using test::inHome;
using test::Program;
using test::runUntil;
using test::ScriptedAgent;
using test::sleeper;
using test::writeFile;

constexpr const char* ownIdentifier = "local.orvo.Orvo";

class DesktopWorkspaceTest : public ::testing::Test {
 protected:
  struct Follower {
    explicit Follower(DesktopWorkspace& workspace) {
      auto& center = workspace.notificationCenter();
      center.addObserver(Notification::applicationLaunched, [this](Notification) { ++launches; });
      center.addObserver(Notification::applicationTerminated, [this](Notification) { ++exits; });
    }
    int launches = 0;
    int exits = 0;
  };

  static ItemRecord item(int pid, const char* bundle = "") { return {":1.1", static_cast<quint32>(pid), bundle}; }

  static bool runs(const DesktopWorkspace& workspace, int pid) { return workspace.runningApplication(pid).has_value(); }
};

// The screen as a window manager keeps it: a list of client windows on the root.
class Screen {
 public:
  Screen() { qputenv("DISPLAY", display_); }
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  ~Screen() { qunsetenv("DISPLAY"); }

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

  Program server_{"Xvfb", {"-displayfd", "1", "-nolisten", "tcp"}};
  QByteArray display_ = ':' + server_.readLine().toUtf8();
  std::unique_ptr<XConnection> x_ = XConnection::open(display_.toStdString(), "test");
  std::vector<std::uint32_t> windows_;
};

TEST_F(DesktopWorkspaceTest, ProgramsFoundAtStartAreNoLaunchesAndLaterOnesCountUntilTheyExit) {
  Screen screen;
  ScriptedAgent agent;
  auto withItem = sleeper();
  auto withWindow = sleeper();
  auto late = sleeper();
  agent.setItems({item(withItem->pid()), item(0), item(4194305)});
  screen.addWindow(withWindow->pid());
  DesktopWorkspace workspace{std::string(ownIdentifier)};
  EXPECT_EQ(workspace.runningApplications().size(), 1U);
  Follower follower(workspace);
  ASSERT_TRUE(runs(workspace, withItem->pid()));
  EXPECT_EQ(workspace.runningApplication(withItem->pid())->bundleIdentifier, "sleep");
  EXPECT_TRUE(runs(workspace, withWindow->pid()));
  EXPECT_EQ(workspace.runningApplication(static_cast<int>(::getpid()))->bundleIdentifier, ownIdentifier);
  EXPECT_EQ(workspace.runningApplications().size(), 3U);
  EXPECT_EQ(follower.launches, 0);

  screen.addWindow(late->pid());
  ASSERT_TRUE(runUntil([&] { return runs(workspace, late->pid()); }));
  agent.addItem(item(late->pid()));
  auto last = sleeper();
  agent.addItem(item(last->pid()));
  ASSERT_TRUE(runUntil([&] { return runs(workspace, last->pid()); }));
  EXPECT_EQ(follower.launches, 2);

  const int ended = withItem->pid();
  withItem->end();
  EXPECT_TRUE(runUntil([&] { return follower.exits == 1; }));
  EXPECT_FALSE(runs(workspace, ended));
  EXPECT_EQ(workspace.runningApplications().size(), 4U);
}

// What the agent conceals by has to be what Orvo allows.
TEST_F(DesktopWorkspaceTest, TheAgentsWordOnWhoseItemItIsHoldsForAKnownProgramToo) {
  Screen screen;
  ScriptedAgent agent;
  const auto first = sleeper();
  const auto second = sleeper();
  agent.setItems({item(first->pid(), "org.example.First")});
  screen.addWindow(second->pid());
  DesktopWorkspace workspace(std::nullopt);
  Follower follower(workspace);
  EXPECT_EQ(workspace.runningApplication(first->pid())->bundleIdentifier, "org.example.First");
  EXPECT_EQ(workspace.runningApplication(second->pid())->bundleIdentifier, "sleep");
  agent.addItem(item(second->pid(), "org.example.Second"));
  EXPECT_TRUE(
      runUntil([&] { return workspace.runningApplication(second->pid())->bundleIdentifier == "org.example.Second"; }));
  EXPECT_EQ(follower.launches, 0);
}

TEST_F(DesktopWorkspaceTest, ANumberWhoseProcessHasEndedIsNotTakenForItBeforeTheEndIsHeardOf) {
  ApplicationRegistry registry;
  int ends = 0;
  QObject::connect(&registry, &ApplicationRegistry::terminated, [&] { ++ends; });
  const pid_t child = ::fork();
  if (child == 0)
    for (;;) ::pause();
  EXPECT_TRUE(registry.add(child));
  ::kill(child, SIGKILL);
  siginfo_t zombie;
  ::waitid(P_PID, static_cast<id_t>(child), &zombie, WEXITED | WNOWAIT);
  EXPECT_FALSE(registry.add(child));
  ::waitpid(child, nullptr, 0);
  QCoreApplication::processEvents();
  EXPECT_EQ(ends, 1);
}

TEST_F(DesktopWorkspaceTest, WindowsOfApplicationsAloneBelongToWhomTheyClaimElseToWhoeverIsConnected) {
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

TEST_F(DesktopWorkspaceTest, TheAgentIsTheHostFromItsStartToItsEndWhateverItAnswers) {
  DesktopWorkspace workspace(std::nullopt);
  Follower follower(workspace);
  const auto host = [&]() -> int {
    for (const auto& application : workspace.runningApplications()) {
      if (application.bundleIdentifier == agent_protocol::hostBundleIdentifier) return application.processIdentifier;
    }
    return 0;
  };
  EXPECT_EQ(host(), 0);
  Program agent({QString::fromLatin1(agent_protocol::service)});
  EXPECT_TRUE(runUntil([&] { return host() == agent.pid(); }));
  DesktopWorkspace later(std::nullopt);
  Follower laterFollower(later);
  EXPECT_TRUE(runs(later, agent.pid()));
  agent.end();
  EXPECT_TRUE(runUntil([&] { return host() == 0 && follower.exits == 1; }));
}

// Where programs of the desktop would open something, scripts note what they were given.
class OpeningTest : public DesktopWorkspaceTest {
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

TEST_F(OpeningTest, EachPlaceGoesToTheProgramOfTheDesktopThatShowsIt) {
  constexpr const char* page = "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
  const struct {
    std::string url;
    const char* desktop;
    std::string opened;
  } cases[]{{page, "XFCE", "xfce4-accessibility-settings \n"},
            {page, "ubuntu:GNOME", "gnome-control-center universal-access\n"},
            {page, "Other", "xfce4-accessibility-settings \n"},
            {fileURL("/Applications", true), "XFCE", "xdg-open file:///Applications/\n"},
            {"https://example.org/a?b=c%20d", "XFCE", "xdg-open https://example.org/a?b=c%20d\n"}};
  for (const auto& [url, desktop, expected] : cases) {
    QFile::remove(inHome("opened"));
    qputenv("XDG_CURRENT_DESKTOP", desktop);
    workspace_.openURL(url, {});
    EXPECT_TRUE(runUntil(opened)) << url;
    EXPECT_EQ(test::readFile("opened").toStdString(), expected);
  }
}

TEST_F(OpeningTest, WhatNothingOpensIsTold) {
  writeFile("bin/xdg-open", "#!/bin/sh\nexit 3\n", true);
  const QByteArray path = qgetenv("PATH");
  constexpr const char* page = "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
  int failures = 0;
  for (const auto& [url, programs] : {std::pair{"https://example.org/", path.constData()},
                                      {"https://example.org/", "/nowhere"},
                                      {page, "/nowhere"}}) {
    qputenv("PATH", programs);
    const int before = failures;
    workspace_.openURL(url, [&] { ++failures; });
    EXPECT_EQ(failures, before) << "told inside the call";
    EXPECT_TRUE(runUntil([&] { return failures > before; })) << url << " with " << programs;
  }
  EXPECT_EQ(failures, 3);
}

TEST_F(OpeningTest, ABundleThatRunsIsReopenedAndAnotherIsLaunched) {
  for (const bool hung : {false, true}) {
    Program copy(QStringList{ownIdentifier} + (hung ? QStringList{"--silent"} : QStringList()));
    workspace_.openURL(fileURL(bundle_, true), {});
    EXPECT_EQ(hung ? "" : copy.readLine().toStdString(), hung ? "" : "Activate");
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
