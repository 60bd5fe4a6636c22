#include "platform/linux/x11/Covers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

namespace orvo {

namespace {

constexpr std::array<std::uint8_t, 2> coveredButtons = {XCB_BUTTON_INDEX_1, XCB_BUTTON_INDEX_3};
constexpr std::uint32_t mostTypes = 16;    // windows name one or two
constexpr std::size_t mostInFrame = 64;    // a window manager's own there, and the program's
constexpr double coordinateLimit = 32767;  // the protocol's 16 bits
constexpr std::size_t mostGone = 64;
constexpr std::size_t mostDocks = 256;  // far more than panels make, and each costs at every look

// The pixels whose points the rectangle contains.
struct Pixels {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
};

int pixel(double coordinate) {
  return static_cast<int>(std::clamp(std::ceil(coordinate), -coordinateLimit, coordinateLimit));
}

std::optional<Pixels> pixelsOf(const Rect& rect) {
  if (!std::isfinite(rect.x) || !std::isfinite(rect.y) || !std::isfinite(rect.width) || !std::isfinite(rect.height)) {
    return std::nullopt;
  }
  const Pixels pixels{pixel(std::fmin(rect.x, rect.x + rect.width)), pixel(std::fmin(rect.y, rect.y + rect.height)),
                      pixel(std::fmax(rect.x, rect.x + rect.width)), pixel(std::fmax(rect.y, rect.y + rect.height))};
  if (pixels.right <= pixels.left || pixels.bottom <= pixels.top) return std::nullopt;
  return pixels;
}

}  // namespace

Covers::Covers(XConnection& connection)
    : connection_(connection),
      clientList_(connection.atom("_NET_CLIENT_LIST")),
      windowType_(connection.atom("_NET_WM_WINDOW_TYPE")),
      dockType_(connection.atom("_NET_WM_WINDOW_TYPE_DOCK")) {}

void Covers::place(const std::vector<GuardedRegion>& regions, bool keepGrabs) {
  const auto planned = plan(regions);
  const auto stays = [&planned](Cover& cover) {
    const auto found = std::ranges::find(planned, cover.place, &Planned::place);
    if (found == planned.end()) return false;
    cover.region = *found->region;
    cover.corner = found->corner;
    return true;
  };
  const auto leaving = std::stable_partition(covers_.begin(), covers_.end(), stays);
  std::for_each(leaving, covers_.end(), [&](const Cover& cover) { putAway(cover, keepGrabs); });
  covers_.erase(leaving, covers_.end());
  if (!keepGrabs) {
    for (const auto& cover : std::exchange(parked_, {})) destroy(cover);
  }

  const std::uint32_t above = XCB_STACK_MODE_ABOVE;
  for (const auto& cover : covers_) {
    xcb_configure_window(connection_.get(), cover.window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
  }
  for (const auto& each : planned) {
    if (std::ranges::find(covers_, each.place, &Cover::place) == covers_.end()) add(each);
  }
  xcb_flush(connection_.get());
}

bool Covers::concerns(const xcb_generic_event_t& event) {
  switch (eventCode(event)) {
    case XCB_PROPERTY_NOTIFY: {
      const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
      return change.window == connection_.root() && change.atom == clientList_;
    }
    case XCB_DESTROY_NOTIFY: {
      const auto gone = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
      watched_.erase(gone);
      docks_.erase(gone);
      std::erase_if(parked_, [gone](const Cover& cover) { return cover.window == gone; });
      return std::erase_if(covers_, [gone](const Cover& cover) { return cover.window == gone; }) > 0 || !isOwn(gone);
    }
    case XCB_CREATE_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_MAP_NOTIFY:
    case XCB_REPARENT_NOTIFY:
    case XCB_CONFIGURE_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
      // All of these name the window that changed at the same place.
      return !isOwn(reinterpret_cast<const xcb_map_notify_event_t&>(event).window) || isDisturbed(event);
    default:
      return false;
  }
}

// Somebody else moved a cover or took it off the screen: it is placed anew.
bool Covers::isDisturbed(const xcb_generic_event_t& event) {
  const auto window = reinterpret_cast<const xcb_map_notify_event_t&>(event).window;
  const auto cover = std::ranges::find(covers_, window, &Cover::window);
  if (cover == covers_.end()) return false;
  if (eventCode(event) == XCB_CONFIGURE_NOTIFY) {
    const auto& now = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
    const auto& [parent, x, y, width, height] = cover->place;
    if (now.x == x && now.y == y && now.width == width && now.height == height) return false;
  } else if (eventCode(event) != XCB_UNMAP_NOTIFY && eventCode(event) != XCB_REPARENT_NOTIFY) {
    return false;
  }
  putAway(*cover, true);  // a button may be held on it
  covers_.erase(cover);
  return true;
}

const Covers::Cover* Covers::coverOf(xcb_window_t window) const {
  for (const auto* list : {&covers_, &parked_, &gone_}) {
    const auto found = std::ranges::find(*list, window, &Cover::window);
    if (found != list->end()) return &*found;
  }
  return nullptr;
}

std::optional<HeldPress::Place> Covers::caught(const xcb_button_press_event_t& press) const {
  const Cover* cover = coverOf(press.event);
  if (cover == nullptr) return std::nullopt;
  // A second button comes here from wherever the pointer is.
  const auto& place = cover->place;
  if (press.event_x < 0 || press.event_y < 0 || press.event_x >= place.width || press.event_y >= place.height) {
    return std::nullopt;
  }
  const Point location{cover->corner.x + press.event_x, cover->corner.y + press.event_y};
  HeldPress::Place where{{static_cast<double>(press.root_x), static_cast<double>(press.root_y)}, location};
  if (const auto& control = cover->region.control) {
    const Point offset{location.x - control->frame.x, location.y - control->frame.y};
    where.control = ControlPoint{control->identifier, offset, place.parent};
  }
  return where;
}

void Covers::crossed(const xcb_enter_notify_event_t& event) {
  const auto cover = std::ranges::find(covers_, event.event, &Cover::window);
  if (cover == covers_.end()) return;
  cover->isEntered = eventCode(reinterpret_cast<const xcb_generic_event_t&>(event)) == XCB_ENTER_NOTIFY;
  if (!cover->isEntered) endHover(cover->place);
}

// As if the pointer came to the control from outside and went on to where it is.
void Covers::endHover(const Place& place) {
  const auto parent = frameOf(place.parent);
  if (!parent) return;
  const Point corner{parent->x, parent->y};
  tell(place.parent, XCB_ENTER_NOTIFY, corner,
       {corner.x + place.x + place.width / 2.0, corner.y + place.y + place.height / 2.0});
  // One that leaves before it is told to be there has left for good, as its program hears it: asked once more.
  bool isTold = false;
  while (const auto pointer = connection_.queryPointer()) {
    const Point now{static_cast<double>(pointer->root_x), static_cast<double>(pointer->root_y)};
    const bool isThere = isUnder(place.parent, now);
    if (isThere && isTold) break;
    tell(place.parent, isThere ? XCB_MOTION_NOTIFY : XCB_LEAVE_NOTIFY, corner, now);
    if (!isThere) break;
    isTold = true;
  }
  xcb_flush(connection_.get());
}

// To the window's own program, whatever it selected. `corner` is the window's.
void Covers::tell(xcb_window_t window, std::uint8_t code, Point corner, Point onScreen) {
  const bool isMotion = code == XCB_MOTION_NOTIFY;
  xcb_enter_notify_event_t event{};  // of one layout with motion and leaving, but for its last two bytes
  event.response_type = code;
  event.detail = isMotion ? std::uint8_t{XCB_MOTION_NORMAL} : std::uint8_t{XCB_NOTIFY_DETAIL_NONLINEAR};
  event.time = XCB_CURRENT_TIME;
  event.root = connection_.root();
  event.event = window;
  event.root_x = static_cast<std::int16_t>(onScreen.x);
  event.root_y = static_cast<std::int16_t>(onScreen.y);
  event.event_x = static_cast<std::int16_t>(onScreen.x - corner.x);
  event.event_y = static_cast<std::int16_t>(onScreen.y - corner.y);
  constexpr std::uint8_t sameScreenOfMotion = 1;  // at the place of the others' mode
  constexpr std::uint8_t sameScreen = 2;
  event.mode = isMotion ? sameScreenOfMotion : std::uint8_t{XCB_NOTIFY_MODE_NORMAL};
  event.same_screen_focus = isMotion ? std::uint8_t{0} : sameScreen;
  xcb_send_event(connection_.get(), 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
}

std::optional<Point> Covers::locate(const ControlPlace& control, Point offset) {
  const auto known = docks();
  const Dock* dock = dockOf(control.window, known);
  if (dock == nullptr || control.frame.width < 1 || control.frame.height < 1) return std::nullopt;
  const Point point{
      dock->frame.x + control.frame.x - control.window.frame.x + std::clamp(offset.x, 0.0, control.frame.width - 1),
      dock->frame.y + control.frame.y - control.window.frame.y + std::clamp(offset.y, 0.0, control.frame.height - 1)};
  if (!isUnder(dock->window, point)) return std::nullopt;
  return point;
}

std::vector<Covers::Planned> Covers::plan(const std::vector<GuardedRegion>& regions) {
  used_.clear();
  std::vector<Planned> planned;
  if (!regions.empty() && !planOn(docks(), regions, planned)) {
    // The list may be anybody's work.
    learnDocks(windowsInFrames());
    planned.clear();
    planOn(docks(), regions, planned);
  }
  forgetUnused();
  return planned;
}

// False when a region is on none of the docks.
bool Covers::planOn(const std::vector<Dock>& docks, const std::vector<GuardedRegion>& regions,
                    std::vector<Planned>& planned) {
  bool all = true;
  for (const auto& region : regions) {
    bool isPlaced = false;
    const auto take = [&](const std::optional<Planned>& found) {
      if (!found) return;
      isPlaced = true;
      if (std::ranges::find(planned, found->place, &Planned::place) == planned.end()) planned.push_back(*found);
    };
    if (region.control) {
      const Rect& then = region.control->window.frame;
      if (const Dock* dock = dockOf(region.control->window, docks)) take(planOn(*dock, region, {then.x, then.y}));
    } else {
      for (const Dock& each : docks) take(planOn(each, region, {each.frame.x, each.frame.y}));
    }
    all = all && (isPlaced || !pixelsOf(region.frame));
  }
  return all;
}

std::vector<Covers::Dock> Covers::docks() {
  learnDocks(listedWindows());
  std::vector<Dock> found;
  std::erase_if(docks_, [&](xcb_window_t window) {
    watch(window);
    const auto frame = frameOf(window);
    if (frame && isMapped(window)) found.push_back({window, *frame});
    return !frame;  // gone before it was watched
  });
  return found;
}

std::optional<Rect> Covers::frameOf(xcb_window_t window) {
  auto* connection = connection_.get();
  const auto sizeCookie = xcb_get_geometry(connection, window);
  const auto originCookie = xcb_translate_coordinates(connection, window, connection_.root(), 0, 0);
  const auto size = owned(xcb_get_geometry_reply(connection, sizeCookie, nullptr));
  const auto origin = owned(xcb_translate_coordinates_reply(connection, originCookie, nullptr));
  if (!size || !origin) return std::nullopt;
  return Rect{static_cast<double>(origin->dst_x), static_cast<double>(origin->dst_y), static_cast<double>(size->width),
              static_cast<double>(size->height)};
}

bool Covers::hasDock(const PanelWindow& window) { return dockOf(window, docks()) != nullptr; }

// By size and age, since a panel may slide out of sight; else where it was. Not of another program than that which
// has one where it was.
const Covers::Dock* Covers::dockOf(const PanelWindow& window, const std::vector<Dock>& docks) const {
  const auto there = std::ranges::find(docks, window.frame, &Dock::frame);
  std::size_t older = 0;
  for (const Dock& dock : docks) {
    if (there != docks.end() && clientOf(dock.window) != clientOf(there->window)) continue;
    const bool isAlike = dock.frame.width == window.frame.width && dock.frame.height == window.frame.height;
    if (isAlike && older++ == window.ordinal) return &dock;
  }
  return there == docks.end() ? nullptr : &*there;
}

std::vector<xcb_window_t> Covers::listedWindows() {
  auto* connection = connection_.get();
  watchRoot(XCB_EVENT_MASK_PROPERTY_CHANGE);
  const auto cookie = xcb_get_property(connection, 0, connection_.root(), clientList_, XCB_ATOM_WINDOW, 0, mostWindows);
  auto clients = connection_.values(cookie);
  if (!clients.empty()) return clients;
  watchRoot(XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  return windowsOnScreen();
}

// Of many the topmost.
std::vector<xcb_window_t> Covers::windowsOnScreen() const {
  auto windows = connection_.childrenOf({connection_.root()});
  if (windows.size() > mostWindows) windows.erase(windows.begin(), windows.end() - mostWindows);
  return windows;
}

// On the screen itself and one below, where window managers put them.
std::vector<xcb_window_t> Covers::windowsInFrames() const {
  auto windows = windowsOnScreen();
  const auto inside = connection_.childrenOf(windows, mostInFrame);
  windows.insert(windows.end(), inside.begin(), inside.end());
  return windows;
}

// A panel has a few; a program that makes them without end keeps out none but its own.
void Covers::forgetDocksOfBusiest() {
  std::map<xcb_window_t, std::size_t> counts;
  for (const xcb_window_t window : docks_) ++counts[clientOf(window)];
  const auto busiest = std::ranges::max_element(counts, {}, [](const auto& each) { return each.second; });
  std::erase_if(docks_, [&](xcb_window_t window) { return clientOf(window) == busiest->first; });
}

// All questions go out before the first answer is awaited.
void Covers::learnDocks(const std::vector<xcb_window_t>& windows) {
  std::vector<xcb_get_property_cookie_t> asked;
  asked.reserve(windows.size());
  for (const auto window : windows) {
    asked.push_back(xcb_get_property(connection_.get(), 0, window, windowType_, XCB_ATOM_ATOM, 0, mostTypes));
  }
  for (std::size_t at = 0; at < windows.size(); ++at) {
    const bool isDock = std::ranges::count(connection_.values(asked[at]), dockType_) > 0;
    if (!isDock) continue;
    if (docks_.size() >= mostDocks) forgetDocksOfBusiest();
    docks_.insert(windows[at]);
  }
}

bool Covers::isMapped(xcb_window_t window) const {
  const auto cookie = xcb_get_window_attributes(connection_.get(), window);
  const auto state = owned(xcb_get_window_attributes_reply(connection_.get(), cookie, nullptr));
  return state && state->map_state != XCB_MAP_STATE_UNMAPPED;
}

// The part of the region that lies on the dock, whose corner was at `origin` when the region was told.
std::optional<Covers::Planned> Covers::planOn(const Dock& dock, const GuardedRegion& region, Point origin) {
  const auto pixels = pixelsOf(region.frame);
  if (!pixels) return std::nullopt;
  const int dockX = pixel(origin.x);
  const int dockY = pixel(origin.y);
  const int left = std::max(pixels->left - dockX, 0);
  const int top = std::max(pixels->top - dockY, 0);
  const int right = std::min(pixels->right - dockX, static_cast<int>(dock.frame.width));
  const int bottom = std::min(pixels->bottom - dockY, static_cast<int>(dock.frame.height));
  if (left >= right || top >= bottom) return std::nullopt;
  Planned planned{{dock.window, left, top, right - left, bottom - top}, &region, {origin.x + left, origin.y + top}};
  while (childHolding(planned.place)) watch(planned.place.parent);
  return planned;
}

// Moves the place into a visible child window that holds all of it, the topmost such one.
bool Covers::childHolding(Place& place) {
  auto* connection = connection_.get();
  auto children = connection_.childrenOf({place.parent});
  std::ranges::reverse(children);
  for (const auto child : children) {
    if (isOwn(child)) continue;
    const auto sizeCookie = xcb_get_geometry(connection, child);
    const auto stateCookie = xcb_get_window_attributes(connection, child);
    const auto size = owned(xcb_get_geometry_reply(connection, sizeCookie, nullptr));
    const auto state = owned(xcb_get_window_attributes_reply(connection, stateCookie, nullptr));
    if (!size || !state || state->map_state == XCB_MAP_STATE_UNMAPPED) continue;
    const int x = place.x - size->x - size->border_width;
    const int y = place.y - size->y - size->border_width;
    if (x < 0 || y < 0 || x + place.width > size->width || y + place.height > size->height) continue;
    place = {child, x, y, place.width, place.height};
    return true;
  }
  return false;
}

// Whether the pointer at this point of the screen would be in the window or below it.
bool Covers::isUnder(xcb_window_t window, Point point) {
  auto* connection = connection_.get();
  const auto x = static_cast<std::int16_t>(point.x);
  const auto y = static_cast<std::int16_t>(point.y);
  for (xcb_window_t at = connection_.root(); at != XCB_WINDOW_NONE && at != window;) {
    const auto cookie = xcb_translate_coordinates(connection, connection_.root(), at, x, y);
    const auto reply = owned(xcb_translate_coordinates_reply(connection, cookie, nullptr));
    if (!reply || reply->child == window) return static_cast<bool>(reply);
    at = reply->child;
  }
  return false;
}

std::uint32_t Covers::clientOf(xcb_window_t window) const {
  return window & ~xcb_get_setup(connection_.get())->resource_id_mask;
}

bool Covers::isOwn(xcb_window_t window) const {
  return clientOf(window) == xcb_get_setup(connection_.get())->resource_id_base;
}

void Covers::watch(xcb_window_t window) {
  used_.insert(window);
  if (!watched_.insert(window).second) return;
  const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &mask);
}

void Covers::watchRoot(std::uint32_t mask) {
  used_.insert(connection_.root());
  watched_.insert(connection_.root());
  xcb_change_window_attributes(connection_.get(), connection_.root(), XCB_CW_EVENT_MASK, &mask);
}

void Covers::forgetUnused() {
  std::erase_if(watched_, [this](xcb_window_t window) {
    if (used_.contains(window)) return false;
    // Of a dock its end is still to be heard.
    const std::uint32_t mask = docks_.contains(window) ? std::uint32_t{XCB_EVENT_MASK_STRUCTURE_NOTIFY} : 0;
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &mask);
    return true;
  });
}

void Covers::add(const Planned& planned) {
  const auto& place = planned.place;
  auto* connection = connection_.get();
  const auto window = xcb_generate_id(connection);
  const std::uint32_t mask =
      XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW;
  xcb_create_window(connection, 0, window, place.parent, static_cast<std::int16_t>(place.x),
                    static_cast<std::int16_t>(place.y), static_cast<std::uint16_t>(place.width),
                    static_cast<std::uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                    XCB_CW_EVENT_MASK, &mask);
  for (const auto button : coveredButtons) {
    xcb_grab_button(connection, 0, window, XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE,
                    XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_WINDOW_NONE, XCB_CURSOR_NONE, button,
                    XCB_MOD_MASK_ANY);
  }
  xcb_map_window(connection, window);
  covers_.push_back({window, place, *planned.region, planned.corner});
}

void Covers::putAway(const Cover& cover, bool keepGrab) {
  if (!keepGrab) return destroy(cover);
  // Still mapped, as a grab needs, but outside its parent and so nowhere on the screen.
  const std::uint32_t away[] = {static_cast<std::uint32_t>(-cover.place.width),
                                static_cast<std::uint32_t>(-cover.place.height)};
  xcb_configure_window(connection_.get(), cover.window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, &away[0]);
  parked_.push_back(cover);
}

// A pointer on the cover is not told as leaving it any more.
void Covers::destroy(const Cover& cover) {
  xcb_destroy_window(connection_.get(), cover.window);
  if (cover.isEntered) endHover(cover.place);
  if (gone_.size() == mostGone) gone_.erase(gone_.begin());
  gone_.push_back(cover);
}

}  // namespace orvo
