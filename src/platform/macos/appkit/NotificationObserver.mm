#import "platform/macos/appkit/NotificationObserver.h"

#include <utility>

namespace orvo {

NotificationObserver::NotificationObserver(NSNotificationCenter* from, NSString* name, Received received)
    : center_(Retained<NSNotificationCenter*>::retaining(from)) {
  @autoreleasepool {
    const Received call = std::move(received);
    id const token = [from addObserverForName:name object:nil queue:[NSOperationQueue mainQueue]
                                   usingBlock:^(NSNotification* notification) {
                                     call(notification);
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
