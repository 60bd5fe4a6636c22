#include "platform/qt/QtMainQueue.h"

#include <utility>

namespace orvo {

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

bool QtMainQueue::isMainThread() const { return std::this_thread::get_id() == mainThread_; }

}  // namespace orvo
