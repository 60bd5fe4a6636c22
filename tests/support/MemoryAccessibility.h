// Accessibility trees built by a test. Build a tree before it is walked; elements are not locked.
#pragma once

#include "platform/Accessibility.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

// An attribute that is not in `attributes` fails to be read; one of another kind is put there as it is.
class MemoryElement : public AccessibilityElement, public std::enable_shared_from_this<MemoryElement> {
 public:
  void setMessagingTimeout(float seconds) override { messagingTimeout = seconds; }
  std::optional<std::int32_t> processIdentifier() override { return pid; }
  std::optional<AttributeValue> copyAttributeValue(std::string_view name) override;

  std::shared_ptr<MemoryElement> withFrame(const Rect& frame);
  std::shared_ptr<MemoryElement> withIdentifier(const std::string& identifier);
  std::shared_ptr<MemoryElement> withChildren(std::vector<std::shared_ptr<MemoryElement>> children);

  // Absent: the request fails.
  std::optional<std::int32_t> pid;
  std::map<std::string, AttributeValue, std::less<>> attributes;
  std::optional<float> messagingTimeout;
  // Names in the order in which they were asked for.
  std::vector<std::string> reads;
};

// A bare element; without an argument its process cannot be had.
std::shared_ptr<MemoryElement> element(std::optional<std::int32_t> pid = std::nullopt);

class MemoryAccessibility : public Accessibility {
 public:
  bool isProcessTrusted() const override { return trusted; }
  bool isProcessTrusted(bool prompt) override;
  AccessibilityElementRef applicationElement(std::int32_t processIdentifier) override;

  void setTree(std::int32_t processIdentifier, std::shared_ptr<MemoryElement> root);
  // Processes whose application element was asked for, in order.
  std::vector<std::int32_t> asked() const;

  std::atomic<bool> trusted{true};
  std::atomic<int> prompts{0};

 private:
  mutable std::mutex mutex_;
  std::map<std::int32_t, std::shared_ptr<MemoryElement>> trees_;
  std::vector<std::int32_t> asked_;
};

}  // namespace orvo
