#include "platform/macos/appkit/CocoaMenu.h"

#include "platform/macos/appkit/ActionTarget.h"
#include "platform/macos/foundation/NsText.h"

namespace orvo {

namespace {

// The window's view claims "copy:" and its like for Qt's own menu items alone, and raises when another
// item sends them. It knows the keys themselves, so the key that chose the item is handed to it.
void handKeyToFirstResponder() {
  NSApplication* const application = [NSApplication sharedApplication];
  NSEvent* const event = [application currentEvent];
  if ([event type] == NSEventTypeKeyDown) [[[application keyWindow] firstResponder] keyDown:event];
}

struct TargetOf {
  OrvoActionTarget* operator()(std::monostate /*none*/) const { return nil; }
  OrvoActionTarget* operator()(const std::function<void()>& action) const {
    return [OrvoActionTarget targetWithAction:action];
  }
  OrvoActionTarget* operator()(const FirstResponderAction& /*action*/) const {
    return [OrvoActionTarget targetWithAction:handKeyToFirstResponder];
  }
};

// An item does not keep its target, but it does keep the object that it represents.
void setTarget(NSMenuItem* item, OrvoActionTarget* target) {
  [item setTarget:target];
  [item setRepresentedObject:target];
}

Retained<NSMenuItem*> cocoaItem(const MenuItem& item) {
  if (item.separator) return Retained<NSMenuItem*>::retaining([NSMenuItem separatorItem]);
  OrvoActionTarget* const target = std::visit(TargetOf(), item.action);
  auto made = Retained<NSMenuItem*>::owning([[NSMenuItem alloc] initWithTitle:nsText(item.title)
                                                                       action:target != nil ? @selector(send:) : SEL()
                                                                keyEquivalent:nsText(item.keyEquivalent)]);
  setTarget(made.get(), target);
  [made.get() setEnabled:item.enabled];
  for (const Menu& menu : item.submenu) [made.get() setSubmenu:cocoaMenu(menu).get()];
  return made;
}

}  // namespace

Retained<NSMenu*> cocoaMenu(const Menu& menu) {
  @autoreleasepool {
    auto made = Retained<NSMenu*>::owning([[NSMenu alloc] initWithTitle:nsText(menu.title)]);
    [made.get() setAutoenablesItems:menu.autoenablesItems];
    for (const MenuItem& item : menu.items) [made.get() addItem:cocoaItem(item).get()];
    return made;
  }
}

}  // namespace orvo
