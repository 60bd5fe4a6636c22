// The delayed and repeating tasks of a main queue and the arithmetic of when to wake for them. Owned
// by the queue; main thread only. It reads no clock: the caller says what time it is.
#pragma once

#include "platform/MainQueue.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>

namespace orvo {

class TimerTable {
 public:
  using Handle = MainQueue::Handle;
  using Task = MainQueue::Task;
  // Since the clock's own beginning. Sums that leave the range stay at its end, which never comes.
  using Time = std::chrono::nanoseconds;

  Handle addOnce(Time now, MainQueue::Duration delay, Task task);
  // An interval below a millisecond counts as one.
  Handle addRepeating(Time now, MainQueue::Duration interval, MainQueue::Duration tolerance, Task task);
  void remove(Handle handle);

  // The latest moment that keeps every tolerance; absent when nothing will ever be due.
  std::optional<Time> wakeTime() const;

  // Everything added from now on carries this mark or a later one.
  std::uint64_t mark() const { return last_ + 1; }
  // The task that has been due longest at `now`, among those added before `mark`; a repeating one
  // moves on to its first moment after `now`. Absent when there is none.
  std::optional<Task> takeDue(Time now, std::uint64_t mark);

 private:
  struct Entry {
    Time due{};
    Time tolerance{};
    Time interval{};  // zero for a task that runs once
    Task task;
  };

  Handle add(Entry entry);

  std::map<std::uint64_t, Entry> entries_;
  std::uint64_t last_ = 0;
};

}  // namespace orvo
