// Accessibility trees built by a test. Build a tree before it is walked; nothing is locked.
#pragma once

#include "platform/Accessibility.h"

#include <functional>
#include <map>
#include <utility>

namespace orvo {

// An attribute that was not given fails to be read; one of another kind is given as it is.
struct MemoryElement : AccessibilityElement, std::enable_shared_from_this<MemoryElement> {
  explicit MemoryElement(std::optional<std::int32_t> process) : pid(process) {}

  std::optional<std::int32_t> pid;
  std::map<std::string, AttributeValue, std::less<>> attributes;
  std::optional<float> messagingTimeout;
  int reads = 0;

  std::shared_ptr<MemoryElement> with(const char* name, AttributeValue value) {
    attributes[name] = std::move(value);
    return shared_from_this();
  }
  std::shared_ptr<MemoryElement> withFrame(const Rect& frame) { return with("AXFrame", frame); }
  std::shared_ptr<MemoryElement> withIdentifier(const std::string& text) { return with("AXIdentifier", text); }
  std::shared_ptr<MemoryElement> withChildren(const std::vector<std::shared_ptr<MemoryElement>>& children) {
    return with("AXChildren", std::vector<AccessibilityElementRef>(children.begin(), children.end()));
  }

  void setMessagingTimeout(float seconds) override { messagingTimeout = seconds; }
  std::optional<std::int32_t> processIdentifier() override { return pid; }
  std::optional<AttributeValue> copyAttributeValue(std::string_view name) override {
    const auto found = attributes.find(name);
    return ++reads, found == attributes.end() ? std::nullopt : std::optional(found->second);
  }
};

// A bare element; without a process, the request for it fails.
inline std::shared_ptr<MemoryElement> element(std::optional<std::int32_t> pid) {
  return std::make_shared<MemoryElement>(pid);
}

struct MemoryAccessibility : Accessibility {
  bool trusted = true;
  int prompts = 0;
  std::map<std::int32_t, AccessibilityElementRef> trees;
  // Processes whose application element was asked for, in order.
  std::vector<std::int32_t> asked;

  bool isProcessTrusted() const override { return trusted; }
  bool isProcessTrusted(bool prompt) override { return prompts += prompt ? 1 : 0, trusted; }
  AccessibilityElementRef applicationElement(std::int32_t pid) override {
    asked.push_back(pid);
    return trees.contains(pid) ? trees.at(pid) : element(pid);
  }
};

}  // namespace orvo
