#include "platform/linux/desktop/LinuxProcessInfo.h"

#include <unistd.h>

#include <fstream>
#include <utility>

namespace orvo {

namespace {

// os-release(5): the value is one shell word.
std::string unquoted(const std::string& word) {
  std::string text;
  char quote = 0;
  for (std::size_t index = 0; index < word.size(); ++index) {
    const char character = word[index];
    if (quote == 0 && (character == '"' || character == '\'')) {
      quote = character;
    } else if (character == quote) {
      quote = 0;
    } else if (character == '\\' && quote != '\'' && index + 1 < word.size()) {
      text += word[++index];
    } else {
      text += character;
    }
  }
  return text;
}

}  // namespace

LinuxProcessInfo::LinuxProcessInfo(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}

std::int32_t LinuxProcessInfo::processIdentifier() const { return getpid(); }

std::string LinuxProcessInfo::operatingSystemVersionString() const {
  for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
    std::ifstream stream(file);
    if (auto name = prettyName(stream); !name.empty()) return name;
  }
  return "Linux";
}

std::string prettyName(std::istream& osRelease) {
  constexpr std::string_view key = "PRETTY_NAME=";
  std::string name;
  for (std::string line; std::getline(osRelease, line);) {
    if (line.starts_with(key)) name = unquoted(line.substr(key.size()));
  }
  return name;
}

}  // namespace orvo
