// A main queue whose clock the test turns and whose tasks run only when the test says so. The thread
// that makes it is the main thread; only `post` and `waitUntilPosted` concern other threads.
#pragma once

#include "platform/MainQueue.h"

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace orvo {

class ManualMainQueue : public MainQueue {
 public:
  // A delayed or repeating task that still waits.
  struct Waiting {
    Handle handle = Handle::none;
    Duration due{};
    // Zero for a task that runs once.
    Duration interval{};
    Duration tolerance{};
  };

  void post(Task task) override {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    posted_.notify_all();
  }
  Handle runAfter(Duration delay, Task task) override { return add(delay, {}, {}, std::move(task)); }
  Handle repeat(Duration interval, Duration tolerance, Task task) override {
    return add(interval, interval, tolerance, std::move(task));
  }
  void cancel(Handle handle) override {
    std::erase_if(timers_, [handle](const auto& entry) { return entry.second.info.handle == handle; });
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
    while (!timers_.empty() && timers_.begin()->first.first <= end) {
      now_ = std::max(now_, timers_.begin()->first.first);
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
  std::size_t postedCount() const {
    const std::lock_guard lock(mutex_);
    return tasks_.size();
  }
  // By due time.
  std::vector<Waiting> waiting() const {
    std::vector<Waiting> all;
    for (const auto& [key, timer] : timers_) all.push_back(timer.info);
    return all;
  }

 private:
  struct Timer {
    Waiting info;
    Task task;
  };

  Duration later(Duration delay) const { return delay > Duration::max() - now_ ? Duration::max() : now_ + delay; }
  Handle add(Duration delay, Duration interval, Duration tolerance, Task task) {
    const auto handle = static_cast<Handle>(++last_);
    timers_.emplace(std::pair{later(delay), last_},
                    Timer{{handle, later(delay), interval, tolerance}, std::move(task)});
    return handle;
  }
  // Runs the first timer. One that repeats is set anew before it runs, so that it can cancel itself.
  void fire() {
    Timer fired = std::move(timers_.extract(timers_.begin()).mapped());
    const Task task = fired.task;
    if (fired.info.interval > Duration::zero()) {
      fired.info.due += fired.info.interval * ((now_ - fired.info.due) / fired.info.interval + 1);
      timers_.emplace(std::pair{fired.info.due, ++last_}, std::move(fired));
    }
    task();
  }

  const std::thread::id mainThread_ = std::this_thread::get_id();
  Duration now_{};
  std::uint64_t last_ = 0;
  // By due time, then in the order of setting.
  std::map<std::pair<Duration, std::uint64_t>, Timer> timers_;

  mutable std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<Task> tasks_;
};

}  // namespace orvo
