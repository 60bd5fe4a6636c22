#include "platform/linux/Timer.h"

#include <ctime>
#include <utility>

namespace orvo {

namespace {

// In microseconds; 0 would let it come a quarter of a second late.
constexpr std::uint64_t accuracy = 1;

}  // namespace

Timer::Timer(sd_event* loop, std::function<void()> expired) : expired_(std::move(expired)) {
  sd_event_source* source = nullptr;
  sd_event_add_time(loop, &source, CLOCK_MONOTONIC, 0, accuracy, &Timer::expire, this);
  source_.reset(source);
  stop();
}

// By the clock itself: the loop's own stands still while it works.
void Timer::start(std::chrono::milliseconds pause) {
  const auto due =
      std::chrono::ceil<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch() + pause);
  sd_event_source_set_time(source_.get(), static_cast<std::uint64_t>(due.count()));
  sd_event_source_set_enabled(source_.get(), SD_EVENT_ONESHOT);
}

void Timer::stop() { sd_event_source_set_enabled(source_.get(), SD_EVENT_OFF); }

bool Timer::isActive() const { return sd_event_source_get_enabled(source_.get(), nullptr) > 0; }

// The action may end the timer.
int Timer::expire(sd_event_source* /*source*/, std::uint64_t /*moment*/, void* timer) {
  const auto action = static_cast<Timer*>(timer)->expired_;
  action();
  return 0;
}

}  // namespace orvo
