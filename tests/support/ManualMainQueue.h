// A main queue whose clock the test turns and whose tasks run only when the test says so. The thread that makes it
// is the main thread; only `post` and `waitUntilPosted` concern other threads.
#pragma once

#include "platform/MainQueue.h"
#include "platform/common/TimerTable.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace orvo {

// Tasks that run when the test says so, on the thread that says it.
class ManualTasks {
 public:
  // While true, tasks wait.
  bool holds = false;

  // Runs the oldest task; false when there was none.
  bool runOne() {
    std::unique_lock lock(mutex_);
    if (holds || tasks_.empty()) return false;
    const std::function<void()> task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
    return true;
  }
  // Runs tasks until none is left, those included that are posted meanwhile.
  void runPosted() {
    while (runOne()) {
    }
  }
  // Blocks until a task is posted; false after `limit` of real time.
  bool waitUntilPosted(std::chrono::seconds limit) {
    std::unique_lock lock(mutex_);
    return posted_.wait_for(lock, limit, [this] { return !tasks_.empty(); });
  }

 protected:
  void add(std::function<void()> task) {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    posted_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<std::function<void()>> tasks_;
};

class ManualMainQueue : public MainQueue, public ManualTasks {
 public:
  void post(Task task) override { add(std::move(task)); }
  Handle runAfter(Duration delay, Task task) override { return timers_.addOnce(now_, delay, std::move(task)); }
  Handle repeat(Duration interval, Duration tolerance, Task task) override {
    return timers_.addRepeating(now_, interval, tolerance, std::move(task));
  }
  void cancel(Handle handle) override { timers_.remove(handle); }
  Duration now() const override { return std::chrono::duration_cast<Duration>(now_); }
  bool isMainThread() const override { return std::this_thread::get_id() == mainThread_; }

  // Turns the clock. Posted tasks run first and after every timer; timers run at their own times, or as late
  // as they allow where the clock stops before that for nothing else.
  void advance(Duration time) {
    const TimerTable::Time end = now_ + time;
    for (runPosted();; now_ = std::clamp(wakeTime().value_or(end), now_, end)) {
      while (const auto task = timers_.takeDue(now_, timers_.mark())) {
        (*task)();
        runPosted();
      }
      if (now_ == end) return;
    }
  }
  // The machine sleeps: the clock goes on, nothing runs, and afterwards everything that became due
  // runs at the new time, a repeating task once.
  void sleepThrough(Duration time) {
    now_ += time;
    advance(Duration::zero());
  }
  // When a timer has to run at the latest; absent when none waits.
  std::optional<TimerTable::Time> wakeTime() const { return timers_.wakeTime(); }

 private:
  const std::thread::id mainThread_ = std::this_thread::get_id();
  TimerTable::Time now_{};
  TimerTable timers_;
};

}  // namespace orvo
