// When, by our clock, things happened that the X server dates by its own. Owned by the tap's thread and used there
// only.
#pragma once

#include "platform/linux/x11/XConnection.h"

#include <chrono>

namespace orvo {

class ServerClock {
 public:
  explicit ServerClock(const XConnection& connection);

  // Has the server tell its time anew. Every moment is now until it has told it first.
  void ask() const;
  // Each event of this kind; its own one is the answer.
  void hear(const xcb_property_notify_event_t& event);

  // Never later than now.
  std::chrono::steady_clock::time_point momentOf(xcb_timestamp_t time) const;

 private:
  const XConnection& connection_;
  xcb_window_t window_;       // only there to be told the time
  std::uint32_t offset_ = 0;  // our clock minus the server's, in milliseconds, as both count them in 32 bits
};

}  // namespace orvo
