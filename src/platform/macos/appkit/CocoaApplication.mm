#include "platform/macos/appkit/CocoaApplication.h"

#include "platform/macos/appkit/CocoaMenu.h"
#include "platform/macos/appkit/NotificationObserver.h"
#include "platform/macos/foundation/Retained.h"

#import <AppKit/AppKit.h>

@interface OrvoApplicationDelegate : NSObject <NSApplicationDelegate> {
 @public
  orvo::ApplicationDelegate* delegate;  // not owned
}
@end

@implementation OrvoApplicationDelegate

- (void)applicationDidFinishLaunching:(NSNotification*)__attribute__((unused))notification {
  delegate->applicationDidFinishLaunching();
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)__attribute__((unused))sender hasVisibleWindows:(BOOL)visible {
  return delegate->applicationShouldHandleReopen(visible) ? YES : NO;
}

- (void)applicationWillTerminate:(NSNotification*)__attribute__((unused))notification {
  delegate->applicationWillTerminate();
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)__attribute__((unused))sender {
  return delegate->applicationShouldTerminateAfterLastWindowClosed() ? YES : NO;
}

@end

namespace orvo {

namespace {

NSApplication* shared() { return [NSApplication sharedApplication]; }

}  // namespace

struct CocoaApplication::Held {
  explicit Held(NotificationCenter& to)
      : screens([NSNotificationCenter defaultCenter], NSApplicationDidChangeScreenParametersNotification,
                [&to](NSNotification*) { to.post(Notification::screenParametersChanged); }) {}

  NotificationObserver screens;
  // The system would hold up the timers of a program without windows, and with them a click that is held.
  Retained<id> awake = Retained<id>::retaining([[NSProcessInfo processInfo]
      beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                        reason:@"Guards the menu bar"]);
  Retained<OrvoApplicationDelegate*> delegate;  // the application does not keep it
};

CocoaApplication::CocoaApplication() {
  @autoreleasepool {
    [NSApplication sharedApplication];
    held_ = std::make_unique<Held>(notificationCenter_);
  }
}

CocoaApplication::~CocoaApplication() { setDelegate(nullptr); }

void CocoaApplication::setDelegate(ApplicationDelegate* delegate) {
  @autoreleasepool {
    Retained<OrvoApplicationDelegate*> made;
    if (delegate != nullptr) {
      made = Retained<OrvoApplicationDelegate*>::owning([[OrvoApplicationDelegate alloc] init]);
      made.get()->delegate = delegate;
    }
    [shared() setDelegate:made.get()];
    held_->delegate = std::move(made);
  }
}

void CocoaApplication::run() {
  @autoreleasepool {
    [shared() run];
  }
}

void CocoaApplication::terminate() {
  @autoreleasepool {
    [shared() terminate:nil];
  }
}

void CocoaApplication::setActivationPolicy(ActivationPolicy policy) {
  @autoreleasepool {
    [shared() setActivationPolicy:policy == ActivationPolicy::accessory ? NSApplicationActivationPolicyAccessory
                                                                        : NSApplicationActivationPolicyRegular];
  }
}

void CocoaApplication::setMainMenu(const Menu& menu) {
  @autoreleasepool {
    [shared() setMainMenu:cocoaMenu(menu).get()];
  }
}

void CocoaApplication::activateIgnoringOtherApps() {
  @autoreleasepool {
    [shared() activateIgnoringOtherApps:YES];
  }
}

std::optional<EventType> CocoaApplication::currentEventType() const {
  @autoreleasepool {
    NSEvent* const event = [shared() currentEvent];
    if (event == nil) return std::nullopt;
    return static_cast<EventType>([event type]);
  }
}

}  // namespace orvo
