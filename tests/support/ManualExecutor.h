// Serial executors for tests: one that runs its tasks when the test says so, one that runs them inside
// the call, and one with a real thread.
#pragma once

#include "platform/SerialExecutor.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace orvo {

class ManualExecutor : public SerialExecutor {
 public:
  void post(std::function<void()> task) override;

  // Runs the oldest task; false when there was none.
  bool runOne();
  void runAll();
  std::size_t count() const;

 private:
  mutable std::mutex mutex_;
  std::deque<std::function<void()>> tasks_;
};

// A task that posts another one runs it before it has ended itself.
class InlineExecutor : public SerialExecutor {
 public:
  void post(std::function<void()> task) override { task(); }
};

// Its destructor runs what is left and joins the thread.
class ThreadExecutor : public SerialExecutor {
 public:
  ThreadExecutor();
  ~ThreadExecutor() override;
  ThreadExecutor(const ThreadExecutor&) = delete;
  ThreadExecutor& operator=(const ThreadExecutor&) = delete;
  void post(std::function<void()> task) override;

 private:
  void run();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> tasks_;
  bool ending_ = false;
  std::thread thread_;
};

}  // namespace orvo
