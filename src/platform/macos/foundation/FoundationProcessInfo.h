// What the process knows of itself and of the system. Owned by main.cpp; any thread.
#pragma once

#include "platform/ProcessInfo.h"

namespace orvo {

class FoundationProcessInfo final : public ProcessInfo {
 public:
  std::vector<std::string> arguments() const override;
  std::int32_t processIdentifier() const override;
  std::string operatingSystemVersionString() const override;
};

}  // namespace orvo
