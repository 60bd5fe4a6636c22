#include "platform/macos/appkit/KeyValueObserver.h"

#include <utility>

@interface OrvoKeyValueObserver : NSObject {
 @public
  orvo::KeyValueObserver::Changed* changed;
}
@end

@implementation OrvoKeyValueObserver

- (void)dealloc {
  delete changed;
  [super dealloc];
}

- (void)observeValueForKeyPath:(NSString*)__attribute__((unused))path
                      ofObject:(id)__attribute__((unused))object
                        change:(NSDictionary*)change
                       context:(void*)__attribute__((unused))context {
  @autoreleasepool {
    (*changed)(change);
  }
}

@end

namespace orvo {

KeyValueObserver::KeyValueObserver(id object, NSString* path, Changed changed)
    : object_(Retained<id>::retaining(object)),
      path_(Retained<NSString*>::retaining(path)),
      observer_(Retained<OrvoKeyValueObserver*>::owning([[OrvoKeyValueObserver alloc] init])) {
  observer_.get()->changed = new Changed(std::move(changed));
  @autoreleasepool {
    [object addObserver:observer_.get() forKeyPath:path
                options:NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld
                context:nullptr];
  }
}

KeyValueObserver::~KeyValueObserver() {
  @autoreleasepool {
    [object_.get() removeObserver:observer_.get() forKeyPath:path_.get()];
  }
}

}  // namespace orvo
