// Hot keys that tests press. Records what is installed and registered, and refuses on demand.
#pragma once

#include "platform/HotKeys.h"

#include <map>
#include <utility>
#include <vector>

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
    std::uint32_t options;
  };

  HotKeyStatus installStatus = hotKeyNoError;
  HotKeyStatus registerStatus = hotKeyNoError;
  std::map<EventHandlerRef, Handler> handlers;
  std::map<HotKeyRef, HotKey> hotKeys;
  // Releases of references that are not, or no longer, held.
  int wrongReleases = 0;

  // Sends a press to every handler, as if any registered combination had been pressed. Answers the last
  // handler's status.
  HotKeyStatus press() {
    HotKeyStatus status = eventNotHandledErr;
    for (const auto& [ref, handler] : std::map(handlers)) status = handler.function(handler.userData);
    return status;
  }

  HotKeyStatus installEventHandler(EventHandlerFunction function, EventTypeSpec filter, void* userData,
                                   EventHandlerRef& handler) override {
    if (installStatus != hotKeyNoError) return installStatus;
    handler = static_cast<EventHandlerRef>(++last_);
    handlers.emplace(handler, Handler{function, filter, userData});
    return hotKeyNoError;
  }
  HotKeyStatus registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id, std::uint32_t options,
                                   HotKeyRef& hotKey) override {
    if (registerStatus != hotKeyNoError) return registerStatus;
    hotKey = static_cast<HotKeyRef>(++last_);
    hotKeys.emplace(hotKey, HotKey{keyCode, modifiers, id, options});
    return hotKeyNoError;
  }
  void unregisterEventHotKey(HotKeyRef hotKey) override {
    if (hotKeys.erase(hotKey) == 0) ++wrongReleases;
  }
  void removeEventHandler(EventHandlerRef handler) override {
    if (handlers.erase(handler) == 0) ++wrongReleases;
  }

 private:
  std::uintptr_t last_ = 0;
};

}  // namespace orvo
