#include "agent/rules/StatusControls.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <tuple>

namespace orvo {

namespace {

// Nothing to click: a plug-in that has nothing to show shrinks to a pixel. Hidden accessibles have
// their far negative place besides.
constexpr double leastSize = 4;
constexpr double leastCoordinate = -32768;

// The tray, under its name before Xfce 4.16 too, and ways to start programs and to reach windows and folders, which no
// menu bar calls a status control.
constexpr std::array<std::string_view, 18> others = {
    "systray",       "statusnotifier", "separator",  "launcher", "applicationsmenu", "whiskermenu",
    "directorymenu", "places",         "windowmenu", "pager",    "showdesktop",      "verve",
    "smartbookmark", "screenshooter",  "tasklist",   "docklike", "appmenu",          "windowck-plugin"};

// What is taller is taken for a panel that has been opened.
constexpr double greatestHeight = 60;
// For the tallest screen; what claims to be taller is no control.
constexpr double mostPieces = 128;

bool isControl(const PanelPlugin& plugin) { return std::ranges::find(others, plugin.type) == others.end(); }

bool isVisible(const Rect& place) {
  return place.x > leastCoordinate && place.y > leastCoordinate && place.width >= leastSize &&
         place.height >= leastSize;
}

// The accessible order of places is that of their creation: one that the person has moved keeps its
// number. Where all are on screen, where they stand says more.
std::vector<Rect> placesInOrder(const Dock& dock) {
  std::vector<Rect> places = dock.places;
  const bool placed =
      std::all_of(places.begin(), places.end(), [](const Rect& place) { return place.x > leastCoordinate; });
  const bool lies = dock.frame.width >= dock.frame.height;
  if (placed) {
    // Small plug-ins of a panel with several rows share a column.
    std::stable_sort(places.begin(), places.end(), [lies](const Rect& left, const Rect& right) {
      return lies ? std::tie(left.x, left.y) < std::tie(right.x, right.y)
                  : std::tie(left.y, left.x) < std::tie(right.y, right.x);
    });
  }
  return places;
}

std::vector<StatusControl> controlsOf(const PanelLayout& layout, const Dock& dock) {
  std::vector<StatusControl> controls;
  const std::vector<Rect> places = placesInOrder(dock);
  for (std::size_t index = 0; index < layout.size(); ++index) {
    const auto& [type, number] = layout[index];
    const Rect& place = places[index];
    if (!isControl(layout[index]) || !isVisible(place)) continue;
    controls.push_back({type + '-' + std::to_string(number),
                        {dock.frame.x + place.x, dock.frame.y + place.y, std::min(place.width, dock.frame.width),
                         std::min(place.height, dock.frame.height)}});
  }
  return controls;
}

}  // namespace

std::vector<DockControls> statusControls(const std::vector<PanelLayout>& layouts, const std::vector<Dock>& docks) {
  std::vector<DockControls> panels(docks.size());
  std::ranges::transform(docks, panels.begin(), [](const Dock& dock) { return DockControls{dock.frame, {}}; });
  auto next = docks.begin();
  for (const PanelLayout& layout : layouts) {
    const auto dock =
        std::find_if(next, docks.end(), [&](const Dock& each) { return each.places.size() == layout.size(); });
    if (dock == docks.end()) continue;
    panels[static_cast<std::size_t>(dock - docks.begin())].controls = controlsOf(layout, *dock);
    next = std::next(dock);
  }
  return panels;
}

std::vector<Rect> pieces(const Rect& frame) {
  const auto count = static_cast<int>(std::clamp(std::ceil(frame.height / greatestHeight), 0.0, mostPieces));
  std::vector<Rect> cut;
  for (int index = 0; index < count; ++index) {
    const double top = std::floor(frame.height * index / count);
    const double bottom = std::floor(frame.height * (index + 1) / count);
    cut.push_back({frame.x, frame.y + top, frame.width, bottom - top});
  }
  return cut;
}

}  // namespace orvo
