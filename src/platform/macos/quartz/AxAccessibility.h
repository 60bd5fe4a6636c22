// The Accessibility interface of macOS. Owned by main.cpp; any thread, see the interface.
#pragma once

#include "platform/Accessibility.h"

namespace orvo {

class AxAccessibility final : public Accessibility {
 public:
  bool isProcessTrusted() const override;
  bool isProcessTrusted(bool prompt) override;
  AccessibilityElementRef applicationElement(std::int32_t processIdentifier) override;
};

}  // namespace orvo
