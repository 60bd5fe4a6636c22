#include "app/GlobalShortcut.h"

namespace orvo {

namespace {

constexpr std::uint32_t keyB = 11;  // kVK_ANSI_B
constexpr std::uint32_t commandKey = 256;
constexpr std::uint32_t optionKey = 2048;
constexpr std::uint32_t controlKey = 4096;
constexpr HotKeyID hotKeyID{fourCharacterCode("QUIL"), 1};
constexpr EventTypeSpec hotKeyPressed{fourCharacterCode("keyb"), 5};

}  // namespace

GlobalShortcut::GlobalShortcut(HotKeys& hotKeys) : hotKeys_(hotKeys) {
  if (hotKeys_.installEventHandler(pressed, hotKeyPressed, this, handler_) != hotKeyNoError) return;
  const HotKeyStatus status =
      hotKeys_.registerEventHotKey(keyB, controlKey + optionKey + commandKey, hotKeyID, 0, hotKey_);
  isRegistered_ = status == hotKeyNoError;
}

GlobalShortcut::~GlobalShortcut() {
  if (hotKey_ != HotKeyRef::none) hotKeys_.unregisterEventHotKey(hotKey_);
  if (handler_ != EventHandlerRef::none) hotKeys_.removeEventHandler(handler_);
}

HotKeyStatus GlobalShortcut::pressed(void* userData) {
  if (userData == nullptr) return eventNotHandledErr;
  const auto& shortcut = *static_cast<const GlobalShortcut*>(userData);
  if (shortcut.onPress) shortcut.onPress();
  return hotKeyNoError;
}

}  // namespace orvo
