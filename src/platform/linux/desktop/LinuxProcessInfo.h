// The process and the system it runs on. Owned by main.cpp; constant after construction, any thread.
#pragma once

#include "platform/ProcessInfo.h"

namespace orvo {

class LinuxProcessInfo final : public ProcessInfo {
 public:
  explicit LinuxProcessInfo(std::vector<std::string> arguments);

  std::vector<std::string> arguments() const override { return arguments_; }
  std::int32_t processIdentifier() const override;
  std::string operatingSystemVersionString() const override;

 private:
  const std::vector<std::string> arguments_;
};

}  // namespace orvo
