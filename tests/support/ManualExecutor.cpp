#include "support/ManualExecutor.h"

#include <utility>

namespace orvo {

void ManualExecutor::post(std::function<void()> task) {
  const std::lock_guard lock(mutex_);
  tasks_.push_back(std::move(task));
}

bool ManualExecutor::runOne() {
  std::function<void()> task;
  {
    const std::lock_guard lock(mutex_);
    if (tasks_.empty()) return false;
    task = std::move(tasks_.front());
    tasks_.pop_front();
  }
  task();
  return true;
}

void ManualExecutor::runAll() {
  while (runOne()) {
  }
}

std::size_t ManualExecutor::count() const {
  const std::lock_guard lock(mutex_);
  return tasks_.size();
}

ThreadExecutor::ThreadExecutor() : thread_([this] { run(); }) {}

ThreadExecutor::~ThreadExecutor() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void ThreadExecutor::post(std::function<void()> task) {
  {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  changed_.notify_one();
}

void ThreadExecutor::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ending_ || !tasks_.empty(); });
    if (tasks_.empty()) return;
    std::function<void()> task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
    task = nullptr;
    lock.lock();
  }
}

}  // namespace orvo
