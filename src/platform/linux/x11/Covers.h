// Invisible input-only windows over regions of the panel, which take the left and right button and
// nothing else. Owned by the tap's thread and used there only.
//
// A cover is a child of the deepest panel window that holds its region, so that whatever the panel
// puts on top hides it as well, and that the wheel, the middle button and pointer motion, for which
// it does not ask, fall through to the control's own program. Its buttons are passive asynchronous
// grabs: they end with the physical release even when this process is stopped.
#pragma once

#include "core/Rect.h"
#include "platform/linux/x11/XConnection.h"

#include <set>
#include <vector>

namespace orvo {

class Covers {
 public:
  explicit Covers(XConnection& connection);

  // Lays covers over the regions as far as a dock window lies there; a region elsewhere gets none.
  // With `keepGrabs`, covers that go are only moved out of sight, so that a button held on one of
  // them keeps its grab and the panel gets no release without a press; the next call without it
  // removes them.
  void lay(const std::vector<Rect>& regions, bool keepGrabs);
  void removeAll() { lay({}, false); }

  // True when the event tells that panel windows came, went or moved, so that covers need laying
  // afresh.
  bool concerns(const xcb_generic_event_t& event);

 private:
  // Where a cover goes, in the parent's coordinates.
  struct Place {
    xcb_window_t parent = XCB_WINDOW_NONE;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Place&) const = default;
  };
  struct Cover {
    xcb_window_t window;
    Place place;
  };

  std::vector<Place> findPlaces(const std::vector<Rect>& regions);
  std::vector<xcb_window_t> docks();
  std::vector<xcb_window_t> topLevelWindows();
  bool isDock(xcb_window_t window);
  bool findPlace(xcb_window_t dock, const Rect& region, Place& place);
  bool childHolding(Place& place);
  bool isOwn(xcb_window_t window) const;

  void watch(xcb_window_t window);
  void watchRoot(std::uint32_t mask);
  void forgetUnused();

  void add(const Place& place);
  void putAway(const Cover& cover, bool keepGrab);

  XConnection& connection_;
  xcb_atom_t clientList_;
  xcb_atom_t windowType_;
  xcb_atom_t dockType_;
  std::vector<Cover> covers_;
  std::vector<xcb_window_t> parked_;
  std::set<xcb_window_t> watched_;
  std::set<xcb_window_t> used_;
};

}  // namespace orvo
