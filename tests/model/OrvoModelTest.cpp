#include "support/World.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

namespace orvo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using enum BarState;

constexpr const char* appThree = "org.example.Three";
constexpr const char* install = "Install Orvo in Applications and open that copy to keep its menu bar arrow visible.";
constexpr const char* notReady = "System controls are not ready. Refresh the icon list after granting Accessibility.";
constexpr const char* newApp = "A new app opened. Icons are shown so its menu bar item can load.";
constexpr const char* hostMissing = "Could not hide icons: The menu bar agent is not running.";
constexpr const char* hostEnded = "The menu bar agent ended. All icons are visible.";
constexpr const char* refused = "Could not hide icons: not now";
constexpr const char* unconfirmed = "macOS did not confirm hiding. All icons have been restored.";
constexpr const char* notStarted = "The menu bar API could not start. All icons are visible.";
constexpr const char* unguarded = "The system controls could not be found. All icons are visible.";
constexpr const char* notKept = "Login item could not be changed: full";

// V, A or H for visible, applying or hidden; "+" while controls are guarded, "-" while a tap waits for some, "."
// without;
// "!" while hiding is offered; "*" while somebody else hides icons.
std::string told(const World& world) {
  const OrvoModel& model = *world.model;
  const char* const tap = world.memory.eventTaps.valid ? "-" : ".";
  return "VAH"[static_cast<std::size_t>(model.state())] + std::string(model.systemClickProtection() ? "+" : tap) +
         (model.canHide() ? "!" : "") + (model.concealers().empty() ? "" : "*");
}

// What is told at once, on the main queue's next turn and when all is done; the list; how often the system was
// asked to hide and the bar was scanned; whether a re-hide waits.
std::string outcome(World& world, const std::string& steps) {
  world.play(steps);
  std::string text = told(world);
  for (const char* then : {"turn", "settle"}) {
    world.play(then);
    text += ' ' + told(world);
  }
  for (const DiscoveredApp& app : world.model->apps()) text += ' ' + app.name.substr(app.name.rfind('.') + 1);
  text += ' ' + std::to_string(world.requests()) + '/' + std::to_string(world.scans());
  EXPECT_EQ(world.memory.framework.active().empty(), world.model->state() == visible);
  return text;
}

TEST(OrvoModelTest, EveryCourseOfEventsEndsAsTold) {
  // What is missing before the launch, the steps, their outcome, whether icons hide again 7 seconds later, the message.
  using Course = std::tuple<const char*, const char*, const char*, bool, const char*>;
  const Course courses[]{
      {"", "hide press", "A+ V+! V+! One Two 1/1", true, ""},
      {"", "hide yes launch", "H+! V+! V+! One Two 1/2", false, newApp},
      {"", "hide yes exit", "H+! H+! A+ One Two 2/2", false, ""},
      {"", "hide yes sleep wake settle", "V+! V+! V+! One Two 1/2", false, ""},
      {"", "hide yes sleep", "H+! V- V- One Two 1/1", false, ""},
      {"", "wake", "V+! V- V+! One Two 0/2", false, ""},
      {"", "hide yes screens", "H+! V- V+! One Two 1/2", false, ""},
      {"", "hide hostends", "A+ V- V+! One Two 1/2", false, hostMissing},
      {"", "hide yes hostends", "H+! V- V+! One Two 1/2", false, hostEnded},
      {"", "hide yes click", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes losttap", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes untrusted refresh", "V- V- V- One Two 1/1", false, ""},
      // Requests and their answers.
      {"echo", "hide settle 5000ms", "H+! H+! H+! One Two 1/1", false, ""},
      {"", "hide reveal 5000ms", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide no reveal refresh settle 5000ms", "V+! V+! V+! One Two 1/2", false, refused},
      {"", "hide no hide", "A+ A+ A+ One Two 2/1", false, ""},
      {"", "hide yes 4000ms hide 4999ms", "A+ A+ A+ One Two 2/1", false, ""},
      {"", "hide yes 4000ms hide 5000ms", "V+! V+! V+! One Two 2/1", false, unconfirmed},
      {"", "hide yes broken hide", "V+! V+! V+! One Two 1/1", false, notStarted},
      {"", "hide yes untrusted ask", "H+ H+ H+ One Two 1/1", false, ""},
      // What is missing.
      {"elsewhere", "login hide", "V+ V+ V+ One Two 0/1", false, install},
      {"noframework", "login hide", "V+ V+ V+ One Two 0/1", false, notKept},
      {"notaps", "login hide", "V. V. V. One Two 0/1", false, notReady},
      {"nohost", "login hide", "V- V- V- 0/0", false, notReady},
      // Hiding again.
      {"", "hide yes delay0 peek", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes delay1 peek 1000ms", "A+ A+ A+ One Two 2/1", false, ""},
      {"", "hide yes delay9223372036854775807 peek", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes peek delay6", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes peek hide yes", "H+! H+! H+! One Two 2/1", false, ""},
      {"", "hide yes peek reveal", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes peek untrusted ask hide trusted ask", "V+! V+! V+! One Two 1/1", true, ""},
      {"", "dropone peek pickone", "V+! V+! V+! One Two 0/1", false, ""},
      {"", "hide yes untrusted refresh trusted refresh settle", "V+! V+! V+! One Two 1/2", false, ""},
      // Scans carry running applications over while icons are concealed.
      {"", "onlytwo refresh", "V+! V+! V+ two 0/2", false, ""},
      {"", "hide yes onequits onlytwo refresh", "H+! H+! H+ two 1/2", false, ""},
      // Somebody else hides icons.
      {"", "otherhides settle onlytwo refresh", "V+!* V+!* V+!* One two 0/3", false, ""},
      {"", "otherhides settle press", "V+!* V+! V+! One Two 0/3", true, ""},
      // Controls that are missing for a while, and scans that the layout outran.
      {"", "hide yes nocontrols layout settle 1600ms controls 400ms", "H+! H+! H+! One Two 1/7", false, ""},
      {"", "hide yes nocontrols layout settle 2000ms controls 400ms", "V- V- V- One Two 1/7", false, unguarded},
      {"", "hide yes nocontrols exit settle controls 400ms", "A+ A+ A+ One Two 2/3", false, ""},
      {"", "hide yes nocontrols exit settle reveal controls 400ms", "V+! V+! V+! One Two 1/3", false, ""},
      {"", "nocontrols refresh settle 3200ms refresh settle 2000ms", "V- V- V- 0/8", false, ""},
      {"", "hide yes refresh layout", "H+! H+! H+! One Two 1/3", false, ""},
      // The poll.
      {"notaps", "taps 3000ms", "V+! V+! V+! One Two 0/1", false, ""},
      {"notaps", "trusted refresh settle taps refresh", "V+! V+! V+! One Two 0/3", false, ""},
      {"untrusted", "3000ms", "V. V. V. 0/0", false, ""},
      {"", "hide yes untrusted 3000ms", "V- V- V- One Two 1/1", false, ""},
      {"", "hide yes untrusted 3000ms trusted 3000ms", "V+! V+! V+! One Two 1/2", false, ""},
      {"", "15000ms", "V+! V+! V+! One Two 0/1", false, ""},
      {"", "18000ms", "V+! V+! V+! One Two 0/2", false, ""},
      {"", "hide yes 60000ms", "H+! H+! H+! One Two 1/1", false, ""},
      {"", "hide yes launch wake later stop stop 60000ms", "V+! V+! V+! One Two 1/1", false, ""},
  };
  for (const auto& [missing, steps, expected, hidesAgain, message] : courses) {
    SCOPED_TRACE(std::string(missing) + " | " + steps);
    World world(missing + std::string(" nologin"));
    EXPECT_EQ(outcome(world, steps), expected);
    EXPECT_EQ(world.message(), message);
    const std::size_t before = world.requests();
    EXPECT_EQ(world.hidesAgain(), hidesAgain);
    EXPECT_EQ(world.requests(), before + (hidesAgain ? 1 : 0));
  }
}

TEST(OrvoModelTest, ARequestAllowsEveryRunningBundleButTheHiddenInCodePointOrder) {
  World t;
  for (const char* bundle : {"ünsorted", "zed", "Zed", "com.apple.controlcenter"})
    t.memory.workspace.launch(bundle, 50);
  t.memory.workspace.running.push_back({std::nullopt, 53, "no bundle", std::nullopt});
  for (const char* kept : {"com.apple.controlcenter", "com.apple.systemuiserver", "local.orvo.Orvo", "not.running"})
    t.model->setRule(IconRule::hidden, kept);
  t.model->hideSelected();
  EXPECT_THAT(t.memory.framework.activations.at(0).allowedBundleIdentifiers,
              ElementsAre("Zed", "com.apple.MenuBarAgent", "com.apple.TextInputMenuAgent", "com.apple.controlcenter",
                          "com.apple.screencaptureui", "com.apple.systemuiserver", "local.orvo.Orvo", appTwo, "zed",
                          "ünsorted"));
  t.play("dropone hide settle");
  EXPECT_EQ(t.model->state(), visible) << "those that are kept are none to hide";
}

TEST(OrvoModelTest, ThePollFollowsTheShortcutAndTheLoginItem) {
  World t;
  EXPECT_TRUE(t.model->shortcutAvailable());
  t.play("hide yes 3000ms");
  EXPECT_EQ(t.memory.mainQueue.wakeTime(), 6500ms) << "besides the poll, a time-out waits";
  for (const bool is : {false, true, false}) {
    t.memory.hotKeys.available = is;
    t.memory.loginItem.current = is ? LoginItemStatus::enabled : LoginItemStatus::requiresApproval;
    t.play("3000ms");
    EXPECT_TRUE(t.model->shortcutAvailable() == is && t.model->launchAtLogin() == is);
  }
}

TEST(OrvoModelTest, NothingActsOnceItHasStoppedOrGone) {
  for (const bool gone : {false, true}) {
    World t;
    t.play("hide yes hide refresh launch later");
    gone ? t.delegate.reset() : t.model->stop();
    EXPECT_EQ(t.memory.mainQueue.wakeTime(), std::nullopt);
    t.memory.settle();
    EXPECT_EQ(t.memory.hotKeys.hotKeys, gone ? 0 : 1);
    EXPECT_TRUE(t.memory.framework.active().empty() && !t.memory.eventTaps.valid);
    World::play(t.memory, "launch screens");
    EXPECT_FALSE(t.memory.mainQueue.runOne()) << "still observed";
    t.answerLast();
    EXPECT_EQ(t.memory.framework.liveObjects(), 0U);
  }
}

TEST(OrvoModelTest, WhatAnotherCopyStoresIsFollowedAndKept) {
  World t;
  t.play("hide yes");
  auto& stored = t.memory.userDefaults.datas[preferencesKey];
  stored = R"({"rules":{"org.example.One":"hidden"},"autoRehideSeconds":8})";
  t.play("3000ms");
  EXPECT_EQ(t.requests(), 1U);
  stored = R"({"rules":{"org.example.One":"hidden","org.example.Two":"hidden"},"autoRehideSeconds":9})";
  t.play("3000ms");
  EXPECT_EQ(t.model->preferences().autoRehideSeconds, 9);
  EXPECT_EQ(t.requests(), 2U) << "as if chosen here";
  t.play("reveal");
  stored = R"({"rules":{"org.example.One":"hidden","org.example.Two":"visible"},"autoRehideSeconds":9})";
  t.play("3000ms");
  EXPECT_EQ(t.model->state(), visible);
  stored = R"({"rules":{"org.example.Two":"visible"},"autoRehideSeconds":4})";
  t.model->setRule(IconRule::hidden, appThree);
  EXPECT_EQ(OrvoPreferences::decode(stored),
            (OrvoPreferences{{{appTwo, IconRule::visible}, {appThree, IconRule::hidden}}, 4}));
}

TEST(OrvoModelTest, AChoiceThatCannotBeStoredIsToldOnceUntilOneCan) {
  constexpr const char* unsaved = "Your choices could not be saved: disk full";
  World t;
  t.play("hide yes");
  for (const auto& [full, expected] : {std::pair{true, unsaved}, {true, ""}, {false, ""}, {true, unsaved}}) {
    t.memory.userDefaults.failure = full ? std::optional<std::string>("disk full") : std::nullopt;
    t.play("picktwo");
    EXPECT_EQ(t.message(), expected) << t.requests();
    t.answerLast();
  }
}

TEST(OrvoModelTest, TheListLeavesOutOrvoAndTheSystemAndIsSortedByNameAndSearchedInBoth) {
  World t;
  t.memory.showItems({{"com.apple.controlcenter", "x"},
                      {"local.orvo.Orvo", "x"},
                      {"b", "app 9"},
                      {"a", "App 10"},
                      {"com.apple.ControlCenter", "Notes"}});
  t.play("refresh settle");
  EXPECT_EQ(t.listed(), "app 9 App 10 Notes");
  using Case = std::pair<const char*, std::size_t>;
  for (const auto& [text, found] : {Case{"", 3}, {"NOTES", 1}, {"app", 3}, {"apple.con", 1}, {"notes ", 0}, {" ", 2}}) {
    t.model->searchText = std::string(text);
    EXPECT_EQ(t.model->filteredApps().size(), found) << text;
  }
  t.model->setRule(IconRule::hidden, "a");
  EXPECT_EQ(t.model->selectedCount(), 1U) << "of what is not listed, or of the search";
}

TEST(OrvoModelTest, AScanThatTheGeometryOutranIsDroppedAndRepeated) {
  World t;
  int done = 0;
  t.model->refresh([&] { ++done; });
  t.model->refresh([&] { done += 10; });
  t.play("sleep turn scan onlytwo turn");
  EXPECT_EQ(done, 10);
  EXPECT_EQ(t.listed(), "org.example.One org.example.Two");
  EXPECT_TRUE(t.model->isScanning() && !t.model->systemClickProtection());
  t.play("settle");
  EXPECT_EQ(done, 11);
  EXPECT_EQ(t.listed(), "two");
  EXPECT_TRUE(!t.model->isScanning() && t.model->systemClickProtection());
}

TEST(OrvoModelTest, ARuleIsAnnouncedStoredAndTakesEffectAtOnceWhileHidden) {
  World t;
  std::size_t before = 99;
  const auto token = t.model->willChange.observe([&] { before = t.model->preferences().rules.size(); });
  t.model->setRule(IconRule::hidden, appThree);
  EXPECT_EQ(before, 1U) << "announced before it happens";
  t.model->willChange.remove(token);
  EXPECT_EQ(t.requests(), 0U);
  t.play("hide yes picktwo");
  EXPECT_EQ(t.requests(), 2U);
  t.play("dropone");
  EXPECT_EQ(t.requests(), 2U);
  EXPECT_EQ(
      OrvoPreferences::decode(t.memory.userDefaults.data(preferencesKey)),
      (OrvoPreferences{{{appOne, IconRule::visible}, {appTwo, IconRule::hidden}, {appThree, IconRule::hidden}}, 7}));
}

TEST(OrvoModelTest, OnlyACopyInsideAnApplicationsFolderCountsAsInstalled) {
  using Case = std::pair<const char*, bool>;
  for (const auto& [path, installed] :
       {Case{"/Applications/Tools/Orvo.app", true}, Case{"/home/user/Applications/Orvo.app", true},
        Case{"/link/Orvo.app", true}, Case{"/Applications Extra/Orvo.app", false}, Case{"/applications/O.app", false},
        Case{"/home/other/Applications/Orvo.app", false}, Case{"/Applications/../Downloads/O.app", false},
        Case{"/mnt/Applications/Orvo.app", false}}) {
    const World t([at = path](MemoryPlatform& m) { m.bundle.bundlePath = at, m.bundle.bundleIdentifier.reset(); });
    EXPECT_EQ(t.model->nativeMenuBarReady, installed) << path;
    EXPECT_EQ(t.model->ownBundle, "local.quillet.menubar");
  }
}

TEST(OrvoModelTest, TheLoginItemTellsWhatCameOfTheChange) {
  using enum LoginItemStatus;
  constexpr const char* allow = "Allow Orvo in System Settings → General → Login Items.";
  using Case = std::tuple<bool, LoginItemStatus, std::optional<std::string>, std::string>;
  for (const auto& [enable, status, failure, message] :
       {Case{true, enabled, {}, ""}, Case{true, requiresApproval, {}, allow}, Case{true, enabled, "full", notKept},
        Case{false, notRegistered, {}, ""}, Case{false, requiresApproval, {}, ""}}) {
    SCOPED_TRACE(message);
    World t([was = enable ? notRegistered : enabled](MemoryPlatform& m) { m.loginItem.current = was; });
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

}  // namespace
}  // namespace orvo
