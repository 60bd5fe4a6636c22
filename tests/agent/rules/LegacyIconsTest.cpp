#include "agent/rules/LegacyIcons.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace orvo {

using Kind = LegacyIcons::Order::Kind;

// Whatever happens to a window in whatever order: an icon that is wanted ends up mapped, an unwanted one does not, and
// none that is mapped, or that its program has withdrawn, stays in the save-set.
RC_GTEST_PROP(LegacyIcons, EveryOrderOfEventsEndsWell, ()) {
  LegacyIcons icons;
  bool isMapped = true, isSaved = false, isWithdrawn = false, shows = true;
  // What the X server has yet to tell, in order: that it was mapped, or unmapped.
  std::vector<bool> news;
  const auto map = [&](bool maps) {
    if (std::exchange(isMapped, maps) != maps) news.push_back(maps);
  };
  const std::function<void(const std::optional<LegacyIcons::Order>&)> carryOut = [&](const auto& order) {
    if (!order) return;
    if (order->kind != Kind::settle) map(order->kind == Kind::show);
    if (order->kind != Kind::show) isSaved = order->kind == Kind::hide;
    if (order->kind == Kind::hide && isWithdrawn) carryOut(icons.withdrawn(7));
  };
  const auto tell = [&] {
    if (news.empty()) return;
    const bool maps = news.front();
    news.erase(news.begin());
    maps ? carryOut(icons.mapped(7)) : icons.unmapped(7);
  };
  const auto rule = [&](const std::string&) { return shows; };
  carryOut(icons.dock({.window = 7, .isMapped = true}, rule));
  for (const int step : *rc::gen::container<std::vector<int>>(40, rc::gen::inRange(0, 6))) {
    if (step <= 2) tell();
    if (step == 3) {
      shows = !shows;
      for (const auto& order : icons.apply(rule)) carryOut(order);
    }
    if (step == 4 && !std::exchange(isWithdrawn, true)) {
      map(false);
      carryOut(icons.withdrawn(7));
    }
    if (step == 5 && std::exchange(isWithdrawn, false)) map(true);
  }
  while (!news.empty()) tell();
  RC_ASSERT(isWithdrawn || isMapped == shows);
  RC_ASSERT(!isSaved || !(isMapped || isWithdrawn));
}

TEST(LegacyIcons, GivesUpOnAWindowThatIsMappedAgainAndAgain) {
  LegacyIcons icons;
  const auto hides = [](const std::string&) { return false; };
  ASSERT_EQ(icons.dock({.window = 7, .isMapped = true}, hides)->kind, Kind::hide);
  for (int again = 0; again < LegacyIcons::mostReturns; ++again) EXPECT_EQ(icons.mapped(7)->kind, Kind::hide);
  EXPECT_EQ(icons.mapped(7)->kind, Kind::settle);
  EXPECT_FALSE(icons.mapped(7));
}

}  // namespace orvo
