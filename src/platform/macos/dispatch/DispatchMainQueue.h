// The main queue over the main dispatch queue, which the application's run loop serves. Owned by
// main.cpp and made on the main thread; tasks run only while the run loop does. A task must not run a
// loop of its own (a menu, a modal panel): the dispatch queue, and every task behind it, would wait until
// that loop ends.
#pragma once

#include "platform/common/AlarmQueue.h"
#include "platform/macos/dispatch/ContinuousAlarm.h"

namespace orvo {

class DispatchMainQueue final : public AlarmQueue<ContinuousAlarm> {
 public:
  void post(Task task) override;
  bool isMainThread() const override;
};

}  // namespace orvo
