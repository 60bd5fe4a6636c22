#include "platform/linux/x11/TestDesktop.h"

#include "support/ManualMainQueue.h"

#include <stdexcept>
#include <thread>

namespace orvo {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto limit = 5s;
constexpr auto look = 2ms;

XReply<xcb_get_window_attributes_reply_t> attributes(xcb_connection_t* connection, xcb_window_t window) {
  return owned(xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), nullptr));
}

bool isViewable(xcb_connection_t* connection, xcb_window_t window) {
  const auto reply = attributes(connection, window);
  return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

}  // namespace

void TestDesktop::startWindowManager() {
  // As somebody without settings, and with nowhere to leave any.
  windowManager_.emplace("env", QStringList{"DISPLAY=" + QString::fromStdString(display_), "HOME=/proc",
                                            "XDG_CONFIG_HOME=/proc", "openbox"});
  const bool manages = eventually([this] {
    const auto cookie =
        xcb_get_property(x_->get(), 0, x_->root(), x_->atom("_NET_SUPPORTING_WM_CHECK"), XCB_ATOM_WINDOW, 0, 1);
    const auto check = owned(xcb_get_property_reply(x_->get(), cookie, nullptr));
    return check && xcb_get_property_value_length(check.get()) > 0;
  });
  if (!manages) throw std::runtime_error("the window manager does not start");
}

Dock::Dock(const TestDesktop& desktop, Rect frame, xcb_window_t parent)
    : x_(XConnection::open(desktop.display(), "dock")), connection_(x_->get()), window_(xcb_generate_id(connection_)) {
  const std::uint32_t mask = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;
  const bool embedded = parent != XCB_WINDOW_NONE;
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, embedded ? parent : x_->root(),
                    static_cast<std::int16_t>(frame.x), static_cast<std::int16_t>(frame.y),
                    static_cast<std::uint16_t>(frame.width), static_cast<std::uint16_t>(frame.height), 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
  if (!embedded) {
    const auto type = x_->atom("_NET_WM_WINDOW_TYPE_DOCK");
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, x_->atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32,
                        1, &type);
    // Position and size asked for by the program (flags 4 and 8).
    const std::uint32_t hints[18] = {4U | 8U};
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS,
                        32, 18, &hints[0]);
  }
  // A window manager that is only starting may miss the wish.
  const bool shown = eventually([this] {
    xcb_map_window(connection_, window_);
    return isViewable(connection_, window_);
  });
  if (!shown) throw std::runtime_error("the dock did not show");
}

const std::vector<Dock::Button>& Dock::buttons() {
  while (const auto event = owned(xcb_poll_for_event(connection_))) {
    const auto code = eventCode(*event);
    if (code != XCB_BUTTON_PRESS && code != XCB_BUTTON_RELEASE) continue;
    const auto& button = reinterpret_cast<const xcb_button_press_event_t&>(*event);
    buttons_.push_back({button.detail,
                        code == XCB_BUTTON_PRESS,
                        {static_cast<double>(button.root_x), static_cast<double>(button.root_y)}});
  }
  return buttons_;
}

int Dock::coversBelow(xcb_window_t window) const {
  const auto tree = owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
  int count = 0;
  for (int index = 0; tree && index < xcb_query_tree_children_length(tree.get()); ++index) {
    const auto child = xcb_query_tree_children(tree.get())[index];
    const auto reply = attributes(connection_, child);
    if (!reply || reply->map_state != XCB_MAP_STATE_VIEWABLE) continue;
    count += reply->_class == XCB_WINDOW_CLASS_INPUT_ONLY ? 1 : coversBelow(child);
  }
  return count;
}

bool eventually(ManualMainQueue& queue, const std::function<bool()>& condition) {
  const auto start = Clock::now();
  auto last = start;
  while (!condition()) {
    const auto now = Clock::now();
    if (now - start > limit) return false;
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(now - last);
    last += passed;
    queue.advance(passed);
    std::this_thread::sleep_for(look);
  }
  return true;
}

bool eventually(const std::function<bool()>& condition) {
  ManualMainQueue nothing;
  return eventually(nothing, condition);
}

void holdFor(ManualMainQueue& queue, std::chrono::milliseconds time) {
  const auto end = Clock::now() + time;
  eventually(queue, [end] { return Clock::now() >= end; });
}

}  // namespace orvo
