#include "platform/Appearance.h"

#include "platform/macos/appkit/KeyValueObserver.h"
#include "platform/macos/foundation/Retained.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace orvo {

namespace {

class CocoaAppearance final : public Appearance {
 public:
  CocoaAppearance();
  ~CocoaAppearance() override;
  CocoaAppearance(const CocoaAppearance&) = delete;
  CocoaAppearance& operator=(const CocoaAppearance&) = delete;

  AppearanceTraits traits() const override;
  void setObserver(std::function<void()> observer) override { observer_ = std::move(observer); }

 private:
  void changed() const {
    if (observer_) observer_();
  }

  std::function<void()> observer_;
  KeyValueObserver appearance_;
  Retained<id> options_;
};

CocoaAppearance::CocoaAppearance()
    : appearance_([NSApplication sharedApplication], @"effectiveAppearance", [this](NSDictionary*) { changed(); }) {
  @autoreleasepool {
    CocoaAppearance* const self = this;
    id const token = [[[NSWorkspace sharedWorkspace] notificationCenter]
        addObserverForName:NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification
                    object:nil
                     queue:[NSOperationQueue mainQueue] usingBlock:^(NSNotification*) {
                       self->changed();
                     }];
    options_ = Retained<id>::retaining(token);
  }
}

CocoaAppearance::~CocoaAppearance() {
  @autoreleasepool {
    [[[NSWorkspace sharedWorkspace] notificationCenter] removeObserver:options_.get()];
  }
}

AppearanceTraits CocoaAppearance::traits() const {
  @autoreleasepool {
    NSArray* const names = [NSArray arrayWithObjects:NSAppearanceNameAqua, NSAppearanceNameDarkAqua, nil];
    NSAppearance* const shown = [[NSApplication sharedApplication] effectiveAppearance];
    NSString* const best = [shown bestMatchFromAppearancesWithNames:names];
    return {.dark = [best isEqualToString:NSAppearanceNameDarkAqua] ? true : false,
            .reducesMotion = [[NSWorkspace sharedWorkspace] accessibilityDisplayShouldReduceMotion] ? true : false};
  }
}

}  // namespace

std::unique_ptr<Appearance> makeDesktopAppearance() { return std::make_unique<CocoaAppearance>(); }

}  // namespace orvo
