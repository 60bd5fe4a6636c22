// One alarm on CLOCK_BOOTTIME, the clock that goes on while the machine sleeps, served by Qt's event
// loop. Owned by the main queue; main thread only.
#pragma once

#include <QSocketNotifier>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace orvo {

class BoottimeAlarm {
 public:
  using Time = std::chrono::nanoseconds;

  explicit BoottimeAlarm(std::function<void()> ring);
  ~BoottimeAlarm();
  BoottimeAlarm(const BoottimeAlarm&) = delete;
  BoottimeAlarm& operator=(const BoottimeAlarm&) = delete;

  // Replaces the moment at which the alarm rings next; absent for never. One that has passed rings
  // on the event loop's next turn. The first call with a moment needs an application object.
  void set(std::optional<Time> time);

  static Time now();

 private:
  void open();

  std::function<void()> ring_;
  int descriptor_ = -1;
  std::optional<Time> time_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace orvo
