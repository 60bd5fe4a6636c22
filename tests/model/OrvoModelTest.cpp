#include "model/ModelFixture.h"

namespace orvo {
namespace {

using testing::ElementsAre;
using T = ModelFixture;

constexpr const char* newApp = "A new app opened. Icons are shown so its menu bar item can load.";
constexpr const char* hostEnded = "Could not hide icons: The menu bar agent is not running.";
constexpr const char* three = "org.example.Three";

TEST(OrvoModelTest, TheShortcutTogglesAfterItsHandlerHasReturned) {
  ModelFixture t;
  const auto press = [&] {
    const BarState before = t.model->state();
    t.memory.hotKeys.press();
    EXPECT_EQ(t.model->state(), before);
    t.memory.settle();
  };
  press();
  EXPECT_EQ(t.model->state(), BarState::applying);
  press();
  EXPECT_EQ(t.model->state(), BarState::visible);
  EXPECT_TRUE(t.waitsFor(rehideDelay));
}

TEST(OrvoModelTest, EachSystemNotificationTakesItsSteps) {
  struct Case {
    const char* name;
    Notification notification;
    BarState from;
    BarState to;
    std::string message;
    std::size_t scans;
    std::size_t requests;
    bool keepsFrames;
  };
  using enum BarState;
  using enum Notification;
  const std::vector<Case> cases{
      {"launch while visible", applicationLaunched, visible, visible, "", 1, 0, true},
      {"launch while applying", applicationLaunched, applying, visible, newApp, 1, 0, true},
      {"launch while hidden", applicationLaunched, hidden, visible, newApp, 1, 0, true},
      {"exit while visible", applicationTerminated, visible, visible, "", 1, 0, true},
      {"exit while applying", applicationTerminated, applying, applying, "", 1, 0, true},
      {"exit while hidden", applicationTerminated, hidden, applying, "", 1, 1, true},
      {"end of the host while visible", menuBarHostTerminated, visible, visible, "", 1, 0, true},
      {"sleep", willSleep, hidden, visible, "", 0, 0, false},
      {"wake", didWake, visible, visible, "", 1, 0, true},
      {"display change", screenParametersChanged, hidden, visible, "", 1, 0, true},
      {"end of the host while hidden", menuBarHostTerminated, hidden, visible, hostEnded, 1, 0, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ModelFixture t;
    if (c.from == applying) t.model->hideSelected();
    if (c.from == hidden) t.hide();
    const std::size_t scans = t.scans();
    const std::size_t requests = t.requests();
    t.post(c.notification);
    EXPECT_EQ(t.model->state(), c.from);
    t.memory.settle();
    EXPECT_EQ(t.model->state(), c.to);
    EXPECT_EQ(t.message(), c.message);
    EXPECT_EQ(t.scans() - scans, c.scans);
    EXPECT_EQ(t.requests() - requests, c.requests);
    EXPECT_EQ(t.model->systemClickProtection(), c.keepsFrames);
    EXPECT_FALSE(t.waitsFor(rehideDelay));
  }
}

TEST(OrvoModelTest, AnExitWhileAScanRunsAsksAgainWithoutWaitingForIt) {
  ModelFixture t;
  t.hide();
  t.model->refresh();
  t.memory.workspace.quit(two);
  t.post(Notification::applicationTerminated);
  t.memory.mainQueue.runPosted();
  EXPECT_EQ(t.requests(), 2U);
}

TEST(OrvoModelTest, ThePollFollowsThePermission) {
  ModelFixture t;
  t.hide();
  t.memory.accessibility.trusted = false;
  t.advance(3s);
  EXPECT_FALSE(t.model->accessibilityGranted());
  EXPECT_EQ(t.model->state(), BarState::visible);
  EXPECT_FALSE(t.model->systemClickProtection());
  EXPECT_TRUE(t.memory.eventTaps.tap()->valid);
  EXPECT_EQ(t.scans(), 1U);
  t.advance(18s);
  EXPECT_EQ(t.scans(), 1U);
  t.memory.accessibility.trusted = true;
  t.advance(3s);
  EXPECT_TRUE(t.model->accessibilityGranted());
  EXPECT_TRUE(t.model->systemClickProtection());
  EXPECT_EQ(t.scans(), 2U);
}

TEST(OrvoModelTest, ThePollTriesTheTapAgainAndReadsTheLoginItem) {
  ModelFixture t([](MemoryPlatform& m) { m.eventTaps.creationFails = true; });
  EXPECT_FALSE(t.model->systemClickProtection());
  t.memory.eventTaps.creationFails = false;
  t.memory.loginItem.current = LoginItemStatus::enabled;
  t.advance(2999ms);
  EXPECT_FALSE(t.model->systemClickProtection());
  t.advance(1ms);
  EXPECT_TRUE(t.model->systemClickProtection());
  EXPECT_TRUE(t.model->launchAtLogin());
  EXPECT_EQ(t.memory.mainQueue.waiting().at(0).tolerance, 500ms);
}

TEST(OrvoModelTest, TheListIsScannedAgainAfterMoreThan15SecondsWhileVisibleOnly) {
  ModelFixture t;
  t.advance(15s);
  EXPECT_EQ(t.scans(), 1U);
  t.advance(3s);
  EXPECT_EQ(t.scans(), 2U);
  t.hide();
  t.advance(60s);
  EXPECT_EQ(t.scans(), 2U);
}

TEST(OrvoModelTest, StoppingTwiceLeavesNothingThatActs) {
  ModelFixture t;
  t.hide();
  t.post(Notification::applicationLaunched);
  t.post(Notification::didWake);
  t.model->stop();
  t.model->stop();
  EXPECT_EQ(t.model->state(), BarState::visible);
  EXPECT_EQ(t.active(), 0U);
  t.post(Notification::applicationLaunched);
  t.advance(60s);
  EXPECT_FALSE(t.memory.eventTaps.tap()->valid);
  EXPECT_EQ(t.memory.eventTaps.created(), 1U);
  EXPECT_EQ(t.scans(), 1U);
  EXPECT_EQ(t.message(), "");
  EXPECT_EQ(t.memory.hotKeys.hotKeys.size(), 1U);
}

TEST(OrvoModelTest, ScansCarryRunningApplicationsOverWhileIconsAreConcealed) {
  struct Case {
    const char* name;
    void (*steps)(T&);
    std::vector<std::string> listed;
  };
  const std::vector<Case> cases{{"missed while visible", [](T&) {}, {two}},
                                {"missed while applying", [](T& t) { t.model->hideSelected(); }, {one, two}},
                                {"missed while hidden", [](T& t) { t.hide(); }, {one, two}},
                                {"quit while hidden", [](T& t) { t.hide(), t.memory.workspace.quit(one); }, {two}},
                                {"missed again once visible",
                                 [](T& t) { t.hide(), t.model->refresh(), t.memory.settle(), t.model->reveal(false); },
                                 {two}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ModelFixture t;
    const std::int32_t pid = t.model->apps().at(0).pid;
    c.steps(t);
    t.memory.showItems({two});
    t.model->refresh();
    t.memory.settle();
    EXPECT_EQ(t.listed(), c.listed);
    if (c.listed.front() == one) {
      EXPECT_EQ(t.model->apps().at(0).pid, pid);
    }
  }
}

TEST(OrvoModelTest, TheListLeavesOutOrvoAndTheSystemAndIsSortedByName) {
  ModelFixture t;
  t.memory.showItems({"com.apple.controlcenter", "local.orvo.Orvo", "b", "a", "com.apple.ControlCenter"});
  const std::vector<std::string> names{"x", "x", "App 10", "app 9", "z"};
  for (std::size_t index = 0; index < names.size(); ++index) {
    t.memory.workspace.running.at(index + 3).localizedName = names.at(index);
  }
  t.model->refresh();
  t.memory.settle();
  EXPECT_THAT(t.listed(), ElementsAre("a", "b", "com.apple.ControlCenter"));
}

TEST(OrvoModelTest, AScanThatTheGeometryOutranIsDroppedAndRepeated) {
  ModelFixture t;
  int done = 0;
  t.model->refresh([&] { ++done; });
  t.model->refresh([&] { done += 10; });
  EXPECT_EQ(done, 10);
  t.post(Notification::willSleep);
  t.memory.mainQueue.runPosted();
  t.memory.showItems({one});
  t.memory.scanExecutor.runAll();
  t.memory.showItems({two});
  t.memory.mainQueue.runPosted();
  EXPECT_EQ(done, 10);
  EXPECT_THAT(t.listed(), ElementsAre(one, two));
  EXPECT_FALSE(t.model->systemClickProtection());
  EXPECT_TRUE(t.model->isScanning());
  t.memory.settle();
  EXPECT_EQ(done, 11);
  EXPECT_THAT(t.listed(), ElementsAre(two));
  EXPECT_TRUE(t.model->systemClickProtection());
  EXPECT_FALSE(t.model->isScanning());
}

TEST(OrvoModelTest, ARefreshWithoutPermissionRevealsAndKeepsTheList) {
  ModelFixture t;
  t.hide();
  t.memory.accessibility.trusted = false;
  bool done = false;
  t.model->refresh([&] { done = true; });
  EXPECT_TRUE(done);
  EXPECT_EQ(t.model->state(), BarState::visible);
  EXPECT_FALSE(t.model->accessibilityGranted());
  EXPECT_FALSE(t.model->systemClickProtection());
  EXPECT_FALSE(t.model->isScanning());
  EXPECT_THAT(t.listed(), ElementsAre(one, two));
}

TEST(OrvoModelTest, TheSearchLooksIntoNamesAndIdentifiersExactlyAsTyped) {
  ModelFixture t;
  t.memory.workspace.running.at(1).localizedName = "Notes";
  t.model->refresh();
  t.memory.settle();
  struct Case {
    const char* text;
    std::size_t found;
  };
  for (const Case& c : {Case{"", 2}, Case{"NOTES", 1}, Case{"org.example", 2}, Case{"example.two", 1}, Case{" ", 0},
                        Case{"notes ", 0}}) {
    SCOPED_TRACE(c.text);
    t.model->searchText = c.text;
    EXPECT_EQ(t.model->filteredApps().size(), c.found);
    EXPECT_EQ(t.model->selectedCount(), 1U);
  }
}

TEST(OrvoModelTest, ARuleIsStoredAtOnceAndTakesEffectAtOnceWhileHidden) {
  ModelFixture t;
  t.model->setRule(IconRule::hidden, three);
  EXPECT_EQ(t.model->selectedCount(), 1U);
  EXPECT_EQ(t.requests(), 0U);
  t.hide();
  t.model->setRule(IconRule::hidden, two);
  EXPECT_EQ(t.requests(), 2U);
  t.model->setRule(IconRule::visible, one);
  EXPECT_EQ(t.requests(), 2U);
  const auto stored = OrvoPreferences::decode(t.memory.userDefaults.data("Quillet.Preferences.v1"));
  EXPECT_EQ(stored, t.model->preferences());
  EXPECT_EQ(stored.rules, (std::map<std::string, IconRule>{
                              {one, IconRule::visible}, {two, IconRule::hidden}, {three, IconRule::hidden}}));
}

TEST(OrvoModelTest, OnlyACopyInsideAnApplicationsFolderCountsAsInstalled) {
  struct Case {
    const char* path;
    bool installed;
  };
  for (const Case& c :
       {Case{"/Applications/Orvo.app", true}, Case{"/Applications/Tools/Orvo.app", true},
        Case{"/home/user/Applications/Orvo.app", true}, Case{"/link/Orvo.app", true},
        Case{"/Applications Extra/Orvo.app", false}, Case{"/applications/Orvo.app", false},
        Case{"/home/other/Applications/Orvo.app", false}, Case{"/Applications/../Downloads/Orvo.app", false},
        Case{"/Applications", false}, Case{"/mnt/Applications/Orvo.app", false}}) {
    SCOPED_TRACE(c.path);
    const ModelFixture t([&](MemoryPlatform& m) {
      m.bundle.bundlePath = c.path;
      m.fileSystem.links["/link"] = "/Applications";
    });
    EXPECT_EQ(t.model->nativeMenuBarReady, c.installed);
  }
}

TEST(OrvoModelTest, TheLoginItemTellsWhatCameOfTheChange) {
  using enum LoginItemStatus;
  struct Case {
    const char* name;
    bool enable;
    LoginItemStatus status;
    std::optional<std::string> failure;
    bool launchAtLogin;
    std::string message;
    int opened;
  };
  const std::vector<Case> cases{
      {"enabled", true, enabled, std::nullopt, true, "", 0},
      {"awaiting approval", true, requiresApproval, std::nullopt, false,
       "Allow Orvo in System Settings → General → Login Items.", 1},
      {"failed", true, enabled, "no room", false, "Login item could not be changed: no room", 0},
      {"disabled", false, notRegistered, std::nullopt, false, "", 0},
      {"disabled, yet still awaiting approval", false, requiresApproval, std::nullopt, false, "", 0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ModelFixture t;
    t.memory.loginItem.afterRegistering = t.memory.loginItem.afterUnregistering = c.status;
    t.memory.loginItem.failure = c.failure;
    t.model->setLoginItem(c.enable);
    EXPECT_EQ(t.model->launchAtLogin(), c.launchAtLogin);
    EXPECT_EQ(t.message(), c.message);
    EXPECT_EQ(t.memory.loginItem.settingsOpened, c.opened);
  }
}

TEST(OrvoModelTest, AskingForPermissionPromptsAndAlwaysOpensTheSettings) {
  for (const bool trusted : {false, true}) {
    ModelFixture t([&](MemoryPlatform& m) { m.accessibility.trusted = trusted; });
    t.model->requestAccessibility();
    EXPECT_EQ(t.model->accessibilityGranted(), trusted);
    EXPECT_EQ(t.memory.accessibility.prompts, 1);
    EXPECT_THAT(t.memory.workspace.openedURLs,
                ElementsAre("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"));
  }
}

}  // namespace
}  // namespace orvo
