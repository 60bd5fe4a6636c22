#include "support/ManualMainQueue.h"

#include <algorithm>
#include <utility>

namespace orvo {
namespace {

MainQueue::Duration later(MainQueue::Duration now, MainQueue::Duration delay) {
  return delay > MainQueue::Duration::max() - now ? MainQueue::Duration::max() : now + delay;
}

}  // namespace

void ManualMainQueue::post(Task task) {
  const std::lock_guard lock(mutex_);
  tasks_.push_back(std::move(task));
  posted_.notify_all();
}

MainQueue::Handle ManualMainQueue::runAfter(Duration delay, Task task) {
  return add(delay, Duration::zero(), Duration::zero(), std::move(task));
}

MainQueue::Handle ManualMainQueue::repeat(Duration interval, Duration tolerance, Task task) {
  return add(interval, interval, tolerance, std::move(task));
}

void ManualMainQueue::cancel(Handle handle) {
  std::erase_if(timers_, [handle](const auto& entry) { return entry.second.info.handle == handle; });
}

bool ManualMainQueue::runOne() {
  Task task;
  {
    const std::lock_guard lock(mutex_);
    if (tasks_.empty()) return false;
    task = std::move(tasks_.front());
    tasks_.pop_front();
  }
  task();
  return true;
}

void ManualMainQueue::runPosted() {
  while (runOne()) {
  }
}

void ManualMainQueue::advance(Duration time) {
  const Duration end = later(now_, time);
  runPosted();
  while (!timers_.empty() && timers_.begin()->first.first <= end) {
    now_ = std::max(now_, timers_.begin()->first.first);
    fire(timers_.begin());
    runPosted();
  }
  now_ = end;
}

void ManualMainQueue::sleepThrough(Duration time) {
  now_ = later(now_, time);
  advance(Duration::zero());
}

bool ManualMainQueue::waitUntilPosted(std::chrono::seconds limit) {
  std::unique_lock lock(mutex_);
  return posted_.wait_for(lock, limit, [this] { return !tasks_.empty(); });
}

std::size_t ManualMainQueue::postedCount() const {
  const std::lock_guard lock(mutex_);
  return tasks_.size();
}

std::vector<ManualMainQueue::Waiting> ManualMainQueue::waiting() const {
  std::vector<Waiting> all;
  all.reserve(timers_.size());
  for (const auto& [key, timer] : timers_) all.push_back(timer.info);
  return all;
}

MainQueue::Handle ManualMainQueue::add(Duration delay, Duration interval, Duration tolerance, Task task) {
  const auto handle = static_cast<Handle>(++lastHandle_);
  const Duration due = later(now_, delay);
  timers_.emplace(std::pair{due, ++lastOrder_}, Timer{{handle, due, interval, tolerance}, std::move(task)});
  return handle;
}

// A repeating task is set anew before it runs, so that it can cancel itself.
void ManualMainQueue::fire(Timers::iterator timer) {
  Timer fired = std::move(timer->second);
  timers_.erase(timer);
  const Task task = fired.task;
  if (fired.info.interval > Duration::zero()) {
    const auto missed = (now_ - fired.info.due) / fired.info.interval;
    fired.info.due += fired.info.interval * (missed + 1);
    timers_.emplace(std::pair{fired.info.due, ++lastOrder_}, std::move(fired));
  }
  task();
}

}  // namespace orvo
