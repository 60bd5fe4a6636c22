#include "platform/qt/BoottimeAlarm.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace orvo {

namespace {

timespec timespecOf(BoottimeAlarm::Time time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  timespec result{};
  result.tv_sec = seconds.count();
  result.tv_nsec = (time - seconds).count();
  return result;
}

}  // namespace

BoottimeAlarm::BoottimeAlarm(std::function<void()> ring) : ring_(std::move(ring)) {}

BoottimeAlarm::~BoottimeAlarm() {
  notifier_.reset();
  if (descriptor_ >= 0) close(descriptor_);
}

void BoottimeAlarm::set(std::optional<Time> time) {
  if (time == time_) return;
  if (descriptor_ < 0) open();
  time_ = time;
  itimerspec value{};
  // All zero would disarm.
  if (time) value.it_value = timespecOf(std::max(*time, Time{1}));
  timerfd_settime(descriptor_, TFD_TIMER_ABSTIME, &value, nullptr);
}

void BoottimeAlarm::open() {
  descriptor_ = timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK);
  // Without a descriptor no time-out would ever end and icons could stay concealed.
  if (descriptor_ < 0) std::abort();
  notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] {
    std::uint64_t expirations = 0;
    if (read(descriptor_, &expirations, sizeof expirations) < 0) return;
    time_.reset();
    ring_();
  });
}

BoottimeAlarm::Time BoottimeAlarm::now() {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return std::chrono::seconds(time.tv_sec) + Time(time.tv_nsec);
}

}  // namespace orvo
