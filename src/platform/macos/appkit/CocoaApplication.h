// The shared application. Owned by main.cpp; main thread only. The system ends the process inside
// terminate(), after the delegate has heard of it; run() then never returns.
#pragma once

#include "platform/Application.h"

#include <memory>

namespace orvo {

class CocoaApplication final : public Application {
 public:
  CocoaApplication();
  ~CocoaApplication() override;
  CocoaApplication(const CocoaApplication&) = delete;
  CocoaApplication& operator=(const CocoaApplication&) = delete;

  void setDelegate(ApplicationDelegate* delegate) override;
  void run() override;
  void terminate() override;
  void setActivationPolicy(ActivationPolicy policy) override;
  void setMainMenu(const Menu& menu) override;
  void activateIgnoringOtherApps() override;
  std::optional<EventType> currentEventType() const override;
  NotificationCenter& notificationCenter() override { return notificationCenter_; }

 private:
  struct Held;

  NotificationCenter notificationCenter_;
  std::unique_ptr<Held> held_;
};

}  // namespace orvo
