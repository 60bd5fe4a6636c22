// The main queue over Qt's event loop. Owned by main.cpp and made on the main thread; it may be made
// before the application object, but tasks run only while that object's event loop does. One kernel
// timer serves all delays, so an idle program does not wake.
#pragma once

#include "platform/MainQueue.h"
#include "platform/qt/BoottimeAlarm.h"
#include "platform/common/TimerTable.h"

#include <QObject>

#include <deque>
#include <mutex>
#include <thread>

namespace orvo {

class QtMainQueue final : public MainQueue {
 public:
  QtMainQueue();

  void post(Task task) override;
  Handle runAfter(Duration delay, Task task) override;
  Handle repeat(Duration interval, Duration tolerance, Task task) override;
  void cancel(Handle handle) override;
  Duration now() const override;
  bool isMainThread() const override;

 private:
  void runPosted();
  void runDue();

  const std::thread::id mainThread_ = std::this_thread::get_id();
  std::mutex mutex_;
  std::deque<Task> posted_;  // under mutex_
  TimerTable timers_;
  BoottimeAlarm alarm_;
  // Last, so that no event reaches a queue that is half gone.
  QObject receiver_;
};

}  // namespace orvo
