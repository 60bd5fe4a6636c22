#include "support/World.h"

#include <gmock/gmock.h>

namespace orvo {

using namespace std::chrono_literals;
using testing::ElementsAre;
using enum BarState;

constexpr const char* appThree = "org.example.Three";
// V, A or H for visible, applying or hidden; "+" while controls are guarded, "-" while a tap waits for some, "."
// without one; "!" while hiding is offered; "*" while somebody else hides icons.
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
  return text;
}

TEST(OrvoModelTest, EveryCourseOfEventsEndsAsTold) {
  // What is missing before the launch, the steps, their outcome, whether icons hide again 7 seconds later, how the
  // message begins.
  using Course = std::tuple<const char*, const char*, const char*, bool, std::string_view>;
  const Course courses[]{
      {"", "hide yes launch", "H+! V+! V+! One Two 1/2", false, "A new app opened. Icons are shown so its"},
      {"", "hide yes sleep wake settle", "V+! V+! V+! One Two 1/2", false, ""},
      {"", "wake", "V+! V- V+! One Two 0/2", false, ""},
      {"", "hide yes screens", "H+! V- V+! One Two 1/2", false, ""},
      {"", "hide hostends", "A+ V- V+! One Two 1/2", false, "Could not hide icons: The menu bar agent is"},
      {"", "hide yes hostends", "H+! V- V+! One Two 1/2", false, "The menu bar agent ended."},
      {"noitem", "hide yes click", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes endedtap 3000ms", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes untrusted refresh", "V- V- V- One Two 1/1", false, ""},
      // Requests and their answers.
      {"", "hide no reveal refresh settle 5000ms", "V+! V+! V+! One Two 1/2", false, "Could not hide icons: not now"},
      {"", "hide yes 4000ms hide 5000ms", "V+! V+! V+! One Two 2/1", false, "macOS did not confirm"},
      {"", "hide yes broken hide", "V+! V+! V+! One Two 1/1", false, "The menu bar API could not start."},
      // What is missing.
      {"/Downloads/O", "login hide", "V+ V+ V+ One Two 0/1", false, "Install Orvo in Applications"},
      {"noframework nobutton", "login hide", "V+ V+ V+ One Two 0/1", false, "Login item could not be changed: full"},
      {"nohost", "login hide", "V- V- V- 0/0", false, "System controls are not ready."},
      // Hiding again.
      {"", "hide yes delay0 peek", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes delay1 peek 1000ms", "A+ A+ A+ One Two 2/1", false, ""},
      {"", "hide yes delay9223372036854775807 peek", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes peek delay6", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes peek hide yes", "H+! H+! H+! One Two 2/1", false, ""},
      {"", "hide yes peek reveal", "V+! V+! V+! One Two 1/1", false, ""},
      {"", "hide yes peek untrusted ask hide trusted ask", "V+! V+! V+! One Two 1/1", true, ""},
      {"", "hide yes untrusted refresh trusted refresh settle", "V+! V+! V+! One Two 1/2", false, ""},
      // Scans carry running applications over while icons are concealed.
      {"", "hide yes onequits onlytwo refresh", "H+! H+! H+ two 1/2", false, ""},
      // Somebody else hides icons.
      {"", "otherhides settle press", "V+!* V+! V+! One Two 0/3", true, ""},
      {"", "otherhides settle screens settle", "V+!* V+!* V+!* One Two 0/3", false, ""},
      // Controls that are missing for a while, and scans that the layout outran.
      {"", "hide yes nocontrols layout settle 1600ms controls 400ms", "H+! H+! H+! One Two 1/7", false, ""},
      {"", "hide yes nocontrols layout settle 2000ms controls 400ms", "V- V- V- One Two 1/7", false, "The system"},
      {"", "hide yes nocontrols exit settle controls 400ms", "A+ A+ A+ One Two 2/3", false, ""},
      {"", "hide yes nocontrols exit settle reveal controls 400ms", "V+! V+! V+! One Two 1/3", false, ""},
      {"", "nocontrols refresh settle 3200ms refresh settle 2000ms", "V- V- V- 0/8", false, ""},
      {"", "hide yes refresh layout", "H+! H+! H+! One Two 1/3", false, ""},
      {"", "nocontrols wake settle controls 400ms", "V+! V+! V+! One Two 0/3", false, ""},
      {"nocontrols", "untrusted 3000ms trusted 3000ms controls 400ms", "V+! V+! V+! One Two 0/3", false, ""},
      {"", "hide yes nocontrols layout settle pickone controls 400ms", "A+ A+ A+ One Two 2/3", false, ""},
      {"", "refresh sleep turn scan onlytwo", "V- V- V+ two 0/3", false, ""},
      // The poll.
      {"notaps", "trusted refresh settle taps refresh", "V+! V+! V+! One Two 0/3", false, ""},
      {"untrusted nowindow", "3000ms", "V. V. V. 0/0", false, ""},
      {"", "hide yes untrusted 3000ms trusted 3000ms", "V+! V+! V+! One Two 1/2", false, ""},
      {"", "15000ms", "V+! V+! V+! One Two 0/1", false, ""},
      {"", "18000ms", "V+! V+! V+! One Two 0/2", false, ""},
      {"", "hide yes 60000ms", "H+! H+! H+! One Two 1/1", false, ""},
  };
  for (const auto& [missing, steps, expected, hidesAgain, message] : courses) {
    SCOPED_TRACE(std::string(missing) + " | " + steps);
    World world(missing + std::string(" nologin"));
    EXPECT_EQ(outcome(world, steps), expected);
    EXPECT_EQ(world.message().substr(0, message.empty() ? std::string::npos : message.size()), message);
    EXPECT_EQ(world.hidesAgain(), hidesAgain ? 1U : 0U);
  }
}

TEST(OrvoModelTest, ARequestAllowsEveryRunningBundleButTheHiddenInCodePointOrder) {
  World t;
  for (const char* each : {"ünsorted", "zed", "Zed", "com.apple.controlcenter"}) t.memory.workspace.launch(each, 50);
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

TEST(OrvoModelTest, WhatAnotherCopyStoresIsFollowedAndKept) {
  World t;
  std::size_t before = 99;
  t.model->willChange.observe([&] { before = t.model->preferences().rules.size(); });
  t.play("hide yes");
  // Rules, the delay, whether icons are revealed first, how often hiding was asked for in the end.
  const std::tuple<const char*, int, bool, std::size_t> copies[]{
      {R"("org.example.One":"hidden")", 8, false, 1},
      {R"("org.example.One":"hidden","org.example.Two":"hidden")", 9, false, 2},
      {R"("org.example.One":"hidden","org.example.Two":"visible")", 9, true, 2}};
  auto& stored = t.memory.userDefaults.datas[preferencesKey];
  for (const auto& [rules, delay, reveals, requests] : copies) {
    stored = R"({"rules":{)" + std::string(rules) + R"(},"autoRehideSeconds":)" + std::to_string(delay) + "}";
    t.play(reveals ? "reveal 3000ms" : "3000ms");
    EXPECT_EQ(t.model->preferences().autoRehideSeconds, delay);
    EXPECT_EQ(t.requests(), requests);
  }
  stored = R"({"rules":{"org.example.Two":"visible"},"autoRehideSeconds":4})";
  t.model->setRule(IconRule::hidden, appThree);
  EXPECT_EQ(before, 2U) << "announced before it happens";
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
  using Case = std::pair<const char*, const char*>;
  for (const auto& [text, names] : {Case{"", "App 10 app 9 Notes "}, Case{"NOTES", "Notes "}, Case{"notes ", ""},
                                    Case{"apple.con", "Notes "}, Case{" ", "App 10 app 9 "}}) {
    t.model->searchText = std::string(text);
    std::string found;
    for (const DiscoveredApp& app : t.model->filteredApps()) found += app.name + ' ';
    EXPECT_EQ(found, names) << text;
  }
  t.model->setRule(IconRule::hidden, "a");
  EXPECT_EQ(t.model->selectedCount(), 1U) << "of what is not listed, or of the search";
}

TEST(OrvoModelTest, OnlyACopyInsideAnApplicationsFolderCountsAsInstalled) {
  using Case = std::pair<const char*, bool>;
  for (const auto& [path, installed] :
       {Case{"/home/user/Applications/Orvo.app", true}, Case{"/link/Orvo.app", true},
        Case{"/applications/O.app", false}, Case{"/ApplicationsExtra/Orvo.app", false},
        Case{"/home/other/Applications/Orvo.app", false}, Case{"/Applications/../Downloads/O.app", false},
        Case{"/mnt/Applications/Orvo.app", false}}) {
    const World t(path);
    EXPECT_EQ(t.model->nativeMenuBarReady, installed) << path;
  }
}

TEST(OrvoModelTest, TheLoginItemTellsWhatCameOfTheChange) {
  using enum LoginItemStatus;
  constexpr const char* allow = "Allow Orvo in System Settings → General → Login Items.";
  for (const auto& [enable, status, message] :
       {std::tuple{true, enabled, ""}, {true, requiresApproval, allow}, {false, requiresApproval, ""}}) {
    World t(enable ? "" : "atlogin");
    EXPECT_EQ(t.model->launchAtLogin(), !enable);
    t.memory.loginItem.after = status;
    t.model->setLoginItem(enable);
    EXPECT_EQ(t.model->launchAtLogin(), status == enabled);
    EXPECT_EQ(t.message(), message);
    EXPECT_EQ(t.memory.loginItem.settingsOpened, enable && status == requiresApproval ? 1 : 0);
  }
}

}  // namespace orvo
