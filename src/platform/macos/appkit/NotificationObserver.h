// Passes one of the system's notifications on to one of Orvo's. For Objective-C++ only; main thread
// only. The observation ends with the object.
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/macos/foundation/Retained.h"

namespace orvo {

class NotificationObserver {
 public:
  // `to` outlives the observer.
  NotificationObserver(NSNotificationCenter* from, NSString* name, NotificationCenter& to, Notification as);
  ~NotificationObserver();
  NotificationObserver(const NotificationObserver&) = delete;
  NotificationObserver& operator=(const NotificationObserver&) = delete;

 private:
  Retained<NSNotificationCenter*> center_;
  Retained<id> token_;
};

}  // namespace orvo
