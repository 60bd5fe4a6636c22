#include "platform/linux/display/X11HotKeys.h"

#include "platform/linux/display/KeyboardMap.h"

#include <string_view>
#include <utility>
#include <vector>

namespace orvo {

namespace {

// Carbon's numbers.
constexpr std::uint32_t keyCodeB = 11;
constexpr std::uint32_t commandKey = 256;
constexpr std::uint32_t optionKey = 2048;
constexpr std::uint32_t controlKey = 4096;
constexpr std::uint32_t eventHotKeyPressed = 5;

// X key symbols.
constexpr xcb_keysym_t symbolB = 0x62;
constexpr xcb_keysym_t symbolNumLock = 0xFF7F;
constexpr xcb_keysym_t symbolAltLeft = 0xFFE9;
constexpr xcb_keysym_t symbolAltRight = 0xFFEA;
constexpr xcb_keysym_t symbolSuperLeft = 0xFFEB;
constexpr xcb_keysym_t symbolSuperRight = 0xFFEC;

// XKB's name and, where its events tell their kind, the greater of the two that change the map, as its protocol
// numbers them.
constexpr std::string_view keyboardExtension = "XKEYBOARD";
constexpr std::uint8_t mapNotify = 1;

// Where B is on a keyboard that Linux drives, for layouts without a Latin letter: the kernel's
// KEY_B (48) and the offset of X key codes (8).
constexpr xcb_keycode_t placeOfB = 56;

}  // namespace

X11HotKeys::X11HotKeys(MainQueue& queue) : queue_(queue) {
  if (events_.connection() == nullptr) return;
  auto* x = events_.connection()->get();
  const auto cookie =
      xcb_query_extension(x, static_cast<std::uint16_t>(keyboardExtension.size()), keyboardExtension.data());
  const auto reply = owned(xcb_query_extension_reply(x, cookie, nullptr));
  if (reply && reply->present != 0) keyboardEvent_ = reply->first_event;
}

HotKeyStatus X11HotKeys::installEventHandler(EventHandlerFunction function, EventTypeSpec filter, void* userData,
                                             EventHandlerRef& handler) {
  const bool known = filter.eventClass == fourCharacterCode("keyb") && filter.eventKind == eventHotKeyPressed;
  if (!known) return hotKeyParameterErr;
  handler = EventHandlerRef{++lastReference_};
  handlers_[handler] = {function, userData};
  return hotKeyNoError;
}

HotKeyStatus X11HotKeys::registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID, std::uint32_t,
                                             HotKeyRef& hotKey) {
  HotKey wanted{keyCode, modifiers};
  if (events_.connection() != nullptr) wanted.grabs = grabsFor(wanted);
  if (wanted.grabs.empty()) return hotKeyParameterErr;
  if (!grab(wanted.grabs)) return eventHotKeyExistsErr;
  hotKey = HotKeyRef{++lastReference_};
  hotKeys_.emplace(hotKey, std::move(wanted));
  return hotKeyNoError;
}

bool X11HotKeys::isAvailable(HotKeyRef hotKey) const {
  const auto found = hotKeys_.find(hotKey);
  return found != hotKeys_.end() && !found->second.grabs.empty();
}

void X11HotKeys::unregisterEventHotKey(HotKeyRef hotKey) {
  if (const auto known = hotKeys_.extract(hotKey)) ungrab(known.mapped().grabs);
}

void X11HotKeys::removeEventHandler(EventHandlerRef handler) { handlers_.erase(handler); }

bool X11HotKeys::handle(const xcb_generic_event_t& event) {
  if (isPretended(event)) return false;
  const auto code = eventCode(event);
  if (changesMap(event)) grabAgain();
  if (code != XCB_KEY_PRESS && code != XCB_KEY_RELEASE) return false;
  const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);  // of one layout with the release
  if (key.event != events_.connection()->root()) return false;
  if (code == XCB_KEY_RELEASE) {
    isDown_ = false;
    lastRelease_ = key.time;
  } else if (!std::exchange(isDown_, true) && key.time != lastRelease_) {
    press();
  }
  return true;
}

// Who has asked for XKB's events, as Qt has, may be told by those alone.
bool X11HotKeys::changesMap(const xcb_generic_event_t& event) const {
  const auto code = eventCode(event);
  if (code == XCB_MAPPING_NOTIFY)
    return reinterpret_cast<const xcb_mapping_notify_event_t&>(event).request != XCB_MAPPING_POINTER;
  return code == keyboardEvent_ && event.pad0 <= mapNotify;
}

void X11HotKeys::press() {
  if (hotKeys_.empty()) return;
  // A handler may remove handlers.
  const auto handlers = handlers_;
  for (const auto& [reference, handler] : handlers) {
    if (handlers_.contains(reference)) handler.function(handler.userData);
  }
}

void X11HotKeys::grabAgain() {
  queue_.cancel(retry_);
  bool refused = false;
  for (auto& [reference, hotKey] : hotKeys_) {
    auto& grabs = hotKey.grabs;
    const auto wanted = grabsFor(hotKey);
    if (wanted == grabs) continue;
    const bool had = !grabs.empty();
    ungrab(std::exchange(grabs, {}));
    if (!wanted.empty() && grab(wanted)) {
      grabs = wanted;
      continue;
    }
    if (had) events_.connection()->log("the hot key is not available on the new keyboard layout");
    if (!wanted.empty()) refused = true;
  }
  if (refused) retry_ = queue_.runAfter(grabRetryInterval, [this] { grabAgain(); });
}

std::set<X11HotKeys::Grab> X11HotKeys::grabsFor(const HotKey& hotKey) const {
  const KeyboardMap map(*events_.connection());
  const auto alt = map.modifierFor({symbolAltLeft, symbolAltRight});
  const auto super = map.modifierFor({symbolSuperLeft, symbolSuperRight});
  unsigned modifiers = 0;
  if ((hotKey.modifiers & controlKey) != 0) modifiers |= XCB_MOD_MASK_CONTROL;
  if ((hotKey.modifiers & optionKey) != 0) modifiers |= alt;
  if ((hotKey.modifiers & commandKey) != 0) modifiers |= super;
  const bool missing =
      ((hotKey.modifiers & optionKey) != 0 && alt == 0) || ((hotKey.modifiers & commandKey) != 0 && super == 0);
  if (hotKey.keyCode != keyCodeB || missing) return {};

  auto keys = map.keysFor(symbolB);
  if (keys.empty()) keys.push_back(placeOfB);
  const unsigned numLock = map.modifierFor({symbolNumLock}) & ~modifiers;
  std::set<Grab> grabs;
  for (const auto key : keys) {
    for (const unsigned locks : {0U, unsigned{XCB_MOD_MASK_LOCK}, numLock, XCB_MOD_MASK_LOCK | numLock}) {
      grabs.emplace(key, static_cast<std::uint16_t>(modifiers | locks));
    }
  }
  return grabs;
}

// All of them or none.
bool X11HotKeys::grab(const std::set<Grab>& grabs) {
  const auto& connection = *events_.connection();
  auto* x = connection.get();
  std::vector<xcb_void_cookie_t> cookies;
  cookies.reserve(grabs.size());
  for (const auto& [key, modifiers] : grabs) {
    cookies.push_back(
        xcb_grab_key_checked(x, 0, connection.root(), modifiers, key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
  }
  bool all = true;
  for (const auto cookie : cookies) {
    if (owned(xcb_request_check(x, cookie))) all = false;
  }
  if (!connection.works()) return false;
  if (!all) ungrab(grabs);
  return all;
}

void X11HotKeys::ungrab(const std::set<Grab>& grabs) {
  const auto& connection = *events_.connection();
  for (const auto& [key, modifiers] : grabs) xcb_ungrab_key(connection.get(), key, connection.root(), modifiers);
  xcb_flush(connection.get());
}

}  // namespace orvo
