#include "platform/macos/dispatch/DispatchMainQueue.h"

#include <dispatch/dispatch.h>
#include <pthread.h>

#include <memory>
#include <utility>

namespace orvo {

namespace {

void run(void* context) { (*std::unique_ptr<MainQueue::Task>(static_cast<MainQueue::Task*>(context)))(); }

}  // namespace

DispatchMainQueue::DispatchMainQueue() : alarm_([this] { runDue(); }) {}

void DispatchMainQueue::post(Task task) {
  dispatch_async_f(dispatch_get_main_queue(), std::make_unique<Task>(std::move(task)).release(), run);
}

MainQueue::Handle DispatchMainQueue::runAfter(Duration delay, Task task) {
  const Handle handle = timers_.addOnce(ContinuousAlarm::now(), delay, std::move(task));
  alarm_.set(timers_.wakeTime());
  return handle;
}

MainQueue::Handle DispatchMainQueue::repeat(Duration interval, Duration tolerance, Task task) {
  const Handle handle = timers_.addRepeating(ContinuousAlarm::now(), interval, tolerance, std::move(task));
  alarm_.set(timers_.wakeTime());
  return handle;
}

void DispatchMainQueue::cancel(Handle handle) {
  timers_.remove(handle);
  alarm_.set(timers_.wakeTime());
}

void DispatchMainQueue::runDue() {
  const auto now = ContinuousAlarm::now();
  const auto mark = timers_.mark();
  while (const auto task = timers_.takeDue(now, mark)) (*task)();
  alarm_.set(timers_.wakeTime());
}

MainQueue::Duration DispatchMainQueue::now() const {
  return std::chrono::duration_cast<Duration>(ContinuousAlarm::now());
}

bool DispatchMainQueue::isMainThread() const { return pthread_main_np() != 0; }

}  // namespace orvo
