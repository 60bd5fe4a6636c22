// The target of a control or menu item, which keeps no target itself: calls a function on "send:". For
// Objective-C++ only; main thread only.
#pragma once

#import <Foundation/Foundation.h>

#include <functional>

@interface OrvoActionTarget : NSObject {
  std::function<void()>* _action;
}
// Autoreleased.
+ (OrvoActionTarget*)targetWithAction:(std::function<void()>)action;
- (void)send:(id)sender;
@end
