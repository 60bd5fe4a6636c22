// Localized comparison for tests: case-insensitive in ASCII, runs of digits by their value.
#pragma once

#include "platform/LocalizedText.h"

namespace orvo {

class AsciiText : public LocalizedText {
 public:
  int standardCompare(std::string_view left, std::string_view right) const override;
  bool caseInsensitiveContains(std::string_view text, std::string_view needle) const override;
};

}  // namespace orvo
