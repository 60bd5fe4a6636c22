#include "agent/rules/StatusControls.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace orvo {

namespace {

// Nothing to click: a plug-in that has nothing to show shrinks to a pixel. Hidden accessibles have
// their far negative place besides.
constexpr double leastSize = 4;
constexpr double leastCoordinate = -32768;

// "statusnotifier" is the tray's name before Xfce 4.16.
constexpr std::array<std::string_view, 2> trays = {"systray", "statusnotifier"};

// They fill the panel: what lies beyond is not beside the tray.
constexpr std::array<std::string_view, 4> dividers = {"tasklist", "docklike", "appmenu", "windowck-plugin"};

// Ways to start programs and to reach windows and folders, which no menu bar calls a status control.
constexpr std::array<std::string_view, 12> others = {"separator",     "launcher", "applicationsmenu", "whiskermenu",
                                                     "directorymenu", "places",   "windowmenu",       "pager",
                                                     "showdesktop",   "verve",    "smartbookmark",    "screenshooter"};

template <std::size_t Size>
bool contains(const std::array<std::string_view, Size>& list, std::string_view type) {
  return std::find(list.begin(), list.end(), type) != list.end();
}

bool isTray(const PanelPlugin& plugin) { return contains(trays, plugin.type); }

bool isDivider(const PanelPlugin& plugin) {
  return contains(dividers, plugin.type) || (plugin.type == "separator" && plugin.expands);
}

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
    std::stable_sort(places.begin(), places.end(), [lies](const Rect& left, const Rect& right) {
      return lies ? left.x < right.x : left.y < right.y;
    });
  }
  return places;
}

void collect(const PanelLayout& layout, const Dock& dock, std::vector<StatusControl>& controls) {
  const auto tray = std::find_if(layout.begin(), layout.end(), isTray);
  if (tray == layout.end()) return;
  const auto begin = std::find_if(std::make_reverse_iterator(tray), layout.rend(), isDivider).base();
  const auto end = std::find_if(tray, layout.end(), isDivider);
  const std::vector<Rect> places = placesInOrder(dock);
  for (auto plugin = begin; plugin != end; ++plugin) {
    const Rect& place = places[static_cast<std::size_t>(plugin - layout.begin())];
    if (!isTray(*plugin) && !contains(others, plugin->type) && isVisible(place))
      controls.push_back({plugin->type, place});
  }
}

}  // namespace

std::vector<StatusControl> statusControls(const std::vector<PanelLayout>& layouts, const std::vector<Dock>& docks) {
  std::vector<StatusControl> controls;
  auto next = docks.begin();
  for (const PanelLayout& layout : layouts) {
    const auto dock =
        std::find_if(next, docks.end(), [&](const Dock& each) { return each.places.size() == layout.size(); });
    if (dock == docks.end()) continue;
    collect(layout, *dock, controls);
    next = std::next(dock);
  }
  return controls;
}

}  // namespace orvo
