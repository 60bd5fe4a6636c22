// A serial executor whose tasks run when the test says so, on the thread that says it.
#pragma once

#include "platform/SerialExecutor.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace orvo {

// What it has in common with the main queue. Any thread may add tasks.
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

struct ManualExecutor : SerialExecutor, ManualTasks {
  void post(std::function<void()> task) override { add(std::move(task)); }
};

}  // namespace orvo
