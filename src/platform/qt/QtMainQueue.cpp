#include "platform/qt/QtMainQueue.h"

#include <utility>

namespace orvo {

QtMainQueue::QtMainQueue() : alarm_([this] { runDue(); }) {}

void QtMainQueue::post(Task task) {
  {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(task));
    if (posted_.size() > 1) return;
  }
  QMetaObject::invokeMethod(
      &receiver_, [this] { runPosted(); }, Qt::QueuedConnection);
}

void QtMainQueue::runPosted() {
  std::deque<Task> tasks;
  {
    const std::lock_guard lock(mutex_);
    tasks.swap(posted_);
  }
  for (const Task& task : tasks) task();
}

MainQueue::Handle QtMainQueue::runAfter(Duration delay, Task task) {
  const Handle handle = timers_.addOnce(BoottimeAlarm::now(), delay, std::move(task));
  alarm_.set(timers_.wakeTime());
  return handle;
}

MainQueue::Handle QtMainQueue::repeat(Duration interval, Duration tolerance, Task task) {
  const Handle handle = timers_.addRepeating(BoottimeAlarm::now(), interval, tolerance, std::move(task));
  alarm_.set(timers_.wakeTime());
  return handle;
}

void QtMainQueue::cancel(Handle handle) {
  timers_.remove(handle);
  alarm_.set(timers_.wakeTime());
}

void QtMainQueue::runDue() {
  const auto now = BoottimeAlarm::now();
  const auto mark = timers_.mark();
  while (const auto task = timers_.takeDue(now, mark)) (*task)();
  alarm_.set(timers_.wakeTime());
}

MainQueue::Duration QtMainQueue::now() const { return std::chrono::duration_cast<Duration>(BoottimeAlarm::now()); }

bool QtMainQueue::isMainThread() const { return std::this_thread::get_id() == mainThread_; }

}  // namespace orvo
