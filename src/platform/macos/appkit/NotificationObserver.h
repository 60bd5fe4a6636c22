// Calls a function on the main thread for each notification of one name. For Objective-C++ only; main thread
// only. The observation ends with the object.
#pragma once

#include "platform/macos/foundation/Retained.h"

#include <functional>

namespace orvo {

class NotificationObserver {
 public:
  using Received = std::function<void(NSNotification* notification)>;

  NotificationObserver(NSNotificationCenter* from, NSString* name, Received received);
  ~NotificationObserver();
  NotificationObserver(const NotificationObserver&) = delete;
  NotificationObserver& operator=(const NotificationObserver&) = delete;

 private:
  Retained<NSNotificationCenter*> center_;
  Retained<id> token_;
};

}  // namespace orvo
