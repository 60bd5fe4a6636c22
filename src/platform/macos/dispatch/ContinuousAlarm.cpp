#include "platform/macos/dispatch/ContinuousAlarm.h"

#include <sys/event.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace orvo {

namespace {

constexpr std::uintptr_t onlyTimer = 1;

// The kernel refuses what leaves its own range once it has been added to the present time.
constexpr ContinuousAlarm::Time longest = std::chrono::hours(24 * 365);

bool change(int queue, std::uint16_t flags, std::int64_t nanoseconds) {
  struct kevent event {};
  EV_SET(&event, onlyTimer, EVFILT_TIMER, flags, NOTE_NSECONDS | NOTE_MACH_CONTINUOUS_TIME, nanoseconds, nullptr);
  return kevent(queue, &event, 1, nullptr, 0, nullptr) == 0;
}

bool take(int queue) {
  struct kevent event {};
  const timespec atOnce{};
  return kevent(queue, nullptr, 0, &event, 1, &atOnce) == 1;
}

}  // namespace

ContinuousAlarm::ContinuousAlarm(std::function<void()> ring) : ring_(std::move(ring)) {}

// The source must be through with the queue before that is closed, which only its own handler knows.
ContinuousAlarm::~ContinuousAlarm() {
  if (source_ == nullptr) return;
  dispatch_set_context(source_, reinterpret_cast<void*>(static_cast<std::intptr_t>(queue_)));
  dispatch_source_set_cancel_handler_f(
      source_, [](void* context) { close(static_cast<int>(reinterpret_cast<std::intptr_t>(context))); });
  dispatch_source_cancel(source_);
  dispatch_release(source_);
}

void ContinuousAlarm::set(std::optional<Time> time) {
  if (time == time_) return;
  if (queue_ < 0) open();
  time_ = time;
  if (time) {
    const Time wait = std::clamp(*time - now(), Time{1}, longest);
    // Without an alarm no time-out would ever end and icons could stay concealed.
    if (!change(queue_, EV_ADD | EV_ONESHOT, wait.count())) std::abort();
  } else {
    // Fails where the timer has just rung, which is as good.
    change(queue_, EV_DELETE, 0);
  }
}

void ContinuousAlarm::open() {
  queue_ = kqueue();
  if (queue_ < 0) std::abort();
  source_ = dispatch_source_create(DISPATCH_SOURCE_TYPE_READ, static_cast<std::uintptr_t>(queue_), 0,
                                   dispatch_get_main_queue());
  if (source_ == nullptr) std::abort();
  dispatch_set_context(source_, this);
  dispatch_source_set_event_handler_f(source_, [](void* context) { static_cast<ContinuousAlarm*>(context)->rang(); });
  dispatch_resume(source_);
}

void ContinuousAlarm::rang() {
  if (!take(queue_)) return;
  time_.reset();
  ring_();
}

ContinuousAlarm::Time ContinuousAlarm::now() {
  return Time(static_cast<std::int64_t>(clock_gettime_nsec_np(CLOCK_MONOTONIC_RAW)));
}

}  // namespace orvo
