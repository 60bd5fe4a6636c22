// One alarm on the clock that goes on while the machine sleeps, served by the main dispatch queue.
// Dispatch has no timer of that kind (dispatch_time stops in sleep, dispatch_walltime follows changes of
// the clock), but a kqueue has one. Owned by the main queue; main thread only.
#pragma once

#include <dispatch/dispatch.h>

#include <chrono>
#include <functional>
#include <optional>

namespace orvo {

class ContinuousAlarm {
 public:
  using Time = std::chrono::nanoseconds;

  explicit ContinuousAlarm(std::function<void()> ring);
  ~ContinuousAlarm();
  ContinuousAlarm(const ContinuousAlarm&) = delete;
  ContinuousAlarm& operator=(const ContinuousAlarm&) = delete;

  // Replaces the moment at which the alarm rings next; absent for never. One that has passed rings on
  // the run loop's next turn, one that is years away may ring early.
  void set(std::optional<Time> time);

  static Time now();

 private:
  void open();
  void rang();

  std::function<void()> ring_;
  int queue_ = -1;
  dispatch_source_t source_ = nullptr;
  std::optional<Time> time_;
};

}  // namespace orvo
