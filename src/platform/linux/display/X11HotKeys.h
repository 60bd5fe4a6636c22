// Global hot keys as passive key grabs on the root window, whichever lock keys are on. Owned by
// main.cpp, made after the application object; main thread only.
#pragma once

#include "platform/HotKeys.h"
#include "platform/MainQueue.h"
#include "platform/linux/display/XEvents.h"

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace orvo {

// Another client holds the combination, by Carbon's number.
inline constexpr HotKeyStatus eventHotKeyExistsErr = -9878;
// Any other reason for which a handler or a hot key cannot be had, by Carbon's number.
inline constexpr HotKeyStatus hotKeyParameterErr = -50;
// How often a combination is asked for again that somebody else holds on a changed keyboard layout.
inline constexpr std::chrono::seconds grabRetryInterval{5};

class X11HotKeys : public HotKeys {
 public:
  // Without an X server every registration fails.
  explicit X11HotKeys(MainQueue& queue);
  ~X11HotKeys() override { queue_.cancel(retry_); }
  X11HotKeys(const X11HotKeys&) = delete;
  X11HotKeys& operator=(const X11HotKeys&) = delete;

  // Hot key presses are the only events there are.
  HotKeyStatus installEventHandler(EventHandlerFunction function, EventTypeSpec filter, void* userData,
                                   EventHandlerRef& handler) override;
  // Knows the key code of B, and Control, Option (Alt) and Command (Super). A key that repeats while
  // it is held is one press.
  HotKeyStatus registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id, std::uint32_t options,
                                   HotKeyRef& hotKey) override;
  bool isAvailable(HotKeyRef hotKey) const override;
  void unregisterEventHotKey(HotKeyRef hotKey) override;
  void removeEventHandler(EventHandlerRef handler) override;

 private:
  using Grab = std::pair<xcb_keycode_t, std::uint16_t>;  // a key, and the modifiers that go with it
  struct HotKey {
    std::uint32_t keyCode;
    std::uint32_t modifiers;
    std::set<Grab> grabs{};  // empty for one that the layout has not or another holds
  };
  struct Handler {
    EventHandlerFunction function;
    void* userData;
  };

  bool handle(const xcb_generic_event_t& event);
  bool changesMap(const xcb_generic_event_t& event) const;
  void press();
  void grabAgain();
  std::set<Grab> grabsFor(const HotKey& hotKey) const;
  bool grab(const std::set<Grab>& grabs);
  void ungrab(const std::set<Grab>& grabs);

  MainQueue& queue_;
  XEvents events_{[this](const xcb_generic_event_t& event) { return handle(event); }};
  std::optional<std::uint8_t> keyboardEvent_;  // the number of XKB's events; absent without them
  std::map<EventHandlerRef, Handler> handlers_;
  std::map<HotKeyRef, HotKey> hotKeys_;
  MainQueue::Handle retry_ = MainQueue::Handle::none;
  std::uintptr_t lastReference_ = 0;
  bool isDown_ = false;
  xcb_timestamp_t lastRelease_ = 0;
};

}  // namespace orvo
