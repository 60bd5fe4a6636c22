#include "support/MemoryAccessibility.h"

#include <utility>

namespace orvo {

std::optional<AttributeValue> MemoryElement::copyAttributeValue(std::string_view name) {
  reads.emplace_back(name);
  const auto found = attributes.find(name);
  if (found == attributes.end()) return std::nullopt;
  return found->second;
}

std::shared_ptr<MemoryElement> MemoryElement::withFrame(const Rect& frame) {
  attributes["AXFrame"] = frame;
  return shared_from_this();
}

std::shared_ptr<MemoryElement> MemoryElement::withIdentifier(const std::string& identifier) {
  attributes["AXIdentifier"] = identifier;
  return shared_from_this();
}

std::shared_ptr<MemoryElement> MemoryElement::withChildren(std::vector<std::shared_ptr<MemoryElement>> children) {
  attributes["AXChildren"] = std::vector<AccessibilityElementRef>(children.begin(), children.end());
  return shared_from_this();
}

std::shared_ptr<MemoryElement> element(std::optional<std::int32_t> pid) {
  auto made = std::make_shared<MemoryElement>();
  made->pid = pid;
  return made;
}

bool MemoryAccessibility::isProcessTrusted(bool prompt) {
  if (prompt) ++prompts;
  return trusted;
}

AccessibilityElementRef MemoryAccessibility::applicationElement(std::int32_t processIdentifier) {
  const std::lock_guard lock(mutex_);
  asked_.push_back(processIdentifier);
  const auto found = trees_.find(processIdentifier);
  return found == trees_.end() ? element(processIdentifier) : found->second;
}

void MemoryAccessibility::setTree(std::int32_t processIdentifier, std::shared_ptr<MemoryElement> root) {
  const std::lock_guard lock(mutex_);
  trees_[processIdentifier] = std::move(root);
}

std::vector<std::int32_t> MemoryAccessibility::asked() const {
  const std::lock_guard lock(mutex_);
  return asked_;
}

}  // namespace orvo
