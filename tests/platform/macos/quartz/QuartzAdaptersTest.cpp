// The adapters over stand-ins for the C functions that they call, which count references, note what is asked of
// them and refuse what a test names. Each test ends with every reference given back and nothing used after its end.
#include "app/GlobalShortcut.h"
#include "platform/macos/quartz/AxAccessibility.h"
#include "platform/macos/quartz/CarbonHotKeys.h"
#include "platform/macos/quartz/QuartzEventTaps.h"
#include "sensing/SystemControlRelay.h"
#include "support/ManualMainQueue.h"

#include <Carbon/Carbon.h>
#include <gmock/gmock.h>

namespace {

enum Kind : CFTypeID { none, text, number, array, element, value };

struct Object {
  Kind kind = none;
  std::int64_t number = 0;
  std::string text{};
  std::vector<const void*> members{};  // owned
  CGRect rect{};
  int references = 1;
};

struct World {
  int live = 0;  // objects
  std::vector<std::string> calls{};
  std::string refused{};  // the one function that fails
  AXError error = kAXErrorSuccess;
  Object answer{};  // an attribute
  CGEventTapCallBack tapCallback = nullptr;
  EventHandlerUPP handler = nullptr;
  void* info = nullptr;  // of either
} world;

template <typename Reference = CFTypeRef>
Reference make(const Object& content) {
  return ++world.live, reinterpret_cast<Reference>(new Object(content));
}

Object& at(const void* reference) { return *static_cast<Object*>(const_cast<void*>(reference)); }

template <typename Reference>
const auto fixed = [](std::uintptr_t number) { return reinterpret_cast<Reference>(number); };

// False for what fails.
template <typename... Values>
bool note(const std::string& name, const Values&... values) {
  std::ostringstream line;
  line << name;
  ((line << ' ' << values), ...);
  return world.calls.push_back(line.str()), name != world.refused;
}

// What a window server does with a mouse event; true when the tap let it pass.
bool send(CGEventType type, CGEventRef event) {
  CGEventRef passed = world.tapCallback(nullptr, type, event, world.info);
  EXPECT_TRUE(passed == nullptr || passed == event) << "Another event was passed on.";
  return passed == event;
}

bool click(CGEventType type, double x) {
  const auto event = make<CGEventRef>({.rect = {{x, 10}, {}}});
  const bool passed = send(type, event);
  return CFRelease(event), passed;
}

}  // namespace

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFBooleanRef kCFBooleanTrue = fixed<CFBooleanRef>(1);
const CFBooleanRef kCFBooleanFalse = fixed<CFBooleanRef>(2);
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{};
const CFRunLoopMode kCFRunLoopCommonModes = fixed<CFRunLoopMode>(3);
const CFStringRef kAXTrustedCheckOptionPrompt = fixed<CFStringRef>(4);

CFTypeRef CFRetain(CFTypeRef object) { return ++at(object).references, object; }
void CFRelease(CFTypeRef object) {
  if (--at(object).references > 0) return;
  std::ranges::for_each(at(object).members, CFRelease);
  delete &at(object);
  --world.live;
}
CFTypeID CFGetTypeID(CFTypeRef object) { return at(object).kind; }
CFTypeID CFArrayGetTypeID() { return array; }
CFTypeID CFStringGetTypeID() { return text; }
CFTypeID AXValueGetTypeID() { return value; }
CFTypeID AXUIElementGetTypeID() { return element; }
CFIndex CFArrayGetCount(CFArrayRef list) { return std::ssize(at(list).members); }
const void* CFArrayGetValueAtIndex(CFArrayRef list, CFIndex index) { return at(list).members.begin()[index]; }
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks*, const CFDictionaryValueCallBacks*) {
  const bool prompts = count == 1 && *keys == kAXTrustedCheckOptionPrompt && *values == kCFBooleanTrue;
  return make<CFDictionaryRef>({.number = prompts});
}
CFIndex CFStringGetLength(CFStringRef string) { return std::ssize(at(string).text); }
CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count, CFStringEncoding encoding,
                                    Boolean) {
  const bool valid = encoding == kCFStringEncodingUTF8 && std::find(bytes, bytes + count, 0xFF) == bytes + count;
  return valid ? make<CFStringRef>({text, 0, {bytes, bytes + count}}) : nullptr;
}
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding, UInt8, Boolean, UInt8* buffer,
                         CFIndex size, CFIndex* used) {
  if (buffer != nullptr) std::copy_n(at(string).text.begin() + range.location, std::min(size, range.length), buffer);
  return *used = range.length;
}

Boolean AXIsProcessTrusted() { return 1; }
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) { return at(options).number != 0; }
AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
  return note("element") ? make<AXUIElementRef>({element, pid}) : nullptr;
}
AXError AXUIElementGetPid(AXUIElementRef of, pid_t* pid) {
  return *pid = static_cast<pid_t>(at(of).number), world.error;
}
AXError AXUIElementSetMessagingTimeout(AXUIElementRef of, float time) { return !note("timeout", at(of).number, time); }
AXError AXUIElementCopyAttributeValue(AXUIElementRef of, CFStringRef attribute, CFTypeRef* copied) {
  const bool known = at(of).kind == element && at(attribute).text == "AXFrame";
  if (known && world.answer.kind != none) *copied = make(std::exchange(world.answer, {}));
  return world.error;
}
Boolean AXValueGetValue(AXValueRef from, AXValueType type, void* out) {
  if (type != kAXValueTypeCGRect || at(from).number != type) return 0;
  *static_cast<CGRect*>(out) = at(from).rect;
  return 1;
}

CFMachPortRef CGEventTapCreate(CGEventTapLocation tap, CGEventTapPlacement place, CGEventTapOptions options,
                               CGEventMask mask, CGEventTapCallBack callback, void* info) {
  world.tapCallback = callback, world.info = info;
  return note("create", tap, place, options, mask) ? make<CFMachPortRef>({}) : nullptr;
}
void CGEventTapEnable(CFMachPortRef tap, bool enable) { note("enable", enable, at(tap).references); }
CFRunLoopSourceRef CFMachPortCreateRunLoopSource(CFAllocatorRef, CFMachPortRef port, CFIndex order) {
  return note("source", order, at(port).references) ? make<CFRunLoopSourceRef>({}) : nullptr;
}
Boolean CFMachPortIsValid(CFMachPortRef) { return world.refused != "valid"; }
void CFMachPortInvalidate(CFMachPortRef port) { note("invalidate", at(port).references); }
CFRunLoopRef CFRunLoopGetMain() { return fixed<CFRunLoopRef>(5); }
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  note("add", loop, mode, at(source).references);
}
void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  note("remove", loop, mode, at(source).references);
}
CGPoint CGEventGetLocation(CGEventRef event) { return at(event).rect.origin; }
CGEventRef CGEventCreateCopy(CGEventRef event) {
  return note("copy") ? make<CGEventRef>({none, at(event).number, "", {}, at(event).rect}) : nullptr;
}
int64_t CGEventGetIntegerValueField(CGEventRef event, CGEventField field) { return field == 42 ? at(event).number : 0; }
void CGEventSetIntegerValueField(CGEventRef event, CGEventField field, int64_t set) {
  note("field", field, at(event).number = set);
}
// A replay comes back through the tap; the first of a click is its press.
void CGEventPost(CGEventTapLocation tap, CGEventRef event) {
  static CGEventType type = 2;
  note("post", tap, at(event).rect.origin.x, send(type = 3 - type, event));
}

EventTargetRef GetApplicationEventTarget() { return fixed<EventTargetRef>(6); }
OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount count, const EventTypeSpec* list,
                             void* userData, EventHandlerRef* out) {
  world.handler = handler, world.info = userData, *out = fixed<EventHandlerRef>(7);
  return note("install", target, count, list->eventClass, list->eventKind) ? 0 : -9860;
}
OSStatus RemoveEventHandler(EventHandlerRef handler) { return !note("remove handler", handler); }
OSStatus RegisterEventHotKey(UInt32 key, UInt32 modifiers, EventHotKeyID id, EventTargetRef target, OptionBits options,
                             EventHotKeyRef* out) {
  *out = fixed<EventHotKeyRef>(8);
  return note("register", key, modifiers, id.signature, id.id, target, options) ? 0 : -9878;
}
OSStatus UnregisterEventHotKey(EventHotKeyRef hotKey) { return !note("unregister", hotKey); }

}  // extern "C"

namespace orvo {

using namespace ::testing;

class QuartzAdaptersTest : public ::testing::Test {
 protected:
  QuartzAdaptersTest() {
    world = {};
    relay_->setSystemFrames({{100, 0, 50, 24}});
    relay_->setConcealed(true);
  }
  ~QuartzAdaptersTest() override { EXPECT_EQ((relay_->stop(), world.live), 0); }
  static std::vector<std::string> takeCalls() { return std::exchange(world.calls, {}); }

  static constexpr double onClock = 120;
  AxAccessibility accessibility_;
  CarbonHotKeys hotKeys_;
  ManualMainQueue queue_;
  QuartzEventTaps taps_;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
};

TEST_F(QuartzAdaptersTest, AskingForTrustPromptsWhereItShallAndAMissingElementAnswersNothing) {
  EXPECT_TRUE(std::as_const(accessibility_).isProcessTrusted() && accessibility_.isProcessTrusted(true));
  EXPECT_FALSE(accessibility_.isProcessTrusted(false));
  world.refused = "element";
  const auto missing = accessibility_.applicationElement(7);
  missing->setMessagingTimeout(1);
  EXPECT_EQ(missing->processIdentifier(), std::nullopt);
  EXPECT_FALSE(missing->copyAttributeValue("AXFrame"));
}

TEST_F(QuartzAdaptersTest, EveryKindOfAttributeIsReadAndGivenBack) {
  const auto child = [] { return make({element, 8}); };
  const Matcher<std::optional<AttributeValue>> other = Optional(VariantWith<OtherAttributeValue>(_));
  const std::vector<std::tuple<Object, AXError, Matcher<std::optional<AttributeValue>>>> cases{
      {{text, 0, "clock é"}, 0, Optional(VariantWith<std::string>("clock é"))},
      {{value, kAXValueTypeCGRect, "", {}, {{1, -2}, {3, 4}}}, 0, Optional(VariantWith<Rect>(Rect{1, -2, 3, 4}))},
      {{array, 0, "", {child(), make({text})}}, 0, other},
      {{number}, 0, other},
      {{}, 0, Eq(std::nullopt)},
      {{text, 0, "half"}, -25204, Eq(std::nullopt)},
      {{array, 0, "", {child(), child()}}, 0, Optional(VariantWith<std::vector<AccessibilityElementRef>>(SizeIs(2)))}};
  const auto root = accessibility_.applicationElement(7);
  std::optional<AttributeValue> found;
  for (const auto& [answer, error, expected] : cases) {
    world.error = error, world.answer = answer;
    EXPECT_THAT(found = root->copyAttributeValue("AXFrame"), expected) << answer.kind << answer.text;
  }
  EXPECT_FALSE(root->copyAttributeValue("\xFF"));
  // The children outlive the list that they came in.
  const auto last = std::get<3>(*std::exchange(found, {})).back();
  EXPECT_EQ(last->processIdentifier(), 8);
  last->setMessagingTimeout(0.5F);
  EXPECT_EQ(takeCalls().back(), "timeout 8 0.5");
  world.error = -25202;
  EXPECT_EQ(last->processIdentifier(), std::nullopt);
}

TEST_F(QuartzAdaptersTest, ATapIsMadeAddedEnabledAndTakenDownInOrderEvenWithoutASource) {
  for (const char* refused : {"", "source", "create"}) {
    world.refused = refused;
    relay_->install();
    EXPECT_EQ(relay_->isInstalled(), refused != std::string("create"));
    relay_->stop();
  }
  EXPECT_THAT(takeCalls(), ElementsAre("create 1 0 0 30", "source 0 1", "add 0x5 0x3 1", "enable 1 1",
                                       "remove 0x5 0x3 1", "invalidate 1", "create 1 0 0 30", "source 0 1",
                                       "enable 1 1", "invalidate 1", "create 1 0 0 30"));
}

TEST_F(QuartzAdaptersTest, AHeldClickComesBackMarkedAndPassesItsOwnTap) {
  relay_->install();
  EXPECT_TRUE(click(1, 10) && click(2, 10));
  EXPECT_FALSE(click(1, onClock) || click(2, onClock));
  takeCalls();
  queue_.advance(std::chrono::milliseconds(180));
  const std::string mark = "field 42 " + std::to_string(0x5155494C4C4554);
  EXPECT_THAT(takeCalls(), ElementsAre(mark, "post 1 120 1", mark, "post 1 120 1"));
  world.refused = "copy";
  EXPECT_TRUE(click(1, onClock));
  // News of a tap that the system disabled comes with an event or without.
  for (const CGEventType type : {0xFFFFFFFEU, 0xFFFFFFFFU}) {
    takeCalls();
    EXPECT_TRUE(send(type, nullptr) && click(type, 0));
    EXPECT_THAT(takeCalls(), ElementsAre("enable 1 1", "enable 1 1"));
  }
  world.refused = "valid";
  EXPECT_TRUE(send(0xFFFFFFFF, nullptr) && !relay_->isInstalled());
  world.refused = "";
  relay_->install();
  relay_->onReveal = [this] { relay_->stop(); };
  EXPECT_FALSE(click(1, onClock)) << "a tap that goes while it is being asked";
}

TEST_F(QuartzAdaptersTest, ThePressReachesTheShortcutAndTheEndGivesBackWhatWasNotRefused) {
  const std::string install = "install 0x6 1 " + std::to_string(0x6B657962) + " 5";
  const std::string registration = "register 11 6400 " + std::to_string(0x5155494C) + " 1 0x6 0";
  for (const char* refused : {"", "register", "install"}) {
    world.refused = refused;
    GlobalShortcut shortcut(hotKeys_);
    shortcut.onPress = [] { note("pressed"); };
    EXPECT_EQ(shortcut.isRegistered() ? world.handler(nullptr, nullptr, world.info) : 0, 0);
  }
  EXPECT_THAT(takeCalls(), ElementsAre(install, registration, "pressed", "unregister 0x8", "remove handler 0x7",
                                       install, registration, "remove handler 0x7", install));
}

}  // namespace orvo
