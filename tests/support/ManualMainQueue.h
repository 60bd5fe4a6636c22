// A main queue whose clock the test turns and whose tasks run only when the test says so. The thread
// that makes it is the main thread; only `post` and `waitUntilPosted` concern other threads.
#pragma once

#include "platform/MainQueue.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace orvo {

class ManualMainQueue : public MainQueue {
 public:
  // What a test may ask about a delayed or repeating task that still waits.
  struct Waiting {
    Handle handle = Handle::none;
    Duration due{};
    // Zero for a task that runs once.
    Duration interval{};
    Duration tolerance{};
  };

  void post(Task task) override;
  Handle runAfter(Duration delay, Task task) override;
  Handle repeat(Duration interval, Duration tolerance, Task task) override;
  void cancel(Handle handle) override;
  Duration now() const override { return now_; }
  bool isMainThread() const override { return std::this_thread::get_id() == mainThread_; }

  // Runs the oldest posted task; false when there was none.
  bool runOne();
  // Runs posted tasks until none is left, those included that are posted meanwhile.
  void runPosted();
  // Turns the clock. Posted tasks run first and after every timer; timers run when they are due, each
  // at its own time, equal ones in the order in which they were set.
  void advance(Duration time);
  // The machine sleeps: the clock goes on, nothing runs, and afterwards everything that became due
  // runs at the new time, a repeating task once.
  void sleepThrough(Duration time);
  // Blocks until a task is posted; false after `limit` of real time.
  bool waitUntilPosted(std::chrono::seconds limit);

  std::size_t postedCount() const;
  // By due time.
  std::vector<Waiting> waiting() const;

 private:
  struct Timer {
    Waiting info;
    Task task;
  };
  // Due time, then order of setting.
  using Timers = std::map<std::pair<Duration, std::uint64_t>, Timer>;

  Handle add(Duration delay, Duration interval, Duration tolerance, Task task);
  void fire(Timers::iterator timer);

  const std::thread::id mainThread_ = std::this_thread::get_id();
  Duration now_{};
  std::uint64_t lastHandle_ = 0;
  std::uint64_t lastOrder_ = 0;
  Timers timers_;

  mutable std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<Task> tasks_;
};

}  // namespace orvo
