// A main queue whose clock the test turns, and an executor beside it; their tasks run only when the test says so. The
// thread that makes the queue is the main thread. Any thread may post.
#pragma once

#include "platform/MainQueue.h"
#include "platform/SerialExecutor.h"
#include "platform/common/TimerTable.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <thread>

namespace orvo {

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
    return task(), true;
  }
  // Runs tasks until none is left, those included that are posted meanwhile.
  void runPosted() {
    while (runOne()) continue;
  }
  bool isEmpty() {
    const std::lock_guard lock(mutex_);
    return tasks_.empty();
  }

 protected:
  void add(std::function<void()> task) {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
  }

 private:
  std::mutex mutex_;
  std::deque<std::function<void()>> tasks_;
};

struct ManualExecutor : SerialExecutor, ManualTasks {
  void post(std::function<void()> task) override { add(std::move(task)); }
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
  // as they allow where the clock stops before that for nothing else. Where the machine sleeps meanwhile, what became
  // due runs at the end, a repeating task once.
  void advance(Duration time, bool sleeps = false) {
    const TimerTable::Time end = now_ + time;
    if (sleeps) now_ = end;
    for (runPosted();; now_ = std::clamp(wakeTime().value_or(end), now_, end)) {
      while (const auto task = timers_.takeDue(now_, timers_.mark())) {
        (*task)();
        runPosted();
      }
      if (now_ == end) return;
    }
  }
  // When a timer has to run at the latest; absent when none waits.
  std::optional<TimerTable::Time> wakeTime() const { return timers_.wakeTime(); }

 private:
  const std::thread::id mainThread_ = std::this_thread::get_id();
  TimerTable::Time now_{};
  TimerTable timers_;
};

}  // namespace orvo
