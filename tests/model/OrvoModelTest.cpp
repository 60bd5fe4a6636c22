#include "model/ModelFixture.h"

#include <tuple>

namespace orvo {
namespace {

using T = ModelFixture;
using enum BarState;
using enum Notification;

constexpr const char* newApp = "A new app opened. Icons are shown so its menu bar item can load.";
constexpr const char* hostMissing = "Could not hide icons: The menu bar agent is not running.";
constexpr const char* hostEnded = "The menu bar agent ended. All icons are visible.";
// What follows an assignment cannot be left out from outside.
static_assert(!std::is_assignable_v<decltype((std::declval<OrvoModel&>().preferences)), OrvoPreferences>);
static_assert(!std::is_assignable_v<decltype((std::declval<OrvoModel&>().state)), BarState>);
static_assert(std::is_assignable_v<decltype((std::declval<OrvoModel&>().searchText)), std::string>);

constexpr const char* three = "org.example.Three";

TEST(OrvoModelTest, EachCauseTakesItsStepsAtOnceInsideTheTapAndLaterElsewhere) {
  const auto press = [](T& t) { t.memory.hotKeys.press(); };
  const auto launch = [](T& t) { t.post(applicationLaunched); };
  const auto exit = [](T& t) { t.post(applicationTerminated); };
  const auto end = [](T& t) { t.post(menuBarHostTerminated); };
  // From, what happens, to, message, scans, whether the frames stay until then, whether it acts at once.
  using Case = std::tuple<const char*, BarState, void (*)(T&), BarState, std::string, std::size_t, bool, bool>;
  const std::vector<Case> cases{
      {"shortcut while visible", visible, press, applying, "", 0, true, false},
      {"shortcut while applying", applying, press, visible, "", 0, true, false},
      {"shortcut while hidden", hidden, press, visible, "", 0, true, false},
      {"launch while visible", visible, launch, visible, "", 1, true, false},
      {"launch while applying", applying, launch, visible, newApp, 1, true, false},
      {"launch while hidden", hidden, launch, visible, newApp, 1, true, false},
      {"exit while visible", visible, exit, visible, "", 1, true, false},
      {"exit while applying", applying, exit, applying, "", 1, true, false},
      {"exit while hidden", hidden, exit, applying, "", 1, true, false},
      {"exit while a scan runs", hidden, [](T& t) { t.model->refresh(), t.post(applicationTerminated); }, applying, "",
       1, true, false},
      {"sleep", hidden, [](T& t) { t.post(willSleep); }, visible, "", 0, false, false},
      {"wake", visible, [](T& t) { t.post(didWake); }, visible, "", 1, false, false},
      {"display change", hidden, [](T& t) { t.post(screenParametersChanged); }, visible, "", 1, false, false},
      {"end of the host while visible", visible, end, visible, "", 1, false, false},
      {"end of the host while applying", applying, end, visible, hostMissing, 1, false, false},
      {"end of the host while hidden", hidden, end, visible, hostEnded, 1, false, false},
      {"click on the clock", hidden, [](T& t) { t.clickClock(); }, visible, "", 0, true, true},
      {"lost tap", hidden, [](T& t) { t.memory.eventTaps.disable(EventType::tapDisabledByUserInput); }, visible, "", 0,
       true, true},
      {"refresh without permission", hidden, [](T& t) { t.memory.accessibility.trusted = false, t.model->refresh(); },
       visible, "", 0, false, true}};
  for (const auto& [name, from, happens, to, message, scans, keepsFrames, atOnce] : cases) {
    SCOPED_TRACE(name);
    ModelFixture t;
    if (from != visible) t.model->hideSelected();
    if (from == hidden) t.answerLast();
    happens(t);
    EXPECT_EQ(t.model->state(), atOnce ? to : from);
    t.memory.mainQueue.runPosted();
    EXPECT_EQ(t.model->systemClickProtection(), keepsFrames);
    t.memory.settle();
    EXPECT_EQ(t.model->state(), to);
    EXPECT_EQ(t.message(), message);
    EXPECT_EQ(t.scans(), 1 + scans);
    EXPECT_EQ(t.requests(), (from == visible ? 0U : 1U) + (to == applying && from != applying ? 1U : 0U));
    EXPECT_EQ(t.model->systemClickProtection(), keepsFrames || scans > 0);
    EXPECT_EQ(t.waitsFor(rehideDelay), happens == press && to == visible);
    EXPECT_THAT(t.listed(), ElementsAre(one, two));
  }
}

TEST(OrvoModelTest, ThePollFollowsThePermission) {
  ModelFixture t;
  t.hide();
  t.memory.accessibility.trusted = false;
  t.advance(3s);
  EXPECT_FALSE(t.model->accessibilityGranted() || t.model->systemClickProtection());
  EXPECT_EQ(t.model->state(), visible);
  EXPECT_TRUE(t.hasTap());
  t.advance(18s);
  EXPECT_EQ(t.scans(), 1U);
  t.memory.accessibility.trusted = true;
  t.advance(3s);
  EXPECT_TRUE(t.model->accessibilityGranted() && t.model->systemClickProtection());
  EXPECT_EQ(t.scans(), 2U);
  for (const bool trusted : {false, true}) {
    t.memory.accessibility.trusted = trusted;
    t.advance(3s);
  }
  EXPECT_EQ(t.scans(), 3U) << "although the last scan is not old";
}

TEST(OrvoModelTest, ATapComesWithThePermissionAndProtectsBeforeTheNextScan) {
  ModelFixture t([](MemoryPlatform& m) { m.accessibility.trusted = false; });
  t.advance(3s);
  EXPECT_FALSE(t.hasTap());
  t.memory.eventTaps.creationFails = t.memory.accessibility.trusted = true;
  t.refresh();
  EXPECT_FALSE(t.model->systemClickProtection());
  t.memory.eventTaps.creationFails = false;
  t.model->refresh();
  EXPECT_TRUE(t.model->systemClickProtection());
}

TEST(OrvoModelTest, ThePollTriesTheTapAgainAndReadsTheLoginItemAndScansAfter15SecondsWhileVisible) {
  ModelFixture t([](MemoryPlatform& m) { m.eventTaps.creationFails = true; });
  EXPECT_FALSE(t.model->systemClickProtection());
  t.memory.eventTaps.creationFails = false;
  t.memory.loginItem.current = LoginItemStatus::enabled;
  t.advance(2999ms);
  EXPECT_FALSE(t.model->systemClickProtection() || t.model->launchAtLogin());
  t.advance(1ms);
  EXPECT_TRUE(t.model->systemClickProtection() && t.model->launchAtLogin());
  EXPECT_EQ(t.memory.mainQueue.waiting().at(0).tolerance, 500ms);
  t.advance(12s);
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
  t.post(applicationLaunched);
  t.post(didWake);
  t.model->refreshLater();
  t.model->stop();
  t.model->stop();
  EXPECT_EQ(t.model->state(), visible);
  t.advance(60s);
  EXPECT_FALSE(t.hasTap());
  EXPECT_EQ(t.scans(), 1U);
  EXPECT_TRUE(t.model->shortcutAvailable() && t.memory.hotKeys.hotKeys == 1);
  t.post(applicationLaunched);
  EXPECT_FALSE(t.memory.mainQueue.runOne()) << "still observed";
}

TEST(OrvoModelTest, ThePollFollowsTheShortcutAndWhatAnotherCopyStores) {
  ModelFixture t;
  for (const bool available : {false, true}) {
    t.memory.hotKeys.available = available;
    t.advance(3s);
    EXPECT_EQ(t.model->shortcutAvailable(), available);
  }
  t.hide();
  t.memory.userDefaults.datas[preferencesKey] =
      R"({"rules":{"org.example.One":"hidden","org.example.Two":"hidden"},"autoRehideSeconds":9})";
  t.advance(3s);
  EXPECT_EQ(t.model->preferences().autoRehideSeconds, 9);
  EXPECT_EQ(t.requests(), 2U) << "as if chosen here";
  t.memory.userDefaults.datas[preferencesKey] = R"({"rules":{"org.example.Two":"visible"},"autoRehideSeconds":4})";
  t.model->setRule(IconRule::hidden, three);
  EXPECT_EQ(OrvoPreferences::decode(t.memory.userDefaults.datas[preferencesKey]),
            (OrvoPreferences{{{two, IconRule::visible}, {three, IconRule::hidden}}, 4}))
      << "what another copy stored between two polls";
}

TEST(OrvoModelTest, AChoiceThatCannotBeStoredIsToldOnceUntilOneCan) {
  constexpr const char* told = "Your choices could not be saved: disk full";
  ModelFixture t;
  t.hide();
  for (const auto& [full, expected] : {std::pair{true, told}, {true, ""}, {false, ""}, {true, told}}) {
    t.memory.userDefaults.failure = full ? std::optional<std::string>("disk full") : std::nullopt;
    t.model->setRule(IconRule::hidden, two);
    EXPECT_EQ(t.message(), expected) << t.requests();
    t.answerLast();
  }
}

TEST(OrvoModelTest, ScansCarryRunningApplicationsOverWhileIconsAreConcealed) {
  const std::vector<std::tuple<const char*, void (*)(T&), std::vector<std::string>>> cases{
      {"missed while visible", [](T&) {}, {two}},
      {"missed while applying", [](T& t) { t.model->hideSelected(); }, {one, two}},
      {"missed while hidden", [](T& t) { t.hide(); }, {one, two}},
      {"quit while hidden", [](T& t) { t.hide(), t.memory.workspace.quit(one); }, {two}},
      {"missed again once visible", [](T& t) { t.hide(), t.refresh(), t.model->reveal(false); }, {two}}};
  for (const auto& [name, steps, listed] : cases) {
    SCOPED_TRACE(name);
    ModelFixture t;
    steps(t);
    t.memory.showItems({two});
    t.memory.workspace.running.back().localizedName = "two";
    t.refresh();
    EXPECT_EQ(t.listed(), listed);
    EXPECT_EQ(t.model->apps().back().name, "two") << "found again, yet listed as before";
  }
}

TEST(OrvoModelTest, TheListLeavesOutOrvoAndTheSystemAndIsSortedByNameAndSearchedInBoth) {
  ModelFixture t;
  t.memory.showItems({"com.apple.controlcenter", "local.orvo.Orvo", "b", "a", "com.apple.ControlCenter"});
  const std::vector<std::string> names{"x", "x", "app 9", "App 10", "Notes"};
  for (std::size_t index = 0; index < names.size(); ++index) {
    t.memory.workspace.running.at(index + 3).localizedName = names.at(index);
  }
  t.refresh();
  EXPECT_THAT(t.listed(), ElementsAre("b", "a", "com.apple.ControlCenter"));
  const std::vector<std::pair<std::string, std::size_t>> searches{{"", 3},          {"NOTES", 1},  {"app", 3},
                                                                  {"apple.con", 1}, {"notes ", 0}, {" ", 2}};
  for (const auto& [text, found] : searches) {
    t.model->searchText = text;
    EXPECT_EQ(t.model->filteredApps().size(), found) << text;
  }
  t.model->setRule(IconRule::hidden, "a");
  EXPECT_EQ(t.model->selectedCount(), 1U) << "of what is not listed, or of the search";
}

TEST(OrvoModelTest, IconsStayHiddenOnlyWhereAControlIsFoundAgainSoon) {
  constexpr MainQueue::Duration pause = 400ms;
  constexpr const char* unguarded = "The system controls could not be found. All icons are visible.";
  const std::vector<std::tuple<const char*, Notification, int, BarState, std::string>> cases{
      {"at the last moment", menuBarLayoutChanged, 5, hidden, ""},
      {"as a program ends, which hides anew", applicationTerminated, 1, applying, ""},
      {"too late", menuBarLayoutChanged, 6, visible, unguarded}};
  for (const auto& [name, change, emptyScans, state, message] : cases) {
    SCOPED_TRACE(name);
    ModelFixture t;
    t.hide();
    t.memory.accessibility.trees.clear();
    t.post(change);
    t.memory.settle();
    for (int scan = 1; scan < emptyScans; ++scan) {
      EXPECT_EQ(t.model->state(), hidden) << scan;
      t.advance(pause);
    }
    t.memory.showItems({one, two});
    t.advance(pause);
    EXPECT_EQ(t.model->state(), state);
    EXPECT_EQ(t.message(), message);
    EXPECT_EQ(t.guarded(), state != visible);
  }
}

TEST(OrvoModelTest, ABarWithoutControlsIsScannedAgainOnlyWhereItHadSome) {
  ModelFixture t;
  t.memory.accessibility.trees.clear();
  t.refresh();
  for (int scan = 0; scan < 8; ++scan) t.advance(400ms);
  EXPECT_EQ(t.scans(), 2U + 5U);
  t.refresh();
  t.advance(2s);
  EXPECT_EQ(t.scans(), 8U);
  EXPECT_EQ(t.message(), "");
}

// The bar's layout changes while a scan of the old one is under way: the frames stay until the new ones come.
TEST(OrvoModelTest, AScanThatTheLayoutOutranIsRepeatedWithTheGuardUp) {
  ModelFixture t;
  t.hide();
  t.model->refresh();
  t.post(menuBarLayoutChanged);
  t.memory.mainQueue.runPosted();
  EXPECT_TRUE(t.guarded());
  t.memory.settle();
  EXPECT_EQ(t.scans(), 3U);
  EXPECT_TRUE(t.guarded());
}

TEST(OrvoModelTest, AScanThatTheGeometryOutranIsDroppedAndRepeated) {
  ModelFixture t;
  int done = 0;
  t.model->refresh([&] { ++done; });
  t.model->refresh([&] { done += 10; });
  EXPECT_EQ(done, 10);
  t.post(willSleep);
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

TEST(OrvoModelTest, ARuleIsAnnouncedStoredAndTakesEffectAtOnceWhileHidden) {
  ModelFixture t;
  std::size_t before = 99;
  const auto token = t.model->willChange.observe([&] { before = t.model->preferences().rules.size(); });
  t.model->setRule(IconRule::hidden, three);
  EXPECT_EQ(before, 1U) << "announced before it happens";
  t.model->willChange.remove(token);
  EXPECT_EQ(t.requests(), 0U);
  t.hide();
  t.model->setRule(IconRule::hidden, two);
  EXPECT_EQ(t.requests(), 2U);
  t.model->setRule(IconRule::visible, one);
  EXPECT_EQ(t.requests(), 2U);
  const auto stored = OrvoPreferences::decode(t.memory.userDefaults.data(preferencesKey));
  EXPECT_EQ(stored.rules, (std::map<std::string, IconRule>{
                              {one, IconRule::visible}, {two, IconRule::hidden}, {three, IconRule::hidden}}));
  EXPECT_EQ(stored.autoRehideSeconds, 7);
}

TEST(OrvoModelTest, OnlyACopyInsideAnApplicationsFolderCountsAsInstalled) {
  const std::vector<std::pair<const char*, bool>> cases{{"/Applications/Tools/Orvo.app", true},
                                                        {"/home/user/Applications/Orvo.app", true},
                                                        {"/link/Orvo.app", true},
                                                        {"/Applications Extra/Orvo.app", false},
                                                        {"/applications/Orvo.app", false},
                                                        {"/home/other/Applications/Orvo.app", false},
                                                        {"/Applications/../Downloads/O.app", false},
                                                        {"/mnt/Applications/Orvo.app", false}};
  for (const auto& [path, installed] : cases) {
    const ModelFixture t([at = path](MemoryPlatform& m) { m.bundle.bundlePath = at; });
    EXPECT_EQ(t.model->nativeMenuBarReady, installed) << path;
  }
  EXPECT_EQ(ModelFixture([](MemoryPlatform& m) { m.bundle.bundleIdentifier.reset(); }).model->ownBundle,
            "local.quillet.menubar");
}

TEST(OrvoModelTest, TheLoginItemTellsWhatCameOfTheChange) {
  using enum LoginItemStatus;
  constexpr const char* allow = "Allow Orvo in System Settings → General → Login Items.";
  using Case = std::tuple<bool, LoginItemStatus, std::optional<std::string>, std::string>;
  for (const auto& [enable, status, failure, message] :
       {Case{true, enabled, {}, ""}, Case{true, requiresApproval, {}, allow},
        Case{true, enabled, "no room", "Login item could not be changed: no room"}, Case{false, notRegistered, {}, ""},
        Case{false, requiresApproval, {}, ""}}) {
    SCOPED_TRACE(message);
    const LoginItemStatus before = enable ? notRegistered : enabled;
    ModelFixture t([before](MemoryPlatform& m) { m.loginItem.current = before; });
    EXPECT_EQ(t.model->launchAtLogin(), !enable);
    t.memory.loginItem.current = requiresApproval;
    t.memory.loginItem.after = status;
    t.memory.loginItem.failure = failure;
    t.model->setLoginItem(enable);
    EXPECT_EQ(t.model->launchAtLogin(), status == enabled && !failure);
    EXPECT_EQ(t.message(), message);
    EXPECT_EQ(t.memory.loginItem.settingsOpened, message == allow ? 1 : 0);
  }
}

TEST(OrvoModelTest, AskingForPermissionPromptsAndAlwaysOpensTheSettings) {
  for (const bool trusted : {false, true}) {
    ModelFixture t;
    t.memory.accessibility.trusted = trusted;
    t.model->requestAccessibility();
    EXPECT_EQ(t.model->accessibilityGranted(), trusted);
    EXPECT_EQ(t.memory.accessibility.prompts, 1);
    EXPECT_THAT(t.memory.workspace.openedURLs,
                ElementsAre("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"));
  }
}

}  // namespace
}  // namespace orvo
