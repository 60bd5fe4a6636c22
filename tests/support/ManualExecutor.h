// A serial executor that runs its tasks when the test says so, on the thread that says it.
#pragma once

#include "platform/SerialExecutor.h"

#include <deque>
#include <utility>

namespace orvo {

class ManualExecutor : public SerialExecutor {
 public:
  // While true, tasks wait.
  bool holds = false;

  void post(std::function<void()> task) override { tasks_.push_back(std::move(task)); }

  // Runs the oldest task; false when there was none.
  bool runOne() {
    if (holds || tasks_.empty()) return false;
    const std::function<void()> task = std::move(tasks_.front());
    tasks_.pop_front();
    task();
    return true;
  }
  void runAll() {
    while (runOne()) {
    }
  }

 private:
  std::deque<std::function<void()>> tasks_;
};

}  // namespace orvo
