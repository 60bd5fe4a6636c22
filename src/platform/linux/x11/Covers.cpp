#include "platform/linux/x11/Covers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace orvo {

namespace {

constexpr std::array<std::uint8_t, 2> coveredButtons = {XCB_BUTTON_INDEX_1, XCB_BUTTON_INDEX_3};
constexpr std::uint32_t maximumListLength = 4096;  // entries read of a window list
constexpr double coordinateLimit = 32767;          // the protocol's 16 bits

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

std::vector<xcb_window_t> windowsOf(const xcb_get_property_reply_t* reply) {
  if (reply == nullptr || reply->format != 32) return {};
  const auto* first = static_cast<const xcb_window_t*>(xcb_get_property_value(reply));
  return {first, first + xcb_get_property_value_length(reply) / 4};
}

std::vector<xcb_window_t> childrenOf(xcb_connection_t* connection, xcb_window_t window) {
  const auto tree = owned(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
  if (!tree) return {};
  const auto* first = xcb_query_tree_children(tree.get());
  return {first, first + xcb_query_tree_children_length(tree.get())};
}

}  // namespace

Covers::Covers(XConnection& connection)
    : connection_(connection),
      clientList_(connection.atom("_NET_CLIENT_LIST")),
      windowType_(connection.atom("_NET_WM_WINDOW_TYPE")),
      dockType_(connection.atom("_NET_WM_WINDOW_TYPE_DOCK")) {}

void Covers::lay(const std::vector<Rect>& regions, bool keepGrabs) {
  const auto places = findPlaces(regions);
  const auto stays = [&places](const Cover& cover) { return std::ranges::count(places, cover.place) > 0; };
  const auto leaving = std::stable_partition(covers_.begin(), covers_.end(), stays);
  std::for_each(leaving, covers_.end(), [&](const Cover& cover) { putAway(cover, keepGrabs); });
  covers_.erase(leaving, covers_.end());
  if (!keepGrabs) {
    for (const auto window : parked_) xcb_destroy_window(connection_.get(), window);
    parked_.clear();
  }

  const std::uint32_t above = XCB_STACK_MODE_ABOVE;
  for (const auto& cover : covers_) {
    xcb_configure_window(connection_.get(), cover.window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
  }
  for (const auto& place : places) {
    if (std::ranges::find(covers_, place, &Cover::place) == covers_.end()) add(place);
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
      std::erase(parked_, gone);
      return std::erase_if(covers_, [gone](const Cover& cover) { return cover.window == gone; }) > 0 || !isOwn(gone);
    }
    case XCB_CREATE_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_MAP_NOTIFY:
    case XCB_REPARENT_NOTIFY:
    case XCB_CONFIGURE_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
      // All of these name the window that changed at the same place.
      return !isOwn(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
    default:
      return false;
  }
}

std::vector<Covers::Place> Covers::findPlaces(const std::vector<Rect>& regions) {
  used_.clear();
  std::vector<Place> places;
  if (!regions.empty()) {
    for (const auto dock : docks()) {
      for (const auto& region : regions) {
        Place place;
        if (findPlace(dock, region, place) && std::ranges::count(places, place) == 0) places.push_back(place);
      }
    }
  }
  forgetUnused();
  return places;
}

std::vector<xcb_window_t> Covers::docks() {
  auto windows = topLevelWindows();
  std::erase_if(windows, [this](xcb_window_t window) { return !isDock(window); });
  return windows;
}

// From the window manager's list of clients; without a window manager, the root's own children.
std::vector<xcb_window_t> Covers::topLevelWindows() {
  auto* connection = connection_.get();
  watchRoot(XCB_EVENT_MASK_PROPERTY_CHANGE);
  const auto cookie =
      xcb_get_property(connection, 0, connection_.root(), clientList_, XCB_ATOM_WINDOW, 0, maximumListLength);
  auto clients = windowsOf(owned(xcb_get_property_reply(connection, cookie, nullptr)).get());
  if (!clients.empty()) return clients;
  watchRoot(XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  return childrenOf(connection, connection_.root());
}

bool Covers::isDock(xcb_window_t window) {
  const auto cookie = xcb_get_property(connection_.get(), 0, window, windowType_, XCB_ATOM_ATOM, 0, maximumListLength);
  const auto reply = owned(xcb_get_property_reply(connection_.get(), cookie, nullptr));
  return std::ranges::count(windowsOf(reply.get()), dockType_) > 0;
}

bool Covers::findPlace(xcb_window_t dock, const Rect& region, Place& place) {
  const auto pixels = pixelsOf(region);
  if (!pixels) return false;
  watch(dock);
  auto* connection = connection_.get();
  const auto sizeCookie = xcb_get_geometry(connection, dock);
  const auto originCookie = xcb_translate_coordinates(connection, dock, connection_.root(), 0, 0);
  const auto size = owned(xcb_get_geometry_reply(connection, sizeCookie, nullptr));
  const auto origin = owned(xcb_translate_coordinates_reply(connection, originCookie, nullptr));
  if (!size || !origin) return false;

  // The part of the region that lies on the dock.
  const int left = std::max(pixels->left - origin->dst_x, 0);
  const int top = std::max(pixels->top - origin->dst_y, 0);
  const int right = std::min<int>(pixels->right - origin->dst_x, size->width);
  const int bottom = std::min<int>(pixels->bottom - origin->dst_y, size->height);
  if (left >= right || top >= bottom) return false;
  place = {dock, left, top, right - left, bottom - top};
  while (childHolding(place)) watch(place.parent);
  return true;
}

// Moves the place into a visible child window that holds all of it, the topmost such one.
bool Covers::childHolding(Place& place) {
  auto* connection = connection_.get();
  auto children = childrenOf(connection, place.parent);
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

bool Covers::isOwn(xcb_window_t window) const {
  const auto* setup = xcb_get_setup(connection_.get());
  return (window & ~setup->resource_id_mask) == setup->resource_id_base;
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
    const std::uint32_t none = XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &none);
    return true;
  });
}

void Covers::add(const Place& place) {
  auto* connection = connection_.get();
  const auto window = xcb_generate_id(connection);
  const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
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
  covers_.push_back({window, place});
}

void Covers::putAway(const Cover& cover, bool keepGrab) {
  if (!keepGrab) {
    xcb_destroy_window(connection_.get(), cover.window);
    return;
  }
  // Still mapped, as a grab needs, but outside its parent and so nowhere on the screen.
  const std::uint32_t away[] = {static_cast<std::uint32_t>(-cover.place.width),
                                static_cast<std::uint32_t>(-cover.place.height)};
  xcb_configure_window(connection_.get(), cover.window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, &away[0]);
  parked_.push_back(cover.window);
}

}  // namespace orvo
