// What the process knows of itself and of the system it runs on. Any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvo {

class ProcessInfo {
 public:
  virtual ~ProcessInfo() = default;

  // The program path first.
  virtual std::vector<std::string> arguments() const = 0;
  virtual std::int32_t processIdentifier() const = 0;
  // A text for people, such as "Version 27.0 (Build 26A100)" or "Debian GNU/Linux 12 (bookworm)".
  virtual std::string operatingSystemVersionString() const = 0;
};

}  // namespace orvo
