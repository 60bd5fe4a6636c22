#include "platform/Workspace.h"

#include <array>
#include <cctype>

namespace orvo {

std::string fileURL(const std::string& path, bool directory) {
  constexpr std::string_view unreserved = "-._~/";
  constexpr std::array<char, 17> digits{"0123456789ABCDEF"};
  std::string url = "file://";
  for (const char character : path) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80 && (std::isalnum(byte) != 0 || unreserved.find(character) != std::string_view::npos)) {
      url += character;
    } else {
      url += '%';
      url += digits.at(byte >> 4U);
      url += digits.at(byte & 0x0FU);
    }
  }
  if (directory && !url.ends_with('/')) url += '/';
  return url;
}

}  // namespace orvo
