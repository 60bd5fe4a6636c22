// The main queue over Qt's event loop. Owned by main.cpp and made on the main thread; it may be made
// before the application object, but tasks run only while that object's event loop does.
#pragma once

#include "platform/common/AlarmQueue.h"
#include "platform/qt/BoottimeAlarm.h"

#include <QObject>

#include <deque>
#include <mutex>
#include <thread>

namespace orvo {

class QtMainQueue final : public AlarmQueue<BoottimeAlarm> {
 public:
  void post(Task task) override;
  bool isMainThread() const override;

 private:
  void runPosted();

  const std::thread::id mainThread_ = std::this_thread::get_id();
  std::mutex mutex_;
  std::deque<Task> posted_;  // under mutex_
  // Last, so that no event reaches a queue that is half gone.
  QObject receiver_;
};

}  // namespace orvo
