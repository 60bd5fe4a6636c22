// A workspace that tests fill; notifications are posted by hand on its center.
#pragma once

#include "platform/Workspace.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <utility>

namespace orvo {

class MemoryWorkspace : public Workspace {
 public:
  // In the system's order.
  std::vector<RunningApplication> running;
  std::map<std::string, std::string> registered;
  std::vector<std::string> openedURLs;

  void launch(const std::string& bundleIdentifier, std::int32_t pid) {
    running.push_back({bundleIdentifier, pid, std::nullopt, std::nullopt});
  }
  void quit(const std::string& bundleIdentifier) {
    std::erase_if(running, [&](const auto& application) { return application.bundleIdentifier == bundleIdentifier; });
  }

  std::vector<RunningApplication> runningApplications() const override { return running; }
  std::optional<RunningApplication> runningApplication(std::int32_t processIdentifier) const override {
    const auto found = matching([&](const auto& each) { return each.processIdentifier == processIdentifier; });
    return found.empty() ? std::nullopt : std::optional(found.front());
  }
  std::vector<RunningApplication> runningApplications(const std::string& bundleIdentifier) const override {
    return matching([&](const auto& each) { return each.bundleIdentifier == bundleIdentifier; });
  }
  std::optional<std::string> applicationPath(const std::string& bundleIdentifier) const override {
    const auto found = registered.find(bundleIdentifier);
    return found == registered.end() ? std::nullopt : std::optional(found->second);
  }
  void openURL(const std::string& url) override { openedURLs.push_back(url); }
  NotificationCenter& notificationCenter() override { return center_; }

 private:
  std::vector<RunningApplication> matching(const std::function<bool(const RunningApplication&)>& wanted) const {
    std::vector<RunningApplication> found;
    std::copy_if(running.begin(), running.end(), std::back_inserter(found), wanted);
    return found;
  }

  NotificationCenter center_;
};

}  // namespace orvo
