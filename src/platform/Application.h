// The shared application object and its delegate. Main thread only.
#pragma once

#include "platform/EventTap.h"
#include "platform/Menu.h"
#include "platform/NotificationCenter.h"

#include <optional>

namespace orvo {

class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;

  virtual void applicationDidFinishLaunching() = 0;
  virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
  virtual void applicationWillTerminate() = 0;
  virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
};

enum class ActivationPolicy { regular, accessory };

class Application {
 public:
  virtual ~Application() = default;

  // Not owned; absent before it is set.
  virtual void setDelegate(ApplicationDelegate* delegate) = 0;
  // Sends applicationDidFinishLaunching once, then runs until terminate().
  virtual void run() = 0;
  // Sends applicationWillTerminate exactly once, then ends the run loop.
  virtual void terminate() = 0;
  // Ends in the same way, then starts the program again with its settings open, where the system has a use for that.
  virtual void relaunch() { terminate(); }

  virtual void setActivationPolicy(ActivationPolicy policy) = 0;
  virtual void setMainMenu(const Menu& menu) = 0;
  virtual void activateIgnoringOtherApps() = 0;
  // The event that is being handled, if any.
  virtual std::optional<EventType> currentEventType() const = 0;

  // The default center; posts screenParametersChanged.
  virtual NotificationCenter& notificationCenter() = 0;
};

}  // namespace orvo
