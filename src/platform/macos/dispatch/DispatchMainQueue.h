// The main queue over the main dispatch queue, which the application's run loop serves. Owned by
// main.cpp and made on the main thread; tasks run only while the run loop does. One kernel timer serves
// all delays, so an idle program does not wake. A task must not run a loop of its own (a menu, a modal
// panel): the dispatch queue, and every task behind it, would wait until that loop ends.
#pragma once

#include "platform/MainQueue.h"
#include "platform/common/TimerTable.h"
#include "platform/macos/dispatch/ContinuousAlarm.h"

namespace orvo {

class DispatchMainQueue final : public MainQueue {
 public:
  DispatchMainQueue();

  void post(Task task) override;
  Handle runAfter(Duration delay, Task task) override;
  Handle repeat(Duration interval, Duration tolerance, Task task) override;
  void cancel(Handle handle) override;
  Duration now() const override;
  bool isMainThread() const override;

 private:
  void runDue();

  TimerTable timers_;
  ContinuousAlarm alarm_;
};

}  // namespace orvo
