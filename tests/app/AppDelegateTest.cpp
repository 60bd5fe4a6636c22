#include "app/AppDelegate.h"

#include "model/OrvoModel.h"
#include "support/MemoryPlatform.h"

#include <gtest/gtest.h>

#include <tuple>

namespace orvo {
namespace {

using enum BarState;
using enum EventType;

constexpr const char* one = "org.example.One";
constexpr const char* openedKey = "Orvo.HasOpenedSettings";

// A later launch, at which nothing is missing, over a menu bar with one application marked to be hidden.
class AppDelegateTest : public testing::Test {
 protected:
  AppDelegateTest() {
    memory.showItems({one});
    memory.userDefaults.setData("Quillet.Preferences.v1",
                                R"({"rules":{"org.example.One":"hidden"},"autoRehideSeconds":7})");
    memory.userDefaults.setBoolean(openedKey, true);
  }

  void launch() {
    delegate = AppDelegate::make(memory.platform);
    memory.application.setDelegate(delegate.get());
    delegate->applicationDidFinishLaunching();
    memory.settle();
  }
  void reach(BarState state, bool canHide = true) {
    model().reveal(false);
    model().setRule(canHide ? IconRule::hidden : IconRule::visible, one);
    if (state != visible) model().hideSelected();
    if (state == hidden) memory.framework.answer(memory.framework.activations.size() - 1);
    memory.settle();
    memory.windows.shown = 0;
    memory.statusBar.menu.reset();
  }
  void click(std::optional<EventType> event) {
    memory.application.currentEvent = event;
    memory.statusBar.action();
  }
  static void choose(const Menu& menu, std::size_t index) {
    std::get<std::function<void()>>(menu.items.at(index).action)();
  }
  const Menu& contextMenu() {
    click(rightMouseUp);
    return *memory.statusBar.menu;
  }
  bool rehideWaits() const {
    const auto& waiting = memory.mainQueue.waiting();
    return std::any_of(waiting.begin(), waiting.end(),
                       [&](const auto& task) { return task.due == memory.mainQueue.now() + std::chrono::seconds(7); });
  }
  OrvoModel& model() { return delegate->model(); }

  MemoryPlatform memory;
  std::shared_ptr<AppDelegate> delegate;
};

TEST_F(AppDelegateTest, TheSettingsOpenAtLaunchUnlessNothingIsMissing) {
  using Case = std::tuple<const char*, bool, bool, const char*>;
  for (const auto& [name, opened, trusted, path] : {Case{"the first launch", false, true, "/Applications/Orvo.app"},
                                                    Case{"no permission", true, false, "/Applications/Orvo.app"},
                                                    Case{"another folder", true, true, "/Downloads/Orvo.app"},
                                                    Case{"nothing is missing", true, true, "/Applications/Orvo.app"}}) {
    SCOPED_TRACE(name);
    memory.userDefaults.setBoolean(openedKey, opened);
    memory.accessibility.trusted = trusted;
    memory.bundle.bundlePath = path;
    memory.windows.shown = 0;
    launch();
    EXPECT_EQ(memory.windows.shown == 0, name == std::string("nothing is missing"));
    EXPECT_TRUE(memory.userDefaults.boolean(openedKey));
    EXPECT_EQ(memory.application.policy, ActivationPolicy::accessory);
  }
}

TEST_F(AppDelegateTest, TheArrowStandsInTheBarBeforeTheModelStarts) {
  delegate = AppDelegate::make(memory.platform);
  model().willChange.observe([this] { EXPECT_EQ(memory.statusBar.items, 1); });
  delegate->applicationDidFinishLaunching();
  EXPECT_EQ(memory.statusBar.autosaveName, "Quillet.Toggle");
  EXPECT_EQ(memory.statusBar.eventMask, 20U);
  EXPECT_EQ(memory.statusBar.label, "Orvo menu bar manager");
  EXPECT_EQ(memory.statusBar.identifier, "Orvo.NativeMenuBarToggle");
  EXPECT_EQ(memory.statusBar.image, "chevron.right");
}

TEST_F(AppDelegateTest, AClickDoesAndTheMenuOffersWhatTheBarAllows) {
  launch();
  using Case = std::tuple<BarState, bool, BarState, const char*, bool>;
  for (const auto& [from, canHide, to, firstItem, enabled] :
       {Case{visible, true, applying, "Hide selected icons", true},
        Case{visible, false, visible, "Hide selected icons", false},
        Case{applying, true, visible, "Show all icons", true}, Case{hidden, true, visible, "Show all icons", true}}) {
    SCOPED_TRACE(firstItem);
    const bool reveals = from != visible;
    reach(from, canHide);
    const Menu menu = contextMenu();
    EXPECT_EQ(model().state(), from) << "the right button only opens the menu";
    EXPECT_EQ(memory.statusBar.image, reveals ? "chevron.left" : "chevron.right");
    EXPECT_EQ(memory.statusBar.toolTip,
              reveals ? "Show hidden icons · ⌃⌥⌘B" : "Hide selected icons · Right-click for settings");
    EXPECT_EQ(menu.items.at(0).title, firstItem);
    EXPECT_EQ(menu.items.at(0).enabled, enabled);
    EXPECT_TRUE(!menu.autoenablesItems && menu.items.at(1).enabled && menu.items.at(3).enabled);
    EXPECT_EQ(memory.statusBar.menuPoint, (Point{0, 3}));
    for (const auto& event : {std::optional(leftMouseUp), std::optional<EventType>()}) {
      reach(from, canHide);
      click(event);
      EXPECT_EQ(model().state(), to);
      EXPECT_EQ(rehideWaits(), reveals);
      EXPECT_EQ(memory.windows.shown, from == to ? 1 : 0);
      EXPECT_FALSE(memory.statusBar.menu);
    }
    reach(from, canHide);
    choose(menu, 0);
    EXPECT_EQ(model().state(), to);
    EXPECT_EQ(rehideWaits(), reveals);
  }
}

TEST_F(AppDelegateTest, SettingsAndReopeningRevealForGoodAndShowTheOneWindow) {
  launch();
  const Menu& orvoMenu = memory.application.mainMenu->items.at(0).submenu.at(0);
  for (int time = 1; time <= 4; ++time) {
    reach(hidden);
    const std::size_t scans = memory.accessibility.asked.size();
    const bool answer = time % 2 == 0 || delegate->applicationShouldHandleReopen(true);
    if (time % 2 == 0) choose(orvoMenu, 0);
    EXPECT_TRUE(answer);
    EXPECT_EQ(model().state(), visible);
    EXPECT_FALSE(rehideWaits() || model().isScanning());
    EXPECT_EQ(memory.windows.shown, 1);
    EXPECT_EQ(memory.application.activations, time);
    memory.settle();
    EXPECT_EQ(memory.accessibility.asked.size(), scans + 1);
  }
  EXPECT_EQ(memory.windows.made, 1);
  EXPECT_EQ(memory.windows.centered, 1);
  EXPECT_FALSE(delegate->applicationShouldTerminateAfterLastWindowClosed());
}

TEST_F(AppDelegateTest, QuittingRevealsBeforeItEndsAndSoDoesEveryOtherEnd) {
  launch();
  for (const int alreadyEnded : {1, 0}) {
    delegate->applicationShouldHandleReopen(false);
    reach(hidden);
    // Nobody is told of the end a second time.
    memory.application.terminations = alreadyEnded;
    if (alreadyEnded == 1) choose(contextMenu(), 3);
    if (alreadyEnded == 0) memory.application.terminate();
    EXPECT_EQ(memory.application.terminations, alreadyEnded + 1);
    EXPECT_TRUE(memory.framework.active().empty());
    EXPECT_FALSE(memory.eventTaps.tap()->valid);
    EXPECT_EQ(memory.windows.open, alreadyEnded);
    model().refresh();
    memory.settle();
  }
}

TEST_F(AppDelegateTest, ASystemThatGrantsNothingLeavesEverythingElseWorking) {
  memory.statusBar.grantsButtons = memory.windows.grantsWindows = false;
  launch();
  reach(hidden);
  delegate->applicationShouldHandleReopen(false);
  EXPECT_EQ(model().state(), visible);
  memory.windows.grantsWindows = true;
  delegate->applicationShouldHandleReopen(false);
  EXPECT_EQ(memory.windows.shown, 1);
  memory.statusBar.grantsItems = false;
  launch();
  reach(hidden);
  EXPECT_EQ(model().state(), hidden);
}

TEST_F(AppDelegateTest, WhatOutlivesTheDelegateDoesNothing) {
  launch();
  const Menu menu = contextMenu();
  delegate.reset();
  memory.statusBar.action();
  for (const std::size_t index : {0U, 1U, 3U}) choose(menu, index);
  EXPECT_EQ(memory.application.terminations, 0);
  EXPECT_EQ(memory.windows.shown, 0);
  EXPECT_EQ(memory.statusBar.items, 0);
}

}  // namespace
}  // namespace orvo
