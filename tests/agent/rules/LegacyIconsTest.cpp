#include "agent/rules/LegacyIcons.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

using orvo::LegacyIcons;
using Kind = LegacyIcons::Order::Kind;

// The X server, the tray and a program, as far as one window goes.
struct Window {
  bool isMapped = true;
  bool isSaved = false;  // mapped by the server when the agent dies
};

// Whatever happens in whatever order: an icon that is wanted ends up mapped, an unwanted one does not, and none
// that is mapped, or that its program has withdrawn, stays in the save-set.
RC_GTEST_PROP(LegacyIcons, EveryOrderOfEventsEndsWell, ()) {
  LegacyIcons icons;
  Window window;
  bool isWithdrawn = false, shows = true;
  std::vector<int> events;  // 1 mapped, 2 unmapped; told later, in order
  const std::function<void(const std::optional<LegacyIcons::Order>&)> carryOut = [&](const auto& order) {
    if (!order) return;
    if (order->kind == Kind::hide && std::exchange(window.isMapped, false)) events.push_back(2);
    if (order->kind == Kind::show && !std::exchange(window.isMapped, true)) events.push_back(1);
    window.isSaved = order->kind == Kind::settle ? false : order->kind == Kind::hide || window.isSaved;
    if (order->kind == Kind::hide && isWithdrawn) carryOut(icons.withdrawn(7));
  };
  const auto tell = [&] {
    if (events.empty()) return;
    const int event = events.front();
    events.erase(events.begin());
    if (event == 1) return carryOut(icons.mapped(7));
    icons.unmapped(7);
  };
  const auto rule = [&](const std::string&) { return shows; };
  carryOut(icons.dock({.window = 7, .isMapped = true}, rule));
  for (const int step : *rc::gen::container<std::vector<int>>(40, rc::gen::inRange(0, 6))) {
    if (step <= 2) tell();
    if (step == 3) {
      shows = !shows;
      for (const auto& order : icons.apply(rule)) carryOut(order);
    }
    if (step == 4 && !isWithdrawn) {  // its program withdraws it
      isWithdrawn = true;
      if (std::exchange(window.isMapped, false)) events.push_back(2);
      carryOut(icons.withdrawn(7));
    }
    if (step == 5 && std::exchange(isWithdrawn, false) && !std::exchange(window.isMapped, true)) events.push_back(1);
  }
  while (!events.empty()) tell();
  if (!isWithdrawn) RC_ASSERT(window.isMapped == shows);
  RC_ASSERT(!window.isSaved || !window.isMapped);
  RC_ASSERT(!window.isSaved || !isWithdrawn);
}

TEST(LegacyIcons, GivesUpOnAWindowThatIsMappedAgainAndAgain) {
  LegacyIcons icons;
  const auto hides = [](const std::string&) { return false; };
  ASSERT_EQ(icons.dock({.window = 7, .isMapped = true}, hides)->kind, Kind::hide);
  for (int again = 0; again < LegacyIcons::mostReturns; ++again) EXPECT_EQ(icons.mapped(7)->kind, Kind::hide);
  EXPECT_EQ(icons.mapped(7)->kind, Kind::settle);
  EXPECT_FALSE(icons.mapped(7));
}

}  // namespace
