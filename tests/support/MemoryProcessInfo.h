#pragma once

#include "platform/ProcessInfo.h"

namespace orvo {

class MemoryProcessInfo : public ProcessInfo {
 public:
  std::vector<std::string> argumentList{"/Applications/Orvo.app/bin/orvo"};
  std::int32_t pid = 1000;
  std::string systemVersion = "Version 27.0 (Build 26A100)";

  std::vector<std::string> arguments() const override { return argumentList; }
  std::int32_t processIdentifier() const override { return pid; }
  std::string operatingSystemVersionString() const override { return systemVersion; }
};

}  // namespace orvo
