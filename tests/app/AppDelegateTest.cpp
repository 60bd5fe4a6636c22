#include "support/World.h"

#include <gtest/gtest.h>

namespace orvo {

using enum EventType;

struct App : World {
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
};

void choose(const Menu& menu, std::size_t index) { std::get<std::function<void()>>(menu.items.at(index).action)(); }

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
    app.click(rightMouseUp);
    const Menu menu = bar.menu.value();
    EXPECT_EQ(app.model->state(), before) << "the right button only opens the menu";
    EXPECT_EQ(menu.items.at(0).title, reveals ? "Show all icons" : "Hide selected icons");
    EXPECT_EQ(bar.image, reveals ? "chevron.left" : "chevron.right");
    EXPECT_TRUE(menu.items.at(0).enabled == enabled && !menu.autoenablesItems && menu.items.at(1).enabled);
    for (const auto& way : {std::optional(rightMouseUp), std::optional(leftMouseUp), {}}) {
      app.from(from);
      way == rightMouseUp ? choose(menu, 0) : app.click(way);
      EXPECT_EQ(app.model->state(), to);
      EXPECT_EQ(app.memory.windows.shown, before == to && way != rightMouseUp ? 1 : 0);
      EXPECT_FALSE(bar.menu);
      EXPECT_EQ(app.hidesAgain(), reveals ? 1U : 0U);
    }
  }
}

TEST(AppDelegateTest, ReopeningAndEveryEndRevealAndWhatOutlivesItDoesNothing) {
  for (const bool byMenu : {true, false}) {
    App app;
    auto& memory = app.memory;
    app.play("hide yes");
    app.delegate->applicationShouldHandleReopen(false);
    EXPECT_TRUE(app.model->state() == BarState::visible && memory.windows.shown == 1 && app.hidesAgain() == 0);
    EXPECT_FALSE(app.delegate->applicationShouldTerminateAfterLastWindowClosed());
    app.from("hide yes");
    app.click(rightMouseUp);
    const Menu menu = memory.statusBar.menu.value();
    // As where nobody is told of an end that the menu asked for.
    memory.application.terminations = byMenu ? 1 : 0;
    byMenu ? choose(menu, 3) : memory.application.terminate();
    EXPECT_TRUE(memory.framework.active() == 0 && !memory.eventTaps.valid);
    EXPECT_EQ(memory.windows.open.use_count(), byMenu ? 2 : 1);
    app.delegate.reset();
    memory.statusBar.action();
    for (const std::size_t index : {0U, 1U, 3U}) choose(menu, index);
    EXPECT_EQ(memory.application.terminations, byMenu ? 2 : 1);
    EXPECT_EQ(memory.windows.shown, 0);
  }
}

}  // namespace orvo
