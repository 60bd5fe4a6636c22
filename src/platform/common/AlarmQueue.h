// The timed half of a main queue: one kernel timer serves all delays, so that an idle program does not wake. The alarm
// is the system's, on the clock that goes on while the machine sleeps.
#pragma once

#include "platform/MainQueue.h"
#include "platform/common/TimerTable.h"

#include <chrono>
#include <utility>

namespace orvo {

template <typename Alarm>
class AlarmQueue : public MainQueue {
 public:
  AlarmQueue() = default;
  AlarmQueue(const AlarmQueue&) = delete;
  AlarmQueue& operator=(const AlarmQueue&) = delete;
  ~AlarmQueue() override = default;

  Handle runAfter(Duration delay, Task task) final {
    return armed(timers_.addOnce(Alarm::now(), delay, std::move(task)));
  }
  Handle repeat(Duration interval, Duration tolerance, Task task) final {
    return armed(timers_.addRepeating(Alarm::now(), interval, tolerance, std::move(task)));
  }
  void cancel(Handle handle) final {
    timers_.remove(handle);
    alarm_.set(timers_.wakeTime());
  }
  Duration now() const final { return std::chrono::duration_cast<Duration>(Alarm::now()); }

 private:
  Handle armed(Handle handle) {
    alarm_.set(timers_.wakeTime());
    return handle;
  }

  void runDue() {
    const auto now = Alarm::now();
    const auto mark = timers_.mark();
    while (const auto task = timers_.takeDue(now, mark)) (*task)();
    alarm_.set(timers_.wakeTime());
  }

  TimerTable timers_;
  Alarm alarm_{[this] { runDue(); }};
};

}  // namespace orvo
