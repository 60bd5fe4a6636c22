// Global hot keys of the Carbon event manager. Owned by main.cpp; main thread only.
#pragma once

#include "platform/HotKeys.h"

#include <map>
#include <memory>

namespace orvo {

class CarbonHotKeys final : public HotKeys {
 public:
  CarbonHotKeys();
  ~CarbonHotKeys() override;
  CarbonHotKeys(const CarbonHotKeys&) = delete;
  CarbonHotKeys& operator=(const CarbonHotKeys&) = delete;

  HotKeyStatus installEventHandler(EventHandlerFunction function, EventTypeSpec filter, void* userData,
                                   EventHandlerRef& handler) override;
  HotKeyStatus registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id, std::uint32_t options,
                                   HotKeyRef& hotKey) override;
  void unregisterEventHotKey(HotKeyRef hotKey) override;
  void removeEventHandler(EventHandlerRef handler) override;

  // Whom a handler calls.
  struct Receiver;

 private:
  std::map<EventHandlerRef, std::unique_ptr<Receiver>> receivers_;
};

}  // namespace orvo
