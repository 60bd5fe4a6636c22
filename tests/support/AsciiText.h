// Localized comparison for tests: case-insensitive in ASCII, runs of digits by their value.
#pragma once

#include "platform/LocalizedText.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace orvo {

class AsciiText : public LocalizedText {
 public:
  int standardCompare(std::string_view left, std::string_view right) const override {
    return key(left).compare(key(right));
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
  // With every run of digits padded to one length.
  static std::string key(std::string_view text) {
    std::string padded;
    std::string digits;
    for (const char each : lower(text) + '\0') {
      if (std::isdigit(static_cast<unsigned char>(each)) != 0) {
        digits += each;
        continue;
      }
      if (!digits.empty()) padded += std::string(20 - std::min<std::size_t>(20, digits.size()), '0') + digits;
      digits.clear();
      padded += each;
    }
    return padded;
  }
};

}  // namespace orvo
