#include "agent/rules/StatusControls.h"

#include <gtest/gtest.h>

namespace orvo {

// "name@x,y+width" of each, a bar behind each dock.
std::string told(const std::vector<PanelLayout>& layouts, const std::vector<Dock>& docks) {
  std::ostringstream text;
  for (const DockControls& each : statusControls(layouts, docks)) {
    for (const auto& [name, frame] : each.controls)
      text << name << '@' << frame.x << ',' << frame.y << '+' << frame.width << ' ';
    text << '|';
  }
  return text.str();
}

TEST(StatusControls, TakesEveryControlOfEveryPanelWhereItStandsNow) {
  const Rect frame{100, 700, 900, 26};
  const std::vector<PanelLayout> three{{{"systray", 1}, {"clock", 2}, {"actions", 3}}};
  const std::vector<Rect> two{{0, 0, 9, 26}, {9, 0, 9, 26}};
  // Programs, windows, trays and what has nothing to show.
  const std::vector<Rect> seven{{0, 0, 9, 26},  {9, 0, 9, 26}, {18, 0, 4, 4}, {27, 0, 9, 26},
                                {36, 0, 9, 26}, {45, 0, 3, 9}, {54, 0, 9, 3}};
  const PanelLayout types{{"tasklist", 1}, {"statusnotifier", 2}, {"genmon", 3}, {"separator", 4},
                          {"systray", 5},  {"clock", 6},          {"clock", 7}};
  EXPECT_EQ(told({types}, {{frame, seven}}), "genmon-3@118,700+4 |");
  // Two panels alike behind the tray's and a helper's window.
  EXPECT_EQ(told({{{"systray", 1}}, {{"clock", 1}, {"systray", 2}}, {{"pager", 1}, {"actions", 2}}},
                 {{frame, {{0, 0, 9, 9}}}, {{-9, -9, 3, 3}, {}}, {{0, 0, 90, 26}, two}, {{0, 50, 90, 26}, two}}),
            "||clock-1@0,0+9 |actions-2@9,50+9 |");
  EXPECT_EQ(told(three, {{frame, two}}), "|") << "settings and windows out of step";
  // Moved by the person after they were made, one wider than the panel; then one of them hidden.
  EXPECT_EQ(told(three, {{{100, 700, 50, 26}, {{20, 0, 60, 26}, {80, 0, 30, 26}, {0, 0, 20, 26}}}}),
            "clock-2@120,700+50 actions-3@180,700+30 |");
  EXPECT_EQ(told(three, {{frame, {{80, 0, 20, 26}, {-2147483648, -2147483648, 9, 9}, {0, 0, 30, 26}}}}),
            "actions-3@100,700+30 |");
  // Standing, two in a row; lying, two in a column.
  EXPECT_EQ(told(three, {{{0, 0, 52, 1000}, {{0, 0, 52, 20}, {26, 20, 26, 20}, {0, 20, 26, 20}}}}),
            "clock-2@0,20+26 actions-3@26,20+26 |");
  EXPECT_EQ(told(three, {{{0, 0, 1000, 52}, {{0, 0, 20, 52}, {20, 26, 30, 26}, {20, 0, 30, 26}}}}),
            "clock-2@20,0+30 actions-3@20,26+30 |");
}

TEST(StatusControls, CutsWhatIsTallerThanAControlAndLosesNoRowOfIt) {
  for (const double height : {1.0, 60.0, 60.5, 61.0, 112.0, 121.0, 1000.0}) {
    double next = 5;
    for (const Rect& piece : pieces({3, 5, 32, height})) {
      EXPECT_TRUE(piece.y == next && piece.height <= 60) << height;
      next += piece.height;
    }
    EXPECT_GE(next, 5 + std::floor(height));
  }
  EXPECT_EQ(pieces({0, 0, 1, 60}).size(), 1U);
  EXPECT_EQ(pieces({0, 0, 1, 1e9}).size(), 128U);
}

}  // namespace orvo
