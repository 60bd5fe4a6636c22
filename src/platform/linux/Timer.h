// Runs an action once, when so much time has passed, on the thread of its event loop. Owned by whoever waits.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "platform/linux/BusHandles.h"

namespace orvo {

class Timer {
 public:
  Timer(sd_event* loop, std::function<void()> expired);
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  ~Timer() = default;

  // From now on, where it was started before too.
  void start(std::chrono::milliseconds pause);
  void stop();
  bool isActive() const;

 private:
  static int expire(sd_event_source* source, std::uint64_t moment, void* timer);

  std::function<void()> expired_;
  EventSource source_;
};

}  // namespace orvo
