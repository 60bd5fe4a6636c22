// Hot keys that tests press. Counts what is held, and refuses on demand.
#pragma once

#include "platform/HotKeys.h"

namespace orvo {

class MemoryHotKeys : public HotKeys {
 public:
  HotKeyStatus installStatus = hotKeyNoError;
  HotKeyStatus registerStatus = hotKeyNoError;
  bool available = true;
  // What is held; below zero when more was released than had.
  int handlers = 0;
  int hotKeys = 0;
  EventHandlerFunction function = nullptr;

  // Presses any registered combination; answers the handler's status.
  HotKeyStatus press() { return function(userData_); }

  HotKeyStatus installEventHandler(EventHandlerFunction newFunction, EventTypeSpec, void* userData,
                                   EventHandlerRef& handler) override {
    if (installStatus != hotKeyNoError) return installStatus;
    ++handlers;
    function = newFunction;
    userData_ = userData;
    handler = EventHandlerRef{1};
    return hotKeyNoError;
  }
  HotKeyStatus registerEventHotKey(std::uint32_t, std::uint32_t, HotKeyID, std::uint32_t, HotKeyRef& hotKey) override {
    if (registerStatus != hotKeyNoError) return registerStatus;
    ++hotKeys;
    hotKey = HotKeyRef{1};
    return hotKeyNoError;
  }
  bool isAvailable(HotKeyRef) const override { return available; }
  void unregisterEventHotKey(HotKeyRef) override { --hotKeys; }
  void removeEventHandler(EventHandlerRef) override { --handlers; }

 private:
  void* userData_ = nullptr;
};

}  // namespace orvo
