// Invisible input-only windows over regions of the panel, which take the left and right button and
// nothing else. Owned by the tap's thread and used there only.
//
// A cover is a child of the deepest panel window that holds its region, so that it goes where that window
// goes, that whatever the panel puts on top hides it as well, and that the wheel, the middle button and
// pointer motion, for which it does not ask, fall through to the control's own program. Its buttons are
// passive asynchronous grabs: they end with the physical release even when this process is stopped.
//
// A pointer that moves over a cover is told to the panel as motion over the control, but one that leaves
// it is not told as leaving the control, which would stay lit: the cover says so in the pointer's place.
#pragma once

#include "core/Rect.h"
#include "platform/linux/x11/GuardedRegion.h"
#include "platform/linux/x11/HeldPress.h"
#include "platform/linux/x11/XConnection.h"

#include <optional>
#include <set>
#include <vector>

namespace orvo {

class Covers {
 public:
  explicit Covers(XConnection& connection);

  // Places covers over the regions as far as a dock window lies there; a region elsewhere gets none.
  // With `keepGrabs`, covers that go are only moved out of sight, so that a button held on one of
  // them keeps its grab and the panel gets no release without a press; the next call without it
  // removes them.
  void place(const std::vector<GuardedRegion>& regions, bool keepGrabs);
  void removeAll() { place({}, false); }

  // True when the event tells that panel windows came, went or moved, so that covers need placing
  // afresh.
  bool concerns(const xcb_generic_event_t& event);

  // What the press that a cover caught was on; absent for one elsewhere.
  std::optional<HeldPress::Place> caught(const xcb_button_press_event_t& press) const;

  // To be told of each pointer that comes to a cover or leaves it.
  void crossed(const xcb_enter_notify_event_t& event);

  // Where the point of the control is on the screen; absent where the pointer would not reach it there.
  std::optional<Point> locate(const ControlPlace& control, Point offset);

  // Whether the panel has the window still as it was told.
  bool hasDock(const PanelWindow& window);
  // Whether a click at the point of the screen would go to the window or into it.
  bool isUnder(xcb_window_t window, Point point);

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
  struct Planned {
    Place place;
    const GuardedRegion* region;
    Point corner;  // the place's, as the region's owner knows it
  };
  struct Cover {
    xcb_window_t window;
    Place place;
    GuardedRegion region;
    Point corner;
    bool isEntered = false;
  };
  struct Dock {
    xcb_window_t window;
    Rect frame;  // on the screen
  };

  std::vector<Planned> plan(const std::vector<GuardedRegion>& regions);
  const Cover* coverOf(xcb_window_t window) const;
  std::vector<Dock> docks();
  std::vector<xcb_window_t> listedWindows();
  std::vector<xcb_window_t> windowsOnScreen() const;
  std::vector<xcb_window_t> windowsInFrames() const;
  void forgetDocksOfBusiest();
  void learnDocks(const std::vector<xcb_window_t>& windows);
  bool isMapped(xcb_window_t window) const;
  std::optional<Rect> frameOf(xcb_window_t window);
  const Dock* dockOf(const PanelWindow& window, const std::vector<Dock>& docks) const;
  bool planOn(const std::vector<Dock>& docks, const std::vector<GuardedRegion>& regions, std::vector<Planned>& planned);
  std::optional<Planned> planOn(const Dock& dock, const GuardedRegion& region, Point origin);
  bool childHolding(Place& place);
  // The part of a window's number that all windows of its program share.
  std::uint32_t clientOf(xcb_window_t window) const;
  bool isOwn(xcb_window_t window) const;
  bool isDisturbed(const xcb_generic_event_t& event);
  void endHover(const Place& place);
  void tell(xcb_window_t window, std::uint8_t code, Point corner, Point onScreen);
  void destroy(const Cover& cover);

  void watch(xcb_window_t window);
  void watchRoot(std::uint32_t mask);
  void forgetUnused();

  void add(const Planned& planned);
  void putAway(const Cover& cover, bool keepGrab);

  XConnection& connection_;
  xcb_atom_t clientList_;
  xcb_atom_t windowType_;
  xcb_atom_t dockType_;
  std::vector<Cover> covers_;
  std::vector<Cover> parked_;
  std::vector<Cover> gone_;  // of late: a press may still be on its way from them
  // Each from when it is found until it is destroyed, whatever is said of it then. A program numbers its windows in the
  // order in which it makes them.
  std::set<xcb_window_t> docks_;
  std::set<xcb_window_t> watched_;
  std::set<xcb_window_t> used_;
};

}  // namespace orvo
