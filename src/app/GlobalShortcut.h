// The one system-wide keyboard shortcut, Control-Option-Command-B. Owned by OrvoModel; main thread only.
// It is registered from construction to destruction, or never.
#pragma once

#include "platform/HotKeys.h"

#include <functional>

namespace orvo {

class GlobalShortcut {
 public:
  explicit GlobalShortcut(HotKeys& hotKeys);
  GlobalShortcut(const GlobalShortcut&) = delete;
  GlobalShortcut& operator=(const GlobalShortcut&) = delete;
  ~GlobalShortcut();

  // False when the combination cannot be had, which is not tried again, and while the system has taken it away.
  bool isRegistered() const { return isRegistered_ && hotKeys_.isAvailable(hotKey_); }

  // Called on every press; absent until the owner sets it.
  std::function<void()> onPress;

 private:
  static HotKeyStatus pressed(void* userData);

  HotKeys& hotKeys_;
  HotKeyRef hotKey_ = HotKeyRef::none;
  EventHandlerRef handler_ = EventHandlerRef::none;
  bool isRegistered_ = false;
};

}  // namespace orvo
