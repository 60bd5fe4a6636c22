#include "platform/common/ThreadExecutor.h"

#include <utility>

namespace orvo {

ThreadExecutor::~ThreadExecutor() {
  std::deque<std::function<void()>> dropped;
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    dropped.swap(tasks_);
  }
  dropped.clear();
  changed_.notify_one();
  if (thread_.joinable()) thread_.join();
}

void ThreadExecutor::post(std::function<void()> task) {
  const std::lock_guard lock(mutex_);
  if (ending_) return;
  tasks_.push_back(std::move(task));
  if (!thread_.joinable()) thread_ = std::thread([this] { work(); });
  changed_.notify_one();
}

void ThreadExecutor::work() {
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return ending_ || !tasks_.empty(); });
    if (ending_) return;
    auto task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
    task = nullptr;  // what it holds goes before the lock is taken again
    lock.lock();
  }
}

}  // namespace orvo
