#include "platform/macos/appkit/CocoaStatusBar.h"

#include "platform/macos/appkit/ActionTarget.h"
#include "platform/macos/appkit/CocoaMenu.h"
#include "platform/macos/foundation/NsText.h"
#include "platform/macos/foundation/Retained.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace orvo {

namespace {

class CocoaStatusItemButton final : public StatusItemButton {
 public:
  explicit CocoaStatusItemButton(NSStatusBarButton* button)
      : button_(Retained<NSStatusBarButton*>::retaining(button)) {}
  ~CocoaStatusItemButton() override {
    @autoreleasepool {
      [button_.get() setTarget:nil];
    }
  }
  CocoaStatusItemButton(const CocoaStatusItemButton&) = delete;
  CocoaStatusItemButton& operator=(const CocoaStatusItemButton&) = delete;

  void setAction(std::function<void()> action, std::uint32_t eventMask) override;
  void setAccessibilityLabel(const std::string& label) override;
  void setAccessibilityIdentifier(const std::string& identifier) override;
  void setImage(const std::string& symbolName, const std::string& accessibilityDescription) override;
  void setToolTip(const std::string& text) override;
  Rect bounds() const override;
  void popUpMenu(const Menu& menu, Point point) override;

 private:
  const Retained<NSStatusBarButton*> button_;
  Retained<OrvoActionTarget*> target_;  // the button does not keep it
};

void CocoaStatusItemButton::setAction(std::function<void()> action, std::uint32_t eventMask) {
  @autoreleasepool {
    auto target = Retained<OrvoActionTarget*>::retaining([OrvoActionTarget targetWithAction:std::move(action)]);
    [button_.get() setTarget:target.get()];
    [button_.get() setAction:@selector(send:)];
    [button_.get() sendActionOn:static_cast<NSEventMask>(eventMask)];
    target_ = std::move(target);
  }
}

void CocoaStatusItemButton::setAccessibilityLabel(const std::string& label) {
  @autoreleasepool {
    [button_.get() setAccessibilityLabel:nsText(label)];
  }
}

void CocoaStatusItemButton::setAccessibilityIdentifier(const std::string& identifier) {
  @autoreleasepool {
    [button_.get() setAccessibilityIdentifier:nsText(identifier)];
  }
}

void CocoaStatusItemButton::setImage(const std::string& symbolName, const std::string& accessibilityDescription) {
  @autoreleasepool {
    [button_.get() setImage:[NSImage imageWithSystemSymbolName:nsText(symbolName)
                                      accessibilityDescription:nsText(accessibilityDescription)]];
  }
}

void CocoaStatusItemButton::setToolTip(const std::string& text) {
  @autoreleasepool {
    [button_.get() setToolTip:nsText(text)];
  }
}

Rect CocoaStatusItemButton::bounds() const {
  @autoreleasepool {
    const NSRect bounds = [button_.get() bounds];
    return {bounds.origin.x, bounds.origin.y, bounds.size.width, bounds.size.height};
  }
}

// Returns when the menu has closed and the chosen item's action has run.
void CocoaStatusItemButton::popUpMenu(const Menu& menu, Point point) {
  @autoreleasepool {
    const Retained<NSMenu*> shown = cocoaMenu(menu);
    // What the person chooses may remove the item.
    const auto button = Retained<NSStatusBarButton*>::retaining(button_.get());
    [shown.get() popUpMenuPositioningItem:nil atLocation:NSMakePoint(point.x, point.y) inView:button.get()];
  }
}

class CocoaStatusItem final : public StatusItem {
 public:
  explicit CocoaStatusItem(NSStatusItem* item);
  ~CocoaStatusItem() override;
  CocoaStatusItem(const CocoaStatusItem&) = delete;
  CocoaStatusItem& operator=(const CocoaStatusItem&) = delete;

  void setAutosaveName(const std::string& name) override;
  void setBehavior(std::uint32_t behavior) override;
  void setVisible(bool visible) override;
  StatusItemButton* button() override { return button_.get(); }

 private:
  const Retained<NSStatusItem*> item_;
  std::unique_ptr<CocoaStatusItemButton> button_;
};

CocoaStatusItem::CocoaStatusItem(NSStatusItem* item) : item_(Retained<NSStatusItem*>::retaining(item)) {
  if (NSStatusBarButton* const button = [item button]) button_ = std::make_unique<CocoaStatusItemButton>(button);
}

CocoaStatusItem::~CocoaStatusItem() {
  @autoreleasepool {
    button_.reset();
    [[NSStatusBar systemStatusBar] removeStatusItem:item_.get()];
  }
}

void CocoaStatusItem::setAutosaveName(const std::string& name) {
  @autoreleasepool {
    [item_.get() setAutosaveName:nsText(name)];
  }
}

void CocoaStatusItem::setBehavior(std::uint32_t behavior) {
  @autoreleasepool {
    [item_.get() setBehavior:static_cast<NSStatusItemBehavior>(behavior)];
  }
}

void CocoaStatusItem::setVisible(bool visible) {
  @autoreleasepool {
    [item_.get() setVisible:visible];
  }
}

}  // namespace

std::unique_ptr<StatusItem> CocoaStatusBar::statusItem(double length) {
  @autoreleasepool {
    NSStatusItem* const item = [[NSStatusBar systemStatusBar] statusItemWithLength:length];
    return item != nil ? std::make_unique<CocoaStatusItem>(item) : nullptr;
  }
}

}  // namespace orvo
