// Global hot keys, in the shape of the Carbon event manager. Main thread only; handlers are called
// there.
#pragma once

#include <cstdint>

namespace orvo {

using HotKeyStatus = std::int32_t;  // zero is success
inline constexpr HotKeyStatus hotKeyNoError = 0;
inline constexpr HotKeyStatus eventNotHandledErr = -9874;

constexpr std::uint32_t fourCharacterCode(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int index = 0; index < 4; ++index) code = (code << 8U) | static_cast<unsigned char>(text[index]);
  return code;
}

struct EventTypeSpec {
  std::uint32_t eventClass;
  std::uint32_t eventKind;
};

struct HotKeyID {
  std::uint32_t signature;
  std::uint32_t id;
};

// References are opaque and none when zero.
enum class EventHandlerRef : std::uintptr_t { none = 0 };
enum class HotKeyRef : std::uintptr_t { none = 0 };

using EventHandlerFunction = HotKeyStatus (*)(void* userData);

class HotKeys {
 public:
  virtual ~HotKeys() = default;

  // Both act on the application's own event target and write the reference only on success.
  virtual HotKeyStatus installEventHandler(EventHandlerFunction function, EventTypeSpec filter, void* userData,
                                           EventHandlerRef& handler) = 0;
  // Virtual key codes and modifier masks are Carbon's. Non-zero when the combination cannot be had.
  virtual HotKeyStatus registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                                           std::uint32_t options, HotKeyRef& hotKey) = 0;
  // Whether a registered hot key can be pressed just now. A system that takes none away again has nothing to say.
  virtual bool isAvailable(HotKeyRef /*hotKey*/) const { return true; }
  virtual void unregisterEventHotKey(HotKeyRef hotKey) = 0;
  virtual void removeEventHandler(EventHandlerRef handler) = 0;
};

}  // namespace orvo
