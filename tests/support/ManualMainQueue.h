// A main queue whose clock the test turns and whose tasks run only when the test says so. The thread
// that makes it is the main thread; only `post` and `waitUntilPosted` concern other threads.
#pragma once

#include "platform/MainQueue.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace orvo {

class ManualMainQueue : public MainQueue {
 public:
  // A delayed or repeating task that still waits; one that runs once has no interval.
  struct Waiting {
    Duration due;
    Duration interval;
    Duration tolerance;
    Task task;
    Handle handle;
  };

  void post(Task task) override {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    posted_.notify_all();
  }
  Handle runAfter(Duration delay, Task task) override {
    return add({later(delay), Duration::zero(), Duration::zero(), std::move(task), freshHandle()});
  }
  Handle repeat(Duration interval, Duration tolerance, Task task) override {
    return add({later(interval), interval, tolerance, std::move(task), freshHandle()});
  }
  void cancel(Handle handle) override {
    std::erase_if(timers_, [handle](const Waiting& timer) { return timer.handle == handle; });
  }
  Duration now() const override { return now_; }
  bool isMainThread() const override { return std::this_thread::get_id() == mainThread_; }

  // Runs the oldest posted task; false when there was none.
  bool runOne() {
    std::unique_lock lock(mutex_);
    if (tasks_.empty()) return false;
    const Task task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
    return true;
  }
  // Runs posted tasks until none is left, those included that are posted meanwhile.
  void runPosted() {
    while (runOne()) {
    }
  }
  // Turns the clock. Posted tasks run first and after every timer; timers run when they are due, each
  // at its own time, equal ones in the order in which they were set.
  void advance(Duration time) {
    const Duration end = later(time);
    runPosted();
    while (!timers_.empty() && timers_.front().due <= end) {
      now_ = std::max(now_, timers_.front().due);
      fire();
      runPosted();
    }
    now_ = end;
  }
  // The machine sleeps: the clock goes on, nothing runs, and afterwards everything that became due
  // runs at the new time, a repeating task once.
  void sleepThrough(Duration time) {
    now_ = later(time);
    advance(Duration::zero());
  }
  // Blocks until a task is posted; false after `limit` of real time.
  bool waitUntilPosted(std::chrono::seconds limit) {
    std::unique_lock lock(mutex_);
    return posted_.wait_for(lock, limit, [this] { return !tasks_.empty(); });
  }
  // By due time, then in the order of setting.
  const std::vector<Waiting>& waiting() const { return timers_; }

 private:
  Duration later(Duration delay) const { return delay > Duration::max() - now_ ? Duration::max() : now_ + delay; }
  Handle freshHandle() { return static_cast<Handle>(++last_); }
  Handle add(Waiting timer) {
    const auto isLater = [](Duration due, const Waiting& other) { return due < other.due; };
    const auto place = std::upper_bound(timers_.begin(), timers_.end(), timer.due, isLater);
    return timers_.insert(place, std::move(timer))->handle;
  }
  // Runs the first timer. One that repeats is set anew before it runs, so that it can cancel itself.
  void fire() {
    Waiting fired = std::move(timers_.front());
    timers_.erase(timers_.begin());
    const Task task = fired.task;
    if (fired.interval > Duration::zero()) {
      fired.due += fired.interval * ((now_ - fired.due) / fired.interval + 1);
      add(std::move(fired));
    }
    task();
  }

  const std::thread::id mainThread_ = std::this_thread::get_id();
  Duration now_{};
  std::uint64_t last_ = 0;
  std::vector<Waiting> timers_;

  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<Task> tasks_;
};

}  // namespace orvo
