// The shared workspace. Owned by main.cpp; made on the main thread.
#pragma once

#include "platform/Workspace.h"

#include <memory>

namespace orvo {

class CocoaWorkspace final : public Workspace {
 public:
  CocoaWorkspace();
  ~CocoaWorkspace() override;
  CocoaWorkspace(const CocoaWorkspace&) = delete;
  CocoaWorkspace& operator=(const CocoaWorkspace&) = delete;

  std::vector<RunningApplication> runningApplications() const override;
  std::optional<RunningApplication> runningApplication(std::int32_t processIdentifier) const override;
  std::vector<RunningApplication> runningApplications(const std::string& bundleIdentifier) const override;
  std::optional<std::string> applicationPath(const std::string& bundleIdentifier) const override;
  void openURL(const std::string& url, std::function<void()> failed) override;
  NotificationCenter& notificationCenter() override { return notificationCenter_; }

 private:
  struct Observers;

  NotificationCenter notificationCenter_;
  std::unique_ptr<Observers> observers_;
};

}  // namespace orvo
