#include "app/AppDelegate.h"

#include "model/OrvoModel.h"
#include "support/MemoryPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo {
namespace {

using testing::ElementsAre;

constexpr const char* one = "org.example.One";
constexpr const char* openedKey = "Orvo.HasOpenedSettings";
constexpr MainQueue::Duration rehideDelay{7000};

// A later launch, at which nothing is missing, over a menu bar with one application marked to be hidden.
class AppDelegateTest : public testing::Test {
 protected:
  AppDelegateTest() {
    memory.showItems({one});
    memory.userDefaults.setData("Quillet.Preferences.v1",
                                R"({"rules":{"org.example.One":"hidden"},"autoRehideSeconds":7})");
    memory.userDefaults.setBoolean(openedKey, true);
  }
  ~AppDelegateTest() override { memory.settle(); }

  void launch() {
    delegate = AppDelegate::make(memory.platform);
    memory.application.setDelegate(delegate.get());
    delegate->applicationDidFinishLaunching();
    memory.settle();
  }
  void reach(BarState state) {
    if (state != BarState::visible) model().hideSelected();
    if (state == BarState::hidden) memory.framework.answer(memory.framework.activations.size() - 1);
    memory.settle();
  }
  void click(std::optional<EventType> event) {
    memory.application.currentEvent = event;
    memory.statusBar.button.action();
  }
  static void choose(const MenuItem& item) { std::get<std::function<void()>>(item.action)(); }
  const Menu& lastMenu() const { return *memory.statusBar.button.menu; }
  bool rehideWaits() const {
    const auto waiting = memory.mainQueue.waiting();
    return std::any_of(waiting.begin(), waiting.end(),
                       [&](const auto& task) { return task.due == memory.mainQueue.now() + rehideDelay; });
  }
  OrvoModel& model() { return delegate->model(); }

  MemoryPlatform memory;
  std::shared_ptr<AppDelegate> delegate;
};

TEST_F(AppDelegateTest, TheSettingsOpenAtLaunchUnlessNothingIsMissing) {
  struct Case {
    const char* name;
    bool opened;
    bool trusted;
    const char* path;
    int shown;
  };
  for (const Case& c : {Case{"a later launch", true, true, "/Applications/Orvo.app", 0},
                        Case{"the first launch", false, true, "/Applications/Orvo.app", 1},
                        Case{"no permission", true, false, "/Applications/Orvo.app", 1},
                        Case{"another folder", true, true, "/Downloads/Orvo.app", 1}}) {
    SCOPED_TRACE(c.name);
    memory.userDefaults.setBoolean(openedKey, c.opened);
    memory.accessibility.trusted = c.trusted;
    memory.bundle.bundlePath = c.path;
    memory.windows.shown = 0;
    launch();
    EXPECT_EQ(memory.windows.shown, c.shown);
    EXPECT_TRUE(memory.userDefaults.boolean(openedKey));
    EXPECT_EQ(memory.application.policy, ActivationPolicy::accessory);
  }
}

TEST_F(AppDelegateTest, TheArrowStandsInTheBarBeforeTheModelStarts) {
  memory.application.notificationCenter();
  delegate = AppDelegate::make(memory.platform);
  model().willChange.observe([this] { EXPECT_EQ(memory.statusBar.items, 1); });
  delegate->applicationDidFinishLaunching();
  const auto& bar = memory.statusBar;
  EXPECT_EQ(bar.length, -2);
  EXPECT_EQ(bar.autosaveName, "Quillet.Toggle");
  EXPECT_EQ(bar.behavior, 0U);
  EXPECT_TRUE(bar.visible);
  EXPECT_EQ(bar.button.eventMask, 20U);
  EXPECT_EQ(bar.button.label, "Orvo menu bar manager");
  EXPECT_EQ(bar.button.identifier, "Orvo.NativeMenuBarToggle");
  EXPECT_EQ(bar.button.imageDescription, "Orvo");
}

TEST_F(AppDelegateTest, TheArrowFollowsTheBar) {
  launch();
  const auto& button = memory.statusBar.button;
  for (const BarState state : {BarState::visible, BarState::applying, BarState::hidden}) {
    model().reveal(false);
    reach(state);
    const bool visible = state == BarState::visible;
    EXPECT_EQ(button.image, visible ? "chevron.right" : "chevron.left");
    EXPECT_EQ(button.toolTip, visible ? "Hide selected icons · Right-click for settings" : "Show hidden icons · ⌃⌥⌘B");
  }
}

TEST_F(AppDelegateTest, AClickDoesWhatTheBarAllows) {
  struct Case {
    const char* name;
    std::optional<EventType> event;
    BarState from;
    bool canHide;
    BarState to;
    bool rehide;
    int shown;
    bool menu;
  };
  using enum BarState;
  using enum EventType;
  const std::vector<Case> cases{{"left, something to hide", leftMouseUp, visible, true, applying, false, 0, false},
                                {"left, nothing to hide", leftMouseUp, visible, false, visible, false, 1, false},
                                {"left while applying", leftMouseUp, applying, true, visible, true, 0, false},
                                {"left while hidden", leftMouseUp, hidden, true, visible, true, 0, false},
                                {"no event counts as left", std::nullopt, hidden, true, visible, true, 0, false},
                                {"right while visible", rightMouseUp, visible, true, visible, false, 0, true},
                                {"right while hidden", rightMouseUp, hidden, true, hidden, false, 0, true}};
  launch();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    model().reveal(false);
    model().setRule(c.canHide ? IconRule::hidden : IconRule::visible, one);
    reach(c.from);
    memory.windows.shown = 0;
    memory.statusBar.button.menu.reset();
    click(c.event);
    EXPECT_EQ(model().state(), c.to);
    EXPECT_EQ(rehideWaits(), c.rehide);
    EXPECT_EQ(memory.windows.shown, c.shown);
    EXPECT_EQ(memory.statusBar.button.menu.has_value(), c.menu);
  }
}

TEST_F(AppDelegateTest, TheMenuOffersWhatTheBarAllows) {
  struct Case {
    BarState state;
    bool canHide;
    const char* title;
    bool enabled;
  };
  launch();
  for (const Case& c :
       {Case{BarState::visible, true, "Hide selected icons", true},
        Case{BarState::visible, false, "Hide selected icons", false},
        Case{BarState::applying, true, "Show all icons", true}, Case{BarState::hidden, true, "Show all icons", true}}) {
    SCOPED_TRACE(c.title);
    model().reveal(false);
    model().setRule(c.canHide ? IconRule::hidden : IconRule::visible, one);
    reach(c.state);
    click(EventType::rightMouseUp);
    const Menu& menu = lastMenu();
    EXPECT_FALSE(menu.autoenablesItems);
    ASSERT_EQ(menu.items.size(), 4U);
    EXPECT_EQ(menu.items[0].title, c.title);
    EXPECT_EQ(menu.items[0].enabled, c.enabled);
    EXPECT_EQ(menu.items[1].title, "Settings…");
    EXPECT_TRUE(menu.items[1].enabled);
    EXPECT_TRUE(menu.items[2].separator);
    EXPECT_EQ(menu.items[3].title, "Quit Orvo");
    EXPECT_TRUE(menu.items[3].enabled);
    EXPECT_EQ(memory.statusBar.button.menuPoint, (Point{0, 3}));
  }
  choose(lastMenu().items[0]);
  EXPECT_EQ(model().state(), BarState::visible);
  EXPECT_TRUE(rehideWaits());
  choose(lastMenu().items[0]);
  EXPECT_EQ(model().state(), BarState::applying);
}

TEST_F(AppDelegateTest, SettingsAndReopeningRevealForGoodAndShowTheOneWindow) {
  launch();
  const Menu& mainMenu = *memory.application.mainMenu;
  const auto reopen = [this] { EXPECT_TRUE(delegate->applicationShouldHandleReopen(true)); };
  const auto settings = [&] { choose(mainMenu.items.at(0).submenu.at(0).items.at(0)); };
  const std::vector<std::function<void()>> ways{reopen, settings, reopen};
  int shown = 0;
  for (const auto& way : ways) {
    reach(BarState::hidden);
    const std::size_t scans = memory.accessibility.asked.size();
    way();
    EXPECT_EQ(model().state(), BarState::visible);
    EXPECT_FALSE(rehideWaits());
    EXPECT_EQ(memory.windows.shown, ++shown);
    EXPECT_EQ(memory.application.activations, shown);
    EXPECT_EQ(memory.accessibility.asked.size(), scans);
    memory.settle();
    EXPECT_EQ(memory.accessibility.asked.size(), scans + 1);
  }
  ASSERT_EQ(memory.windows.made.size(), 1U);
  EXPECT_EQ(memory.windows.centered, 1);
  const WindowDescription& window = memory.windows.made[0];
  EXPECT_EQ(window.contentSize, (Size{880, 680}));
  EXPECT_EQ(window.minimumSize, (Size{850, 630}));
  EXPECT_EQ(window.styleMask, 32783U);
  EXPECT_EQ(window.title, "Orvo Settings");
  EXPECT_EQ(window.frameAutosaveName, "Orvo.Settings");
  EXPECT_FALSE(window.titleVisible || window.releasedWhenClosed);
  EXPECT_TRUE(window.titlebarAppearsTransparent);
  EXPECT_FALSE(delegate->applicationShouldTerminateAfterLastWindowClosed());
}

TEST_F(AppDelegateTest, TheMainMenuServesTheWindowAndItsTextFields) {
  launch();
  const auto& items = memory.application.mainMenu->items;
  ASSERT_EQ(items.size(), 2U);
  std::vector<std::string> rows;
  for (const MenuItem& top : items) {
    EXPECT_EQ(top.title, "");
    for (const MenuItem& item : top.submenu.at(0).items) {
      const auto* const responder = std::get_if<FirstResponderAction>(&item.action);
      rows.push_back(top.submenu[0].title + "/" + item.title + "/" + item.keyEquivalent + "/" +
                     (responder != nullptr ? responder->selector : ""));
    }
  }
  EXPECT_THAT(rows,
              ElementsAre("Orvo/Settings…/,/", "Orvo///", "Orvo/Quit Orvo/q/", "Edit/Undo/z/undo:", "Edit/Cut/x/cut:",
                          "Edit/Copy/c/copy:", "Edit/Paste/v/paste:", "Edit/Select All/a/selectAll:"));
}

TEST_F(AppDelegateTest, QuittingRevealsBeforeItEndsAndOnlyOnce) {
  launch();
  reach(BarState::hidden);
  memory.statusBar.button.menu.reset();
  click(EventType::rightMouseUp);
  choose(lastMenu().items[3]);
  EXPECT_EQ(memory.application.terminations, 1);
  EXPECT_TRUE(memory.framework.active().empty());
  EXPECT_FALSE(memory.eventTaps.tap()->valid);
}

TEST_F(AppDelegateTest, ASystemThatGrantsNothingLeavesEverythingElseWorking) {
  memory.statusBar.grantsButtons = memory.windows.grantsWindows = false;
  launch();
  delegate->applicationShouldHandleReopen(false);
  reach(BarState::hidden);
  memory.windows.grantsWindows = true;
  delegate->applicationShouldHandleReopen(false);
  EXPECT_EQ(model().state(), BarState::visible);
  EXPECT_EQ(memory.windows.shown, 1);
  memory.statusBar.grantsItems = false;
  launch();
  reach(BarState::hidden);
  EXPECT_EQ(model().state(), BarState::hidden);
}

TEST_F(AppDelegateTest, WhatOutlivesTheDelegateDoesNothing) {
  launch();
  click(EventType::rightMouseUp);
  const Menu menu = lastMenu();
  const auto action = memory.statusBar.button.action;
  delegate.reset();
  action();
  for (const std::size_t index : {0U, 1U, 3U}) choose(menu.items[index]);
  EXPECT_EQ(memory.application.terminations, 0);
  EXPECT_EQ(memory.windows.shown, 0);
}

}  // namespace
}  // namespace orvo
