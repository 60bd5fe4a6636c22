#include "agent/rules/StatusControls.h"

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orvo {
namespace {

constexpr Rect panelFrame{100, 700, 1000, 26};
const PanelPlugin tray{"systray", 1};
const PanelPlugin clockPlugin{"clock", 2};
const PanelPlugin actions{"actions", 3};

// "name@x,y+width" of each, a bar behind each dock.
std::string told(const std::vector<DockControls>& docks) {
  std::string text;
  for (const DockControls& dock : docks) {
    for (const auto& [name, frame] : dock.controls)
      text += name + '@' + std::to_string(int(frame.x)) + ',' + std::to_string(int(frame.y)) + '+' +
              std::to_string(int(frame.width)) + ' ';
    text += '|';
  }
  return text;
}

TEST(StatusControls, TakesEveryControlOfEveryPanelWhereItStandsNow) {
  constexpr double hidden = -2147483648.0;
  const Rect none{hidden, hidden, 1, 1};
  const PanelPlugin menu{"applicationsmenu", 8};
  const Dock helper{{-9999, -9999, 3, 3}, {}};
  const struct {
    const char* what;
    std::vector<PanelLayout> layouts;
    std::vector<Dock> docks;
    const char* expected;
  } cases[] = {
      {"programs, windows and trays are none",
       {{menu, {"tasklist", 7}, {"statusnotifier", 6}, {"genmon", 5}, {"separator", 4}, tray, clockPlugin}},
       {{panelFrame,
         {{0, 0, 9, 26},
          {9, 0, 9, 26},
          {18, 0, 9, 26},
          {27, 0, 9, 26},
          {36, 0, 9, 26},
          {45, 0, 9, 26},
          {54, 0, 9, 26}}}},
       "genmon-5@127,700+9 clock-2@154,700+9 |"},
      {"the tray is on another panel",
       {{menu, tray}, {clockPlugin}},
       {{panelFrame, {{0, 0, 20, 26}, {20, 0, 20, 26}}}, helper, {{0, 0, 30, 26}, {{5, 0, 20, 26}}}},
       "||clock-2@5,0+20 |"},
      {"moved by the person after they were made",
       {{tray, clockPlugin, actions}},
       {{panelFrame, {{20, 0, 60, 26}, {80, 0, 30, 26}, {0, 0, 20, 26}}}},
       "clock-2@120,700+60 actions-3@180,700+30 |"},
      {"hidden",
       {{tray, clockPlugin, actions}},
       {{panelFrame, {{0, 0, 20, 26}, none, {80, 0, 30, 26}}}},
       "actions-3@180,700+30 |"},
      {"with nothing to show",
       {{tray, clockPlugin, actions}},
       {{panelFrame, {{0, 0, 20, 26}, {20, 0, 1, 26}, {80, 0, 30, 26}}}},
       "actions-3@180,700+30 |"},
      {"standing, two in a row",
       {{tray, clockPlugin, actions}},
       {{{0, 0, 52, 1000}, {{0, 0, 52, 20}, {26, 20, 26, 20}, {0, 20, 26, 20}}}},
       "clock-2@0,20+26 actions-3@26,20+26 |"},
      {"lying, two in a column",
       {{tray, clockPlugin, actions}},
       {{{0, 0, 1000, 52}, {{0, 0, 20, 52}, {20, 26, 30, 26}, {20, 0, 30, 26}}}},
       "clock-2@20,0+30 actions-3@20,26+30 |"},
      {"settings and windows out of step", {{tray, clockPlugin}}, {{panelFrame, {{0, 0, 20, 26}}}}, "|"},
  };
  for (const auto& each : cases) EXPECT_EQ(told(statusControls(each.layouts, each.docks)), each.expected) << each.what;
}

TEST(StatusControls, CutsWhatIsTallerThanAControlAndLosesNoRowOfIt) {
  for (const double height : {1.0, 60.0, 60.5, 61.0, 112.0, 120.0, 121.0, 1000.0}) {
    const auto cut = pieces({3, 5, 32, height});
    EXPECT_EQ(cut.size() > 1, height > 60) << height;
    double next = 5;
    for (const Rect& piece : cut) {
      EXPECT_EQ(piece.y, next) << height;
      EXPECT_LE(piece.height, 60) << height;
      next += piece.height;
    }
    EXPECT_GE(next, 5 + std::floor(height));
  }
}

}  // namespace
}  // namespace orvo
