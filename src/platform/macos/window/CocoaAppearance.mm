#include "platform/Appearance.h"

#include "platform/macos/appkit/KeyValueObserver.h"
#include "platform/macos/appkit/NotificationObserver.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace orvo {

namespace {

class CocoaAppearance final : public Appearance {
 public:
  CocoaAppearance();
  CocoaAppearance(const CocoaAppearance&) = delete;
  CocoaAppearance& operator=(const CocoaAppearance&) = delete;

  AppearanceTraits traits() const override;
  void setObserver(std::function<void()> observer) override { observer_ = std::move(observer); }

 private:
  void changed() const {
    if (observer_) observer_();
  }

  std::function<void()> observer_;
  const KeyValueObserver appearance_;
  const NotificationObserver options_;
};

CocoaAppearance::CocoaAppearance()
    : appearance_([NSApplication sharedApplication], @"effectiveAppearance", [this](NSDictionary*) { changed(); }),
      options_([[NSWorkspace sharedWorkspace] notificationCenter],
               NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification, [this](NSNotification*) { changed(); }) {}

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
