// A workspace in which every process is a running application of its own. Owned by a benchmark; any thread.
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/Workspace.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvo {

class Running : public Workspace {
 public:
  std::vector<RunningApplication> runningApplications() const override { return {}; }
  std::optional<RunningApplication> runningApplication(std::int32_t process) const override {
    return RunningApplication{"org.example.app" + std::to_string(process), process, "Example", std::nullopt};
  }
  std::vector<RunningApplication> runningApplications(const std::string&) const override { return {}; }
  std::optional<std::string> applicationPath(const std::string&) const override { return std::nullopt; }
  void openURL(const std::string&, std::function<void()>) override {}
  NotificationCenter& notificationCenter() override { return center_; }

 private:
  NotificationCenter center_;
};

}  // namespace orvo
