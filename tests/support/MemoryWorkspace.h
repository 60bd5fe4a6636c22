// A workspace that tests fill; notifications are posted by hand on its center.
#pragma once

#include "platform/Workspace.h"

#include <map>

namespace orvo {

class MemoryWorkspace : public Workspace {
 public:
  // In the system's order.
  std::vector<RunningApplication> running;
  std::map<std::string, std::string> registered;
  std::vector<std::string> openedURLs;
  bool opensNothing = false;

  void launch(const std::string& bundleIdentifier, std::int32_t pid) {
    running.push_back({bundleIdentifier, pid, std::nullopt, std::nullopt});
  }
  void quit(const std::string& bundleIdentifier) {
    std::erase_if(running, [&](const auto& each) { return each.bundleIdentifier == bundleIdentifier; });
  }

  std::vector<RunningApplication> runningApplications() const override { return running; }
  std::optional<RunningApplication> runningApplication(std::int32_t processIdentifier) const override {
    for (const RunningApplication& each : running) {
      if (each.processIdentifier == processIdentifier) return each;
    }
    return std::nullopt;
  }
  std::vector<RunningApplication> runningApplications(const std::string& bundleIdentifier) const override {
    std::vector<RunningApplication> found = running;
    std::erase_if(found, [&](const auto& each) { return each.bundleIdentifier != bundleIdentifier; });
    return found;
  }
  std::optional<std::string> applicationPath(const std::string& bundleIdentifier) const override {
    const auto found = registered.find(bundleIdentifier);
    return found == registered.end() ? std::nullopt : std::optional(found->second);
  }
  void openURL(const std::string& url, std::function<void()> failed) override {
    openedURLs.push_back(url);
    if (opensNothing && failed) failed();
  }
  NotificationCenter& notificationCenter() override { return center_; }

 private:
  NotificationCenter center_;
};

}  // namespace orvo
