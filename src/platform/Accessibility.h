// The Accessibility interface: trust, and the elements of an application's tree. Callable from any
// thread; an element is used by one thread at a time.
#pragma once

#include "core/Rect.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvo {

class AccessibilityElement;
using AccessibilityElementRef = std::shared_ptr<AccessibilityElement>;

// Stands for a value of any kind that Orvo does not read.
struct OtherAttributeValue {};

using AttributeValue = std::variant<OtherAttributeValue, std::string, Rect, std::vector<AccessibilityElementRef>>;

class AccessibilityElement {
 public:
  virtual ~AccessibilityElement() = default;

  // Bounds how long one request to this element may block, in seconds.
  virtual void setMessagingTimeout(float seconds) = 0;

  // Absent when the request fails; a success may still carry any number.
  virtual std::optional<std::int32_t> processIdentifier() = 0;

  // "AXFrame" (a Rect in global screen coordinates), "AXIdentifier" (text), "AXChildren" (elements,
  // in order). Absent when the read fails, times out or has no value.
  virtual std::optional<AttributeValue> copyAttributeValue(std::string_view name) = 0;
};

class Accessibility {
 public:
  virtual ~Accessibility() = default;

  virtual bool isProcessTrusted() const = 0;

  // With `prompt`, lets the system ask the person when the process is not yet trusted. Answers the
  // trust as it is now and does not wait for the person. Main thread.
  virtual bool isProcessTrusted(bool prompt) = 0;

  // Never absent; the element of a process without a tree answers no attribute.
  virtual AccessibilityElementRef applicationElement(std::int32_t processIdentifier) = 0;
};

}  // namespace orvo
