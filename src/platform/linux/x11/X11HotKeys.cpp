#include "platform/linux/x11/X11HotKeys.h"

#include "platform/linux/x11/KeyboardMap.h"

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

// Where B is on a keyboard that Linux drives, for layouts without a Latin letter: the kernel's
// KEY_B (48) and the offset of X key codes (8).
constexpr xcb_keycode_t placeOfB = 56;

}  // namespace

X11HotKeys::X11HotKeys(MainQueue& queue, const std::string& display)
    : queue_(queue), connection_(XConnection::open(display, "hot keys")), alive_(std::make_shared<int>()) {
  if (!connection_) return;
  events_ = std::make_unique<EventThread>(*connection_, [this](const xcb_generic_event_t& event) { handle(event); });
}

X11HotKeys::~X11HotKeys() {
  events_.reset();
  queue_.cancel(retry_);
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
  const Combination combination{keyCode, modifiers};
  const auto grabs = connection_ ? grabsFor(combination) : std::set<Grab>();
  if (grabs.empty()) return hotKeyParameterErr;
  if (!grab(grabs)) return eventHotKeyExistsErr;
  hotKey = HotKeyRef{++lastReference_};
  hotKeys_.emplace(hotKey, combination);
  grabs_[hotKey] = grabs;
  return hotKeyNoError;
}

bool X11HotKeys::isAvailable(HotKeyRef hotKey) const {
  const auto found = grabs_.find(hotKey);
  return found != grabs_.end() && !found->second.empty();
}

void X11HotKeys::unregisterEventHotKey(HotKeyRef hotKey) {
  if (hotKeys_.erase(hotKey) == 0) return;
  ungrab(grabs_[hotKey]);
  grabs_.erase(hotKey);
}

void X11HotKeys::removeEventHandler(EventHandlerRef handler) { handlers_.erase(handler); }

// On the event thread.
void X11HotKeys::handle(const xcb_generic_event_t& event) {
  switch (eventCode(event)) {
    case XCB_KEY_PRESS:
      // A repeat is a release and a press of the same moment.
      if (reinterpret_cast<const xcb_key_press_event_t&>(event).time != lastRelease_) onMain([this] { press(); });
      break;
    case XCB_KEY_RELEASE:
      lastRelease_ = reinterpret_cast<const xcb_key_release_event_t&>(event).time;
      break;
    case XCB_MAPPING_NOTIFY:
      if (reinterpret_cast<const xcb_mapping_notify_event_t&>(event).request != XCB_MAPPING_POINTER) {
        onMain([this] { grabAgain(); });
      }
      break;
    default:
      break;
  }
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
  for (const auto& [hotKey, combination] : hotKeys_) {
    auto& grabs = grabs_[hotKey];
    const auto wanted = grabsFor(combination);
    if (wanted == grabs) continue;
    const bool had = !grabs.empty();
    ungrab(std::exchange(grabs, {}));
    if (!wanted.empty() && grab(wanted)) {
      grabs = wanted;
      continue;
    }
    if (had) connection_->say("the hot key is not available on the new keyboard layout");
    if (!wanted.empty()) refused = true;
  }
  if (refused) retry_ = queue_.runAfter(grabRetryInterval, [this] { grabAgain(); });
}

std::set<X11HotKeys::Grab> X11HotKeys::grabsFor(const Combination& combination) const {
  const KeyboardMap map(*connection_);
  const auto alt = map.modifierFor({symbolAltLeft, symbolAltRight});
  const auto super = map.modifierFor({symbolSuperLeft, symbolSuperRight});
  unsigned modifiers = 0;
  if ((combination.modifiers & controlKey) != 0) modifiers |= XCB_MOD_MASK_CONTROL;
  if ((combination.modifiers & optionKey) != 0) modifiers |= alt;
  if ((combination.modifiers & commandKey) != 0) modifiers |= super;
  const bool missing = ((combination.modifiers & optionKey) != 0 && alt == 0) ||
                       ((combination.modifiers & commandKey) != 0 && super == 0);
  if (combination.keyCode != keyCodeB || missing) return {};

  auto keys = map.keysFor(symbolB);
  if (keys.empty()) keys.push_back(placeOfB);
  const unsigned numLock = map.modifierFor({symbolNumLock}) & ~modifiers;
  std::set<Grab> grabs;
  for (const auto key : keys) {
    for (const unsigned locks : {0U, unsigned{XCB_MOD_MASK_LOCK}, numLock, XCB_MOD_MASK_LOCK | numLock}) {
      grabs.insert({key, static_cast<std::uint16_t>(modifiers | locks)});
    }
  }
  return grabs;
}

// All of them or none.
bool X11HotKeys::grab(const std::set<Grab>& grabs) {
  auto* x = connection_->get();
  std::vector<xcb_void_cookie_t> cookies;
  cookies.reserve(grabs.size());
  for (const auto& grab : grabs) {
    cookies.push_back(xcb_grab_key_checked(x, 0, connection_->root(), grab.modifiers, grab.key, XCB_GRAB_MODE_ASYNC,
                                           XCB_GRAB_MODE_ASYNC));
  }
  bool all = true;
  for (const auto cookie : cookies) {
    if (owned(xcb_request_check(x, cookie))) all = false;
  }
  if (!connection_->works()) return false;
  if (!all) ungrab(grabs);
  return all;
}

void X11HotKeys::ungrab(const std::set<Grab>& grabs) {
  for (const auto& grab : grabs) {
    xcb_ungrab_key(connection_->get(), grab.key, connection_->root(), grab.modifiers);
  }
  xcb_flush(connection_->get());
}

void X11HotKeys::onMain(std::function<void()> task) {
  queue_.post([alive = std::weak_ptr<int>(alive_), task = std::move(task)] {
    if (!alive.expired()) task();
  });
}

}  // namespace orvo
