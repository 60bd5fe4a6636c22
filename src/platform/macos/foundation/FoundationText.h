// Comparison of texts by the person's language settings. Owned by main.cpp; any thread.
#pragma once

#include "platform/LocalizedText.h"

namespace orvo {

class FoundationText final : public LocalizedText {
 public:
  int standardCompare(std::string_view left, std::string_view right) const override;
  bool caseInsensitiveContains(std::string_view text, std::string_view needle) const override;
};

}  // namespace orvo
