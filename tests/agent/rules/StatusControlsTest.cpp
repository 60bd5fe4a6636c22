#include "agent/rules/StatusControls.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orvo {
namespace {

constexpr Rect panelFrame{0, 0, 1000, 26};

// Places of 20 points, one after the other.
Dock dockFor(const PanelLayout& layout) {
  Dock dock{panelFrame, {}};
  for (std::size_t index = 0; index < layout.size(); ++index)
    dock.places.push_back({20.0 * static_cast<double>(index), 0, 20, 26});
  return dock;
}

TEST(StatusControls, TakesWhatStandsBesideTheTrayAndNothingElse) {
  const PanelPlugin expander{"separator", true};
  const struct {
    PanelLayout layout;
    const char* expected;
  } cases[] = {
      {{{"applicationsmenu"}, {"tasklist"}, expander, {"pager"}, {"systray"}, {"pulseaudio"}, {"separator"}, {"clock"}},
       " pulseaudio clock"},
      {{{"genmon"}, {"tasklist"}, {"xkb"}, {"pager"}, {"systray"}, {"clock"}, {"showdesktop"}}, " xkb clock"},
      {{{"systray"}, {"clock"}, expander, {"weather"}, {"tasklist"}}, " clock"},
      {{expander, {"clock"}, expander, {"systray"}}, ""},
      {{{"launcher"}, {"clock"}}, ""},
      {{{"statusnotifier"}, {"systray"}, {"clock"}}, " clock"},
  };
  for (const auto& each : cases) {
    std::string words;
    for (const StatusControl& control : statusControls({each.layout}, {dockFor(each.layout)}))
      words += ' ' + control.word;
    EXPECT_EQ(words, each.expected);
  }
}

TEST(StatusControls, FindsEachPanelAmongItsWindows) {
  const PanelLayout launchers{{"launcher"}, {"launcher"}};
  const PanelLayout status{{"launcher"}, {"systray"}, {"clock"}};
  const Dock helper{{-9999, -9999, 3, 3}, {}};
  EXPECT_EQ(statusControls({launchers, status}, {dockFor(launchers), helper, dockFor(status)}),
            (std::vector<StatusControl>{{"clock", {40, 0, 20, 26}}}));
  EXPECT_TRUE(statusControls({status}, {dockFor(launchers)}).empty()) << "settings and windows out of step";
}

TEST(StatusControls, GoesByPlacesUnlessSomeAreHidden) {
  constexpr double hidden = -2147483648.0;
  const PanelLayout layout{{"systray"}, {"clock"}, {"actions"}};
  const Rect tray{0, 0, 20, 26};
  const Rect clock{20, 0, 60, 26};
  const Rect actions{80, 0, 30, 26};
  EXPECT_EQ(statusControls({layout}, {{panelFrame, {clock, actions, tray}}}),
            (std::vector<StatusControl>{{"clock", clock}, {"actions", actions}}))
      << "moved by the person after they were made";
  EXPECT_EQ(statusControls({layout}, {{panelFrame, {tray, {hidden, hidden, 1, 1}, actions}}}),
            (std::vector<StatusControl>{{"actions", actions}}));
  EXPECT_EQ(statusControls({layout}, {{panelFrame, {tray, {20, 0, 1, 26}, actions}}}),
            (std::vector<StatusControl>{{"actions", actions}}))
      << "a plug-in with nothing to show is one point wide";
  EXPECT_EQ(statusControls({layout}, {{{0, 0, 26, 1000}, {{0, 40, 26, 30}, {0, 0, 26, 20}, {0, 20, 26, 20}}}}),
            (std::vector<StatusControl>{{"clock", {0, 20, 26, 20}}, {"actions", {0, 40, 26, 30}}}))
      << "a standing panel";
}

}  // namespace
}  // namespace orvo
