// Localized comparison for tests: case-insensitive in ASCII, runs of digits by their value.
#pragma once

#include "platform/LocalizedText.h"

#include <cctype>
#include <cstring>
#include <string>

namespace orvo {

class AsciiText : public LocalizedText {
 public:
  int standardCompare(std::string_view left, std::string_view right) const override {
    return strverscmp(lower(left).c_str(), lower(right).c_str());
  }
  bool caseInsensitiveContains(std::string_view text, std::string_view needle) const override {
    return !needle.empty() && lower(text).find(lower(needle)) != std::string::npos;
  }

 private:
  static std::string lower(std::string_view text) {
    std::string all(text);
    for (char& each : all) each = static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
    return all;
  }
};

}  // namespace orvo
