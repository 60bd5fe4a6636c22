#include "agent/LegacyTray.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

namespace orvo {

namespace {

// GTK 2 and Tk draw nothing when asked at once after they were mapped, nor on a busy machine a while after: found by
// trying. So they are asked again, after pauses that double.
constexpr std::chrono::milliseconds firstRepaint{50};
constexpr std::chrono::milliseconds lastRepaint{1600};
static_assert(LegacyTray::drawingTime > 2 * lastRepaint - firstRepaint);
// A panel puts its tray into place after it has told of it, at a login perhaps long after. Pauses double.
constexpr std::chrono::milliseconds firstPause{200};
constexpr std::chrono::minutes longestPause{2};
// Of windows, on the way from the root to the tray.
constexpr std::size_t mostSearched = 5000;
constexpr int deepest = 5;
// Any program can make as many as it likes.
constexpr std::size_t mostSockets = 1000;
constexpr std::size_t mostInside = 20;  // a socket or an icon; of the first there is one in good faith

constexpr std::uint32_t mappedFlag = 1;  // of _XEMBED_INFO

// Events, each of which may take a question to the X server; then the bus has its turn.
constexpr int mostAtOnce = 100;

}  // namespace

std::unique_ptr<LegacyTray> LegacyTray::open(sd_event* loop) {
  if (!XConnection::canOpen()) return nullptr;
  auto connection = XConnection::open("icons of the older kind");
  if (!connection || !connection->tellsProcesses()) return nullptr;
  return std::unique_ptr<LegacyTray>(new LegacyTray(std::move(connection), loop));
}

LegacyTray::LegacyTray(std::unique_ptr<XConnection> connection, sd_event* loop)
    : connection_(std::move(connection)),
      selection_(connection_->atom("_NET_SYSTEM_TRAY_S0")),
      manager_(connection_->atom("MANAGER")),
      embedding_(connection_->atom("_XEMBED_INFO")),
      mark_(connection_->atom("_ORVO_OVERRIDE_REDIRECT")),
      search_(loop, [this] { findTray(), dispatch(); }),
      repaint_(loop, [this] { repaint(), dispatch(); }),
      more_(loop, [this] { dispatch(); }),
      events_(loop, xcb_get_file_descriptor(connection_->get()), [this] { dispatch(); }) {}

void LegacyTray::follow() {
  set(connection_->root(), XCB_CW_EVENT_MASK, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
  searchPause_ = firstPause;
  findTray();
  for (const LegacyIcon& icon : icons()) repaintSoon(icon.window);
  dispatch();
}

// Whoever has waited for an answer looks here too: events may have come with it.
void LegacyTray::dispatch() {
  for (int handled = 0; handled < mostAtOnce; ++handled) {
    const auto event = owned(xcb_poll_for_event(connection_->get()));
    if (!event) {
      xcb_flush(connection_->get());
      // A server that is gone has taken them along.
      return connection_->works() ? events_.start() : forgetAll();
    }
    handle(*event);
  }
  more_.start(std::chrono::milliseconds(0));
}

void LegacyTray::apply(LegacyIcons::Shows shows) {
  shows_ = std::move(shows);
  for (const LegacyIcons::Order& order : icons_.apply(shows_)) carryOut(order);
  dispatch();
}

void LegacyTray::identify(std::int32_t process, const std::string& bundle) {
  for (const LegacyIcons::Order& order : icons_.identify(process, bundle, shows_)) carryOut(order);
  dispatch();
}

// The sockets stand in the window of the tray's own program that the panel has embedded.
void LegacyTray::findTray() {
  const auto owner = owned(xcb_get_selection_owner_reply(
      connection_->get(), xcb_get_selection_owner(connection_->get(), selection_), nullptr));
  if (!owner || owner->owner == owner_) return;
  forgetAll();
  if (owner->owner == XCB_WINDOW_NONE) return;
  tray_ = trayWindow(owner->owner);
  if (tray_ == XCB_WINDOW_NONE) {
    if (searchPause_ < longestPause) search_.start(std::exchange(searchPause_, 2 * searchPause_));
    return;
  }
  owner_ = owner->owner;
  set(tray_, XCB_CW_EVENT_MASK, XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  for (const xcb_window_t socket : connection_->childrenOf({tray_}, mostSockets)) watchSocket(socket);
}

xcb_window_t LegacyTray::trayWindow(xcb_window_t owner) const {
  const std::uint32_t mask = xcb_get_setup(connection_->get())->resource_id_mask;
  const auto isTrays = [=](xcb_window_t window) { return (window & ~mask) == (owner & ~mask); };
  std::vector<xcb_window_t> level = connection_->childrenOf({connection_->root()}, mostSearched);
  std::erase_if(level, isTrays);
  std::size_t searched = level.size();
  for (int depth = 1; depth < deepest && searched <= mostSearched; ++depth) {
    level = connection_->childrenOf(level);
    const auto found = std::find_if(level.begin(), level.end(), isTrays);
    if (found != level.end()) return *found;
    searched += level.size();
  }
  return XCB_WINDOW_NONE;
}

// Watched before it is looked into, so that nothing can come in between.
void LegacyTray::watchSocket(xcb_window_t socket) {
  if (sockets_.size() >= mostSockets || !sockets_.insert(socket).second) return;
  set(socket, XCB_CW_EVENT_MASK, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  for (const xcb_window_t window : connection_->childrenOf({socket}, mostInside)) dock(window, socket);
}

void LegacyTray::dock(xcb_window_t window, xcb_window_t socket) {
  if (icons_.moved(window, socket)) return;
  const auto attributes = owned(xcb_get_window_attributes_reply(
      connection_->get(), xcb_get_window_attributes(connection_->get(), window), nullptr));
  if (!attributes) return;
  const bool wasLeft = takeMark(window);
  if (wasLeft) restore(window, true);
  // As the X server knows it: what a window claims may be anything, and Tk's claims nothing.
  const std::int32_t process = connection_->process(connection_->askProcess(window));
  LegacyIcon icon{.window = window, .socket = socket, .process = process};
  icon.overridesRedirect = attributes->override_redirect != 0 || wasLeft;
  icon.isMapped = attributes->map_state != XCB_MAP_STATE_UNMAPPED;
  if (const auto order = icons_.dock(icon, shows_)) carryOut(*order);
  if (onDocked && icons_.find(window) != nullptr) onDocked(icon);
}

void LegacyTray::undock(std::uint32_t LegacyIcon::*place, xcb_window_t window) {
  for (const LegacyIcon& left : icons_.undock(place, window))
    if (left.isHeld) restore(left.window, left.overridesRedirect);
}

void LegacyTray::socketLost(xcb_window_t socket) {
  sockets_.erase(socket);
  undock(&LegacyIcon::socket, socket);
}

// What is still in its socket would stay hidden for good, since nobody knows any more who unmapped it.
void LegacyTray::forgetAll() {
  for (const LegacyIcons::Order& order : icons_.apply([](const std::string&) { return true; })) carryOut(order);
  while (!sockets_.empty()) socketLost(*sockets_.begin());
  owner_ = tray_ = XCB_WINDOW_NONE;
}

void LegacyTray::handle(const xcb_generic_event_t& event) {
  if (isPretended(event) && eventCode(event) != XCB_CLIENT_MESSAGE) return;  // nothing happened
  switch (eventCode(event)) {
    case XCB_CLIENT_MESSAGE:
      return managerCame(reinterpret_cast<const xcb_client_message_event_t&>(event));
    case XCB_CREATE_NOTIFY: {
      const auto& made = reinterpret_cast<const xcb_create_notify_event_t&>(event);
      if (made.parent == tray_) watchSocket(made.window);
      return;
    }
    case XCB_REPARENT_NOTIFY: {
      const auto& moved = reinterpret_cast<const xcb_reparent_notify_event_t&>(event);
      if (sockets_.contains(moved.parent)) return dock(moved.window, moved.parent);
      return undock(&LegacyIcon::window, moved.window);
    }
    case XCB_DESTROY_NOTIFY: {
      const xcb_window_t gone = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
      if (gone == tray_) return forgetAll();
      return sockets_.contains(gone) ? socketLost(gone) : undock(&LegacyIcon::window, gone);
    }
    case XCB_MAP_NOTIFY:
      return mapped(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
    case XCB_UNMAP_NOTIFY:
      return icons_.unmapped(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window);
    case XCB_PROPERTY_NOTIFY:
      return propertyChanged(reinterpret_cast<const xcb_property_notify_event_t&>(event));
    default:
      return;  // among them the errors of windows that have gone
  }
}

void LegacyTray::mapped(xcb_window_t window) {
  if (const auto order = icons_.mapped(window)) carryOut(*order);
  const LegacyIcon* const icon = icons_.find(window);
  if (icon == nullptr || icon->isHeld) return;
  repaintSoon(window);
}

// A tray has started, or somebody says so. What stood in another one before has to dock again.
void LegacyTray::managerCame(const xcb_client_message_event_t& message) {
  if (message.type != manager_ || message.data.data32[1] != selection_) return;
  searchPause_ = firstPause;
  search_.start(std::chrono::milliseconds(0));
}

void LegacyTray::propertyChanged(const xcb_property_notify_event_t& event) {
  if (event.atom == embedding_ && !wantsToBeMapped(event.window)) withdrawn(event.window);
}

void LegacyTray::carryOut(const LegacyIcons::Order& order) {
  switch (order.kind) {
    case LegacyIcons::Order::Kind::hide:
      return hide(order.icon);
    case LegacyIcons::Order::Kind::show:
      xcb_map_window(connection_->get(), order.icon.window);
      return;
    case LegacyIcons::Order::Kind::settle:
      return restore(order.icon.window, order.icon.overridesRedirect);
  }
}

// The socket has to be asked when the X server maps the window at our end: without that it would take up no room.
void LegacyTray::hide(const LegacyIcon& icon) {
  xcb_change_save_set(connection_->get(), XCB_SET_MODE_INSERT, icon.window);
  set(icon.window, XCB_CW_EVENT_MASK, XCB_EVENT_MASK_PROPERTY_CHANGE);
  if (icon.overridesRedirect) {
    constexpr std::uint32_t yes = 1;
    xcb_change_property(connection_->get(), XCB_PROP_MODE_REPLACE, icon.window, mark_, XCB_ATOM_CARDINAL, 32, 1, &yes);
    set(icon.window, XCB_CW_OVERRIDE_REDIRECT, 0);
  }
  xcb_unmap_window(connection_->get(), icon.window);
  // Its program may have withdrawn it a moment ago, unheard.
  if (!wantsToBeMapped(icon.window)) withdrawn(icon.window);
}

void LegacyTray::withdrawn(xcb_window_t window) {
  if (const auto order = icons_.withdrawn(window)) carryOut(*order);
}

void LegacyTray::restore(xcb_window_t window, bool overridesRedirect) {
  set(window, XCB_CW_EVENT_MASK, XCB_EVENT_MASK_NO_EVENT);
  if (overridesRedirect) {
    set(window, XCB_CW_OVERRIDE_REDIRECT, 1);
    xcb_delete_property(connection_->get(), window, mark_);
  }
  xcb_change_save_set(connection_->get(), XCB_SET_MODE_DELETE, window);
}

void LegacyTray::repaintSoon(xcb_window_t window) {
  blank_[window] = {Clock::now() + firstRepaint, firstRepaint};
  repaint();
}

void LegacyTray::repaint() {
  const auto now = Clock::now();
  for (auto& [window, next] : blank_) {
    if (next.due > now) continue;
    xcb_clear_area(connection_->get(), 1, window, 0, 0, 0, 0);
    for (const xcb_window_t child : connection_->childrenOf({window}, mostInside))
      xcb_clear_area(connection_->get(), 1, child, 0, 0, 0, 0);
    next.pause *= 2;
    next.due = now + next.pause;
  }
  std::erase_if(blank_, [](const auto& each) { return each.second.pause > lastRepaint; });
  if (blank_.empty()) return repaint_.stop();
  auto next = blank_.begin()->second.due;
  for (const auto& [window, repaint] : blank_) next = std::min(next, repaint.due);
  repaint_.start(std::chrono::ceil<std::chrono::milliseconds>(next - now));
}

bool LegacyTray::wantsToBeMapped(xcb_window_t window) const {
  const auto information =
      connection_->values(xcb_get_property(connection_->get(), 0, window, embedding_, XCB_GET_PROPERTY_TYPE_ANY, 0, 2));
  return information.size() < 2 || (information[1] & mappedFlag) != 0;
}

// Left on the window by an agent that could not finish.
bool LegacyTray::takeMark(xcb_window_t window) {
  const auto mark = xcb_get_property(connection_->get(), 0, window, mark_, XCB_ATOM_CARDINAL, 0, 1);
  return !connection_->values(mark).empty();
}

void LegacyTray::set(xcb_window_t window, std::uint32_t attribute, std::uint32_t value) {
  xcb_change_window_attributes(connection_->get(), window, attribute, &value);
}

}  // namespace orvo
