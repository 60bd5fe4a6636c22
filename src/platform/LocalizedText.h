// Locale-aware comparison of texts in UTF-8. Any thread.
#pragma once

#include <string_view>

namespace orvo {

class LocalizedText {
 public:
  virtual ~LocalizedText() = default;

  // Orders as a file browser does: case-insensitive, digits by numeric value. Negative, zero or
  // positive.
  virtual int standardCompare(std::string_view left, std::string_view right) const = 0;
  // An empty needle is contained nowhere.
  virtual bool caseInsensitiveContains(std::string_view text, std::string_view needle) const = 0;
};

}  // namespace orvo
