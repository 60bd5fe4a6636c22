#include "platform/macos/appkit/NotificationObserver.h"

#include <utility>

namespace orvo {

NotificationObserver::NotificationObserver(NSNotificationCenter* from, NSString* name, NotificationCenter& to,
                                           Notification as)
    : center_(Retained<NSNotificationCenter*>::retaining(from)) {
  @autoreleasepool {
    NotificationCenter* const center = &to;
    id const token = [from addObserverForName:name object:nil queue:[NSOperationQueue mainQueue]
                                   usingBlock:^(NSNotification*) {
                                     center->post(as);
                                   }];
    token_ = Retained<id>::retaining(token);
  }
}

NotificationObserver::~NotificationObserver() {
  @autoreleasepool {
    [center_.get() removeObserver:token_.get()];
  }
}

}  // namespace orvo
