#import "platform/macos/appkit/ActionTarget.h"

#include <utility>

@implementation OrvoActionTarget

+ (OrvoActionTarget*)targetWithAction:(std::function<void()>)action {
  OrvoActionTarget* const made = [[[OrvoActionTarget alloc] init] autorelease];
  made->_action = new std::function<void()>(std::move(action));
  return made;
}

- (void)dealloc {
  delete _action;
  [super dealloc];
}

// A copy: what is called may replace the control, and this target with it.
- (void)send:(id)__attribute__((unused))sender {
  const std::function<void()> action = *_action;
  if (action) action();
}

@end
