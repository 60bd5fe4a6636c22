// Accessibility trees built by a test. Build a tree before it is walked; nothing is locked.
#pragma once

#include "platform/Accessibility.h"

#include <functional>
#include <map>
#include <utility>

namespace orvo {

// An attribute that was not given fails to be read; one of another kind is given as it is.
class MemoryElement : public AccessibilityElement, public std::enable_shared_from_this<MemoryElement> {
 public:
  explicit MemoryElement(std::optional<std::int32_t> process) : pid_(process) {}

  std::shared_ptr<MemoryElement> with(const char* name, AttributeValue value) {
    attributes_[name] = std::move(value);
    return shared_from_this();
  }
  std::shared_ptr<MemoryElement> withFrame(const Rect& frame) { return with("AXFrame", frame); }
  std::shared_ptr<MemoryElement> withIdentifier(const std::string& text) { return with("AXIdentifier", text); }
  std::shared_ptr<MemoryElement> withChildren(const std::vector<std::shared_ptr<MemoryElement>>& children) {
    return with("AXChildren", std::vector<AccessibilityElementRef>(children.begin(), children.end()));
  }

  void setMessagingTimeout(float seconds) override { messagingTimeout = seconds; }
  std::optional<std::int32_t> processIdentifier() override { return pid_; }
  std::optional<AttributeValue> copyAttributeValue(std::string_view name) override {
    ++reads;
    const auto found = attributes_.find(name);
    return found == attributes_.end() ? std::nullopt : std::optional(found->second);
  }

  std::optional<float> messagingTimeout;
  int reads = 0;

 private:
  std::optional<std::int32_t> pid_;
  std::map<std::string, AttributeValue, std::less<>> attributes_;
};

// A bare element; without a process, the request for it fails.
inline std::shared_ptr<MemoryElement> element(std::optional<std::int32_t> pid) {
  return std::make_shared<MemoryElement>(pid);
}

class MemoryAccessibility : public Accessibility {
 public:
  bool trusted = true;
  int prompts = 0;
  std::map<std::int32_t, AccessibilityElementRef> trees;
  // Processes whose application element was asked for, in order.
  std::vector<std::int32_t> asked;

  bool isProcessTrusted() const override { return trusted; }
  bool isProcessTrusted(bool prompt) override {
    prompts += prompt ? 1 : 0;
    return trusted;
  }
  AccessibilityElementRef applicationElement(std::int32_t processIdentifier) override {
    asked.push_back(processIdentifier);
    return trees.contains(processIdentifier) ? trees.at(processIdentifier) : element(processIdentifier);
  }
};

}  // namespace orvo
