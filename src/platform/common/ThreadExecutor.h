// A serial executor on a thread of its own, which starts with the first task. Owned by main.cpp;
// destroying it waits for the task that is running and drops those that wait.
#pragma once

#include "platform/SerialExecutor.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace orvo {

class ThreadExecutor final : public SerialExecutor {
 public:
  ThreadExecutor() = default;
  ~ThreadExecutor() override;
  ThreadExecutor(const ThreadExecutor&) = delete;
  ThreadExecutor& operator=(const ThreadExecutor&) = delete;

  // After the end has begun, a task is dropped.
  void post(std::function<void()> task) override;

 private:
  void work();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> tasks_;  // under mutex_
  bool ending_ = false;                      // under mutex_
  std::thread thread_;                       // started under mutex_
};

}  // namespace orvo
