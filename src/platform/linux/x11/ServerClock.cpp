#include "platform/linux/x11/ServerClock.h"

#include <algorithm>

namespace orvo {

namespace {

using Clock = std::chrono::steady_clock;

std::uint32_t milliseconds(Clock::time_point time) {
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count());
}

}  // namespace

ServerClock::ServerClock(const XConnection& connection)
    : connection_(connection), window_(xcb_generate_id(connection.get())) {
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(connection.get(), 0, window_, connection.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                    XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
}

// A property that nothing is added to has changed all the same.
void ServerClock::ask() const {
  const std::uint8_t nothing = 0;
  xcb_change_property(connection_.get(), XCB_PROP_MODE_APPEND, window_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0,
                      &nothing);
}

void ServerClock::hear(const xcb_property_notify_event_t& event) {
  if (event.window == window_) offset_ = milliseconds(Clock::now()) - event.time;
}

Clock::time_point ServerClock::momentOf(xcb_timestamp_t time) const {
  const auto now = Clock::now();
  const auto age = static_cast<std::int32_t>(milliseconds(now) - offset_ - time);
  return now - std::chrono::milliseconds(std::max(age, 0));
}

}  // namespace orvo
