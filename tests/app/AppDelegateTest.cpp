#include "support/World.h"

#include <gtest/gtest.h>

#include <tuple>

namespace orvo {
namespace {

using enum EventType;

struct App : World {
  using World::World;

  // Plays from a bar that shows everything and a window that nobody has asked for.
  void from(const char* steps) {
    play(std::string("reveal pickone ") + steps);
    memory.settle();
    memory.windows.shown = 0;
    memory.statusBar.menu.reset();
  }
  void click(std::optional<EventType> event) {
    memory.application.currentEvent = event;
    memory.statusBar.action();
  }
  const Menu& contextMenu() {
    click(rightMouseUp);
    return *memory.statusBar.menu;
  }
  static void choose(const Menu& menu, std::size_t index) {
    std::get<std::function<void()>>(menu.items.at(index).action)();
  }
};

TEST(AppDelegateTest, TheSettingsOpenAtLaunchUnlessNothingIsMissing) {
  for (const char* missing : {"", "untrusted", "elsewhere", "neveropened"}) {
    const App app(missing);
    EXPECT_EQ(app.memory.windows.shown == 0, missing == std::string()) << missing;
    EXPECT_TRUE(app.memory.userDefaults.boolean(openedSettingsKey)) << missing;
    EXPECT_EQ(app.memory.application.policy, ActivationPolicy::accessory);
  }
}

TEST(AppDelegateTest, AClickDoesAndTheMenuOffersWhatTheBarAllows) {
  App app;
  const auto& bar = app.memory.statusBar;
  using Case = std::tuple<const char*, BarState, bool>;
  for (const auto& [from, to, enabled] :
       {Case{"", BarState::applying, true}, Case{"dropone", BarState::visible, false},
        Case{"hide", BarState::visible, true}, Case{"hide yes", BarState::visible, true}}) {
    SCOPED_TRACE(from);
    app.from(from);
    const BarState before = app.model->state();
    const bool reveals = before != BarState::visible;
    const Menu menu = app.contextMenu();
    EXPECT_EQ(app.model->state(), before) << "the right button only opens the menu";
    EXPECT_EQ(menu.items.at(0).title, reveals ? "Show all icons" : "Hide selected icons");
    EXPECT_EQ(bar.image, reveals ? "chevron.left" : "chevron.right");
    EXPECT_EQ(bar.toolTip, reveals ? "Show hidden icons · ⌃⌥⌘B" : "Hide selected icons · Right-click for settings");
    EXPECT_EQ(menu.items.at(0).enabled, enabled);
    EXPECT_TRUE(!menu.autoenablesItems && menu.items.at(1).enabled && menu.items.at(3).enabled);
    EXPECT_EQ(bar.menuPoint, (Point{0, 3}));
    for (const int way : {0, 1, 2}) {
      app.from(from);
      if (way == 0) App::choose(menu, 0);
      if (way > 0) app.click(way == 1 ? std::optional(leftMouseUp) : std::nullopt);
      EXPECT_EQ(app.model->state(), to);
      EXPECT_EQ(app.memory.windows.shown, before == to && way > 0 ? 1 : 0);
      EXPECT_FALSE(bar.menu);
      EXPECT_EQ(app.hidesAgain(), reveals);
    }
  }
}

TEST(AppDelegateTest, SettingsAndReopeningRevealForGoodAndShowTheOneWindow) {
  App app;
  const auto& memory = app.memory;
  for (int time = 1; time <= 2; ++time) {
    app.from("hide yes");
    const std::size_t scans = app.scans();
    time == 1 ? App::choose(memory.application.mainMenu->items.at(0).submenu.at(0), 0)
              : void(app.delegate->applicationShouldHandleReopen(true));
    EXPECT_TRUE(app.model->state() == BarState::visible && !app.model->isScanning());
    EXPECT_TRUE(memory.windows.shown == 1 && memory.application.activations == time);
    app.memory.settle();
    EXPECT_EQ(app.scans(), scans + 1);
    EXPECT_FALSE(app.hidesAgain());
  }
  EXPECT_TRUE(memory.windows.made == 1 && memory.windows.centered == 1);
  EXPECT_FALSE(app.delegate->applicationShouldTerminateAfterLastWindowClosed());
}

TEST(AppDelegateTest, EveryEndRevealsAndWhatOutlivesItDoesNothing) {
  for (const bool byMenu : {true, false}) {
    App app;
    auto& memory = app.memory;
    app.delegate->applicationShouldHandleReopen(false);
    app.from("hide yes");
    const Menu menu = app.contextMenu();
    // As where nobody is told of an end that the menu asked for.
    memory.application.terminations = byMenu ? 1 : 0;
    byMenu ? App::choose(menu, 3) : memory.application.terminate();
    EXPECT_TRUE(memory.framework.active().empty() && !memory.eventTaps.valid);
    EXPECT_EQ(memory.windows.open.use_count(), byMenu ? 2 : 1);
    app.delegate.reset();
    memory.statusBar.action();
    for (const std::size_t index : {0U, 1U, 3U}) App::choose(menu, index);
    EXPECT_EQ(memory.application.terminations, byMenu ? 2 : 1);
    EXPECT_TRUE(memory.windows.shown == 0 && memory.statusBar.items.use_count() == 1);
  }
}

TEST(AppDelegateTest, ASystemThatGrantsNothingLeavesEverythingElseWorking) {
  for (const bool grantsItems : {true, false}) {
    App app([=](MemoryPlatform& m) {
      m.statusBar.grantsItems = grantsItems, m.statusBar.grantsButtons = m.windows.grantsWindows = false;
    });
    for (const bool grantsWindows : {false, true}) {
      app.from("hide yes");
      EXPECT_EQ(app.model->state(), BarState::hidden);
      app.memory.windows.grantsWindows = grantsWindows;
      app.delegate->applicationShouldHandleReopen(false);
      EXPECT_EQ(app.memory.windows.shown, grantsWindows ? 1 : 0);
    }
  }
}

}  // namespace
}  // namespace orvo
