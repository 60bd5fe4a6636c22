// Hot keys that tests press. Records what is installed and registered, and refuses on demand.
#pragma once

#include "platform/HotKeys.h"

#include <map>

namespace orvo {

class MemoryHotKeys : public HotKeys {
 public:
  struct Handler {
    EventHandlerFunction function;
    EventTypeSpec filter;
    void* userData;
  };
  struct HotKey {
    std::uint32_t keyCode;
    std::uint32_t modifiers;
    HotKeyID id;
  };

  HotKeyStatus installStatus = hotKeyNoError;
  HotKeyStatus registerStatus = hotKeyNoError;
  std::map<EventHandlerRef, Handler> handlers;
  std::map<HotKeyRef, HotKey> hotKeys;
  // Releases of references that are not, or no longer, held.
  int wrongReleases = 0;

  // Presses any registered combination; answers the handler's status.
  HotKeyStatus press() {
    const Handler handler = handlers.begin()->second;
    return handler.function(handler.userData);
  }

  HotKeyStatus installEventHandler(EventHandlerFunction function, EventTypeSpec filter, void* userData,
                                   EventHandlerRef& handler) override {
    if (installStatus == hotKeyNoError) {
      handler = static_cast<EventHandlerRef>(++last_);
      handlers[handler] = {function, filter, userData};
    }
    return installStatus;
  }
  HotKeyStatus registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id, std::uint32_t,
                                   HotKeyRef& hotKey) override {
    if (registerStatus == hotKeyNoError) {
      hotKey = static_cast<HotKeyRef>(++last_);
      hotKeys[hotKey] = {keyCode, modifiers, id};
    }
    return registerStatus;
  }
  void unregisterEventHotKey(HotKeyRef hotKey) override { wrongReleases += hotKeys.erase(hotKey) == 0 ? 1 : 0; }
  void removeEventHandler(EventHandlerRef handler) override { wrongReleases += handlers.erase(handler) == 0 ? 1 : 0; }

 private:
  std::uintptr_t last_ = 0;
};

}  // namespace orvo
