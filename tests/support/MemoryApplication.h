// The application object without an event loop: `run` sends the launch message, calls `whileRunning` and
// returns.
#pragma once

#include "platform/Application.h"

#include <functional>

namespace orvo {

class MemoryApplication : public Application {
 public:
  ApplicationDelegate* delegate = nullptr;
  std::function<void()> whileRunning;
  std::optional<ActivationPolicy> policy;
  std::optional<Menu> mainMenu;
  std::optional<EventType> currentEvent;
  int runs = 0;
  int terminations = 0;
  int activations = 0;

  void setDelegate(ApplicationDelegate* newDelegate) override { delegate = newDelegate; }
  void run() override {
    ++runs;
    if (delegate != nullptr) delegate->applicationDidFinishLaunching();
    if (whileRunning) whileRunning();
  }
  void terminate() override {
    if (++terminations == 1 && delegate != nullptr) delegate->applicationWillTerminate();
  }
  void setActivationPolicy(ActivationPolicy newPolicy) override { policy = newPolicy; }
  void setMainMenu(const Menu& menu) override { mainMenu = menu; }
  void activateIgnoringOtherApps() override { ++activations; }
  std::optional<EventType> currentEventType() const override { return currentEvent; }
  NotificationCenter& notificationCenter() override { return center_; }

 private:
  NotificationCenter center_;
};

}  // namespace orvo
