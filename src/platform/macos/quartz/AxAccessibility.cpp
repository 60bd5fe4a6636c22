#include "platform/macos/quartz/AxAccessibility.h"

#include "platform/macos/quartz/CfText.h"

#include <ApplicationServices/ApplicationServices.h>

#include <utility>

namespace orvo {

namespace {

class AxElement final : public AccessibilityElement {
 public:
  explicit AxElement(Owned<AXUIElementRef> element) : element_(std::move(element)) {}

  void setMessagingTimeout(float seconds) override {
    if (element_) AXUIElementSetMessagingTimeout(element_.get(), seconds);
  }
  std::optional<std::int32_t> processIdentifier() override;
  std::optional<AttributeValue> copyAttributeValue(std::string_view name) override;

 private:
  // Null when the system could not make the element.
  const Owned<AXUIElementRef> element_;
};

AttributeValue rectangle(AXValueRef value) {
  CGRect rect{};
  if (AXValueGetValue(value, static_cast<AXValueType>(kAXValueTypeCGRect), &rect) == 0) return OtherAttributeValue{};
  return Rect{rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

// A list with anything else in it is not a list of elements.
AttributeValue elements(CFArrayRef list) {
  std::vector<AccessibilityElementRef> found;
  const CFIndex count = CFArrayGetCount(list);
  found.reserve(static_cast<std::size_t>(count));
  for (CFIndex index = 0; index < count; ++index) {
    const void* const member = CFArrayGetValueAtIndex(list, index);
    if (member == nullptr || CFGetTypeID(member) != AXUIElementGetTypeID()) return OtherAttributeValue{};
    found.push_back(std::make_shared<AxElement>(Owned<AXUIElementRef>::retaining(static_cast<AXUIElementRef>(member))));
  }
  return found;
}

AttributeValue attributeValue(CFTypeRef value) {
  const CFTypeID type = CFGetTypeID(value);
  if (type == CFStringGetTypeID()) return textOf(static_cast<CFStringRef>(value));
  if (type == AXValueGetTypeID()) return rectangle(static_cast<AXValueRef>(value));
  if (type == CFArrayGetTypeID()) return elements(static_cast<CFArrayRef>(value));
  return OtherAttributeValue{};
}

std::optional<std::int32_t> AxElement::processIdentifier() {
  pid_t process = 0;
  if (!element_ || AXUIElementGetPid(element_.get(), &process) != kAXErrorSuccess) return std::nullopt;
  return process;
}

std::optional<AttributeValue> AxElement::copyAttributeValue(std::string_view name) {
  const Owned<CFStringRef> attribute = cfText(name);
  if (!element_ || !attribute) return std::nullopt;
  CFTypeRef copied = nullptr;
  const AXError error = AXUIElementCopyAttributeValue(element_.get(), attribute.get(), &copied);
  const Owned<CFTypeRef> value(copied);
  if (error != kAXErrorSuccess || !value) return std::nullopt;
  return attributeValue(value.get());
}

}  // namespace

bool AxAccessibility::isProcessTrusted() const { return AXIsProcessTrusted() != 0; }

bool AxAccessibility::isProcessTrusted(bool prompt) {
  const void* key = kAXTrustedCheckOptionPrompt;
  const void* value = prompt ? kCFBooleanTrue : kCFBooleanFalse;
  const Owned<CFDictionaryRef> options(CFDictionaryCreate(
      kCFAllocatorDefault, &key, &value, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  return AXIsProcessTrustedWithOptions(options.get()) != 0;
}

AccessibilityElementRef AxAccessibility::applicationElement(std::int32_t processIdentifier) {
  return std::make_shared<AxElement>(Owned<AXUIElementRef>(AXUIElementCreateApplication(processIdentifier)));
}

}  // namespace orvo
