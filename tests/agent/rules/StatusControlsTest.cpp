#include "agent/rules/StatusControls.h"

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orvo {
namespace {

// What `read` makes of each part between bars.
template <typename Part>
std::vector<Part> parts(const std::string& text, Part (*read)(std::istream&)) {
  std::vector<Part> all;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, '|');) {
    std::istringstream words(part);
    all.push_back(read(words));
  }
  return all;
}

// Types, which are numbered from one on.
PanelLayout layout(std::istream& words) {
  PanelLayout plugins;
  for (std::string type; words >> type;) plugins.push_back({type, static_cast<int>(plugins.size()) + 1});
  return plugins;
}

// The frame, then the places, each four numbers.
Dock dock(std::istream& words) {
  Dock read;
  words >> read.frame.x >> read.frame.y >> read.frame.width >> read.frame.height;
  for (Rect place; words >> place.x >> place.y >> place.width >> place.height;) read.places.push_back(place);
  return read;
}

// "name@x,y+width" of each, a bar behind each dock.
std::string told(const std::vector<DockControls>& docks) {
  std::ostringstream text;
  for (const DockControls& each : docks) {
    for (const auto& [name, frame] : each.controls)
      text << name << '@' << frame.x << ',' << frame.y << '+' << frame.width << ' ';
    text << '|';
  }
  return text.str();
}

TEST(StatusControls, TakesEveryControlOfEveryPanelWhereItStandsNow) {
  constexpr const char* three = "systray clock actions";
  const struct {
    const char *what, *layouts, *docks, *expected;
  } cases[] = {
      {"programs, windows and trays are none", "tasklist statusnotifier genmon separator systray clock",
       "100 700 900 26  0 0 9 26  9 0 9 26  18 0 9 26  27 0 9 26  36 0 9 26  45 0 9 26",
       "genmon-3@118,700+9 clock-6@145,700+9 |"},
      {"the tray is on another panel, between them a helper's window", "pager systray|clock",
       "100 700 900 26  0 0 20 26  20 0 20 26|-9999 -9999 3 3|0 0 30 26  5 0 20 26", "||clock-1@5,0+20 |"},
      {"moved by the person after they were made", three, "100 700 900 26  20 0 60 26  80 0 30 26  0 0 20 26",
       "clock-2@120,700+60 actions-3@180,700+30 |"},
      {"hidden", three, "100 700 900 26  0 0 20 26  -2147483648 -2147483648 1 1  80 0 30 26", "actions-3@180,700+30 |"},
      {"nothing to show", "systray clock actions genmon", "100 700 900 26  0 0 20 26  20 0 3 26  80 0 4 4  90 0 9 3",
       "actions-3@180,700+4 |"},
      {"two panels alike", "clock systray|pager actions",
       "0 0 90 26  0 0 9 26  9 0 9 26|0 50 90 26  0 0 9 26  9 0 9 26", "clock-1@0,0+9 |actions-2@9,50+9 |"},
      {"wider than the panel", three, "0 0 50 26  0 0 60 26  60 0 60 26  120 0 9 26",
       "clock-2@60,0+50 actions-3@120,0+9 |"},
      {"standing, two in a row", three, "0 0 52 1000  0 0 52 20  26 20 26 20  0 20 26 20",
       "clock-2@0,20+26 actions-3@26,20+26 |"},
      {"lying, two in a column", three, "0 0 1000 52  0 0 20 52  20 26 30 26  20 0 30 26",
       "clock-2@20,0+30 actions-3@20,26+30 |"},
      {"settings and windows out of step", three, "0 0 900 26  0 0 20 26  20 0 20 26", "|"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(told(statusControls(parts(each.layouts, layout), parts(each.docks, dock))), each.expected) << each.what;
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
  EXPECT_EQ(pieces({0, 0, 1, 1e9}).size(), 128U);
}

}  // namespace
}  // namespace orvo
