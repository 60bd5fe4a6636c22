#include "platform/macos/foundation/FoundationText.h"

#include "platform/macos/foundation/NsText.h"

namespace orvo {

int FoundationText::standardCompare(std::string_view left, std::string_view right) const {
  @autoreleasepool {
    return static_cast<int>([nsText(left) localizedStandardCompare:nsText(right)]);
  }
}

// What Foundation answers to an empty needle has changed between systems.
bool FoundationText::caseInsensitiveContains(std::string_view text, std::string_view needle) const {
  if (needle.empty()) return false;
  @autoreleasepool {
    return [nsText(text) localizedCaseInsensitiveContainsString:nsText(needle)];
  }
}

}  // namespace orvo
