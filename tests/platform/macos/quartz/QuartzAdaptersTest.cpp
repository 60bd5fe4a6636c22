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
#include <gtest/gtest.h>

#include <sstream>

namespace {

enum Kind : CFTypeID { none, text, number, array, element, value };

struct Object {
  Kind kind = none;
  std::string text{};
  std::vector<const void*> members{};  // owned
  CGRect rect{};
  std::int64_t number = 0;
  int references = 1;
};

struct World {
  std::map<const void*, std::unique_ptr<Object>> live{};
  std::vector<std::string> calls{};
  // The one function that fails.
  std::string refused{};
  AXError error = kAXErrorSuccess;
  // An attribute, and what is in it when it is a list.
  Object answer{};
  std::vector<Kind> members{};
  CGEventTapCallBack tapCallback = nullptr;
  EventHandlerUPP handler = nullptr;
  void* info = nullptr;  // of either
} world;

template <typename Reference = CFTypeRef>
Reference make(Object content) {
  auto made = std::make_unique<Object>(std::move(content));
  auto* const address = made.get();
  world.live[address] = std::move(made);
  return reinterpret_cast<Reference>(address);
}

Object& at(const void* reference) {
  static Object gone;
  const auto found = world.live.find(reference);
  EXPECT_NE(found, world.live.end()) << "Used after its end.";
  return found != world.live.end() ? *found->second : gone;
}

// False for what fails.
template <typename... Values>
bool note(const std::string& name, const Values&... values) {
  std::ostringstream line;
  line << name;
  ((line << ' ' << values), ...);
  return world.calls.push_back(line.str()), name != world.refused;
}

template <typename Reference>
const auto fixed = [](std::uintptr_t number) { return reinterpret_cast<Reference>(number); };

// What a window server does with a mouse event; true when the tap let it pass.
bool send(CGEventType type, CGEventRef event) {
  CGEventRef passed = world.tapCallback(nullptr, type, event, world.info);
  EXPECT_TRUE(passed == nullptr || passed == event) << "Another event was passed on.";
  return passed == event;
}

bool click(CGEventType type, double x) {
  const auto event = make<CGEventRef>({.rect = {{x, 10}, {}}});
  const bool passed = send(type, event);
  CFRelease(event);
  return passed;
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
  const auto dropped = world.live.extract(object);
  if (dropped) std::ranges::for_each(dropped.mapped()->members, CFRelease);
}
CFTypeID CFGetTypeID(CFTypeRef object) { return at(object).kind; }
CFTypeID CFArrayGetTypeID() { return array; }
CFTypeID CFStringGetTypeID() { return text; }
CFTypeID AXValueGetTypeID() { return value; }
CFTypeID AXUIElementGetTypeID() { return element; }
CFIndex CFArrayGetCount(CFArrayRef list) { return std::ssize(at(list).members); }
const void* CFArrayGetValueAtIndex(CFArrayRef list, CFIndex index) {
  return at(list).members[static_cast<std::size_t>(index)];
}
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks*, const CFDictionaryValueCallBacks*) {
  const bool prompts = count == 1 && keys[0] == kAXTrustedCheckOptionPrompt;
  return make<CFDictionaryRef>({.number = prompts && values[0] == kCFBooleanTrue ? 1 : 0});
}
CFIndex CFStringGetLength(CFStringRef string) { return std::ssize(at(string).text); }
CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count, CFStringEncoding encoding,
                                    Boolean) {
  const std::string given(bytes, bytes + count);
  if (encoding != kCFStringEncodingUTF8 || given.find('\xFF') != std::string::npos) return nullptr;
  return make<CFStringRef>({text, given});
}
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding, UInt8, Boolean, UInt8* buffer,
                         CFIndex size, CFIndex* used) {
  *used = buffer != nullptr ? std::min(size, range.length) : range.length;
  if (buffer != nullptr) std::copy_n(at(string).text.begin() + range.location, *used, buffer);
  return range.length;
}

Boolean AXIsProcessTrusted() { return note("trusted") ? 1 : 0; }
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) { return note("prompt", at(options).number) ? 1 : 0; }
AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
  return note("element") ? make<AXUIElementRef>({.kind = element, .number = pid}) : nullptr;
}
AXError AXUIElementGetPid(AXUIElementRef of, pid_t* pid) {
  *pid = static_cast<pid_t>(at(of).number);
  return world.error;
}
AXError AXUIElementSetMessagingTimeout(AXUIElementRef of, float time) { return !note("timeout", at(of).number, time); }
AXError AXUIElementCopyAttributeValue(AXUIElementRef of, CFStringRef attribute, CFTypeRef* copied) {
  Object made = at(of).kind == element && at(attribute).text == "AXFrame" ? world.answer : Object{};
  for (const Kind kind : world.members) made.members.push_back(make({.kind = kind, .number = 8}));
  if (made.kind != none) *copied = make(made);
  return world.error;
}
Boolean AXValueGetValue(AXValueRef from, AXValueType type, void* out) {
  if (type != kAXValueTypeCGRect || at(from).number != type) return 0;
  *static_cast<CGRect*>(out) = at(from).rect;
  return 1;
}

CFMachPortRef CGEventTapCreate(CGEventTapLocation tap, CGEventTapPlacement place, CGEventTapOptions options,
                               CGEventMask mask, CGEventTapCallBack callback, void* info) {
  world.tapCallback = callback;
  world.info = info;
  return note("create", tap, place, options, mask) ? make<CFMachPortRef>({}) : nullptr;
}
void CGEventTapEnable(CFMachPortRef tap, bool enable) { note("enable", enable, at(tap).references); }
CFRunLoopSourceRef CFMachPortCreateRunLoopSource(CFAllocatorRef, CFMachPortRef port, CFIndex order) {
  return note("source", order, at(port).references) ? make<CFRunLoopSourceRef>({}) : nullptr;
}
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
  return note("copy") ? make<CGEventRef>({.rect = at(event).rect, .number = at(event).number}) : nullptr;
}
int64_t CGEventGetIntegerValueField(CGEventRef event, CGEventField field) { return field == 42 ? at(event).number : 0; }
void CGEventSetIntegerValueField(CGEventRef event, CGEventField field, int64_t set) {
  note("field", field, set);
  at(event).number = set;
}
// A replay comes back through the tap; the first of a click is its press.
void CGEventPost(CGEventTapLocation tap, CGEventRef event) {
  static CGEventType type = 2;
  type = 3 - type;
  note("post", tap, at(event).rect.origin.x, send(type, event));
}

EventTargetRef GetApplicationEventTarget() { return fixed<EventTargetRef>(6); }
OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount count, const EventTypeSpec* list,
                             void* userData, EventHandlerRef* out) {
  world.handler = handler;
  world.info = userData;
  *out = fixed<EventHandlerRef>(7);
  return note("install", target, count, list->eventClass, list->eventKind) ? 0 : -9860;
}
OSStatus RemoveEventHandler(EventHandlerRef handler) { return note("remove handler", handler) ? 0 : -1; }
OSStatus RegisterEventHotKey(UInt32 key, UInt32 modifiers, EventHotKeyID id, EventTargetRef target, OptionBits options,
                             EventHotKeyRef* out) {
  *out = fixed<EventHotKeyRef>(8);
  return note("register", key, modifiers, id.signature, id.id, target, options) ? 0 : -9878;
}
OSStatus UnregisterEventHotKey(EventHotKeyRef hotKey) { return note("unregister", hotKey) ? 0 : -1; }

}  // extern "C"

namespace orvo {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

class QuartzAdaptersTest : public ::testing::Test {
 protected:
  QuartzAdaptersTest() { world = {}; }
  ~QuartzAdaptersTest() override { EXPECT_EQ(world.live.size(), 0); }
  static std::vector<std::string> takeCalls() { return std::exchange(world.calls, {}); }
  static OSStatus press() { return world.handler(nullptr, nullptr, world.info); }
  AxAccessibility accessibility_;
  CarbonHotKeys hotKeys_;
};

TEST_F(QuartzAdaptersTest, TrustIsAskedWithAndWithoutAPrompt) {
  EXPECT_TRUE(std::as_const(accessibility_).isProcessTrusted());
  EXPECT_TRUE(accessibility_.isProcessTrusted(true));
  world.refused = "prompt";
  EXPECT_FALSE(accessibility_.isProcessTrusted(false));
  EXPECT_THAT(takeCalls(), ElementsAre("trusted", "prompt 1", "prompt 0"));
}

// What an attribute's value is, and the number of the alternative that it becomes; -1 for absent.
TEST_F(QuartzAdaptersTest, EveryKindOfAttributeIsReadAndGivenBack) {
  const Object frame{.kind = value, .rect = {{1, -2}, {3, 4}}, .number = kAXValueTypeCGRect};
  const std::vector<std::tuple<AXError, int, Object, std::vector<Kind>>> cases{{0, 1, {text, "clock é"}, {}},
                                                                               {0, 1, {text}, {}},
                                                                               {0, 2, frame, {}},
                                                                               {0, 0, {value}, {}},
                                                                               {0, 3, {array}, {}},
                                                                               {0, 3, {array}, {element, element}},
                                                                               {0, 0, {array}, {element, text}},
                                                                               {0, 0, {number}, {}},
                                                                               {0, -1, {}, {}},
                                                                               {-25205, -1, {}, {}},
                                                                               {-25204, -1, {text, "half"}, {}}};
  const auto element = accessibility_.applicationElement(7);
  for (std::size_t index = 0; index < cases.size(); ++index) {
    int alternative = 0;
    std::tie(world.error, alternative, world.answer, world.members) = cases[index];
    const auto found = element->copyAttributeValue("AXFrame");
    EXPECT_EQ(found ? static_cast<int>(found->index()) : -1, alternative) << index;
    EXPECT_TRUE(index != 0 || std::get<std::string>(*found) == "clock é");
    EXPECT_TRUE(index != 2 || std::get<Rect>(*found) == (Rect{1, -2, 3, 4}));
  }
  EXPECT_FALSE(element->copyAttributeValue("\xFF"));
}

TEST_F(QuartzAdaptersTest, ChildrenOutliveTheListTheyCameInAndAMissingElementAnswersNothing) {
  world.answer = {array};
  world.members = {element};
  const auto found = accessibility_.applicationElement(7)->copyAttributeValue("AXFrame");
  const auto child = std::get<std::vector<AccessibilityElementRef>>(*found).front();
  EXPECT_EQ(child->processIdentifier(), 8);
  child->setMessagingTimeout(0.5F);
  EXPECT_EQ(takeCalls().back(), "timeout 8 0.5");
  world.error = -25202;
  EXPECT_EQ(child->processIdentifier(), std::nullopt);
  world = {.live = std::move(world.live), .refused = "element"};
  const auto missing = accessibility_.applicationElement(7);
  missing->setMessagingTimeout(1);
  EXPECT_EQ(missing->processIdentifier(), std::nullopt);
  EXPECT_FALSE(missing->copyAttributeValue("AXFrame"));
}

class QuartzEventTapsTest : public QuartzAdaptersTest {
 protected:
  QuartzEventTapsTest() {
    relay_->setSystemFrames({{100, 0, 50, 24}});
    relay_->setConcealed(true);
    relay_->onReveal = [this] { ++reveals_; };
  }
  ~QuartzEventTapsTest() override { relay_->stop(); }

  static constexpr double onClock = 120;
  ManualMainQueue queue_;
  QuartzEventTaps taps_;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
  int reveals_ = 0;
};

TEST_F(QuartzEventTapsTest, ATapIsMadeAddedEnabledAndTakenDownInOrderEvenWithoutASource) {
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

TEST_F(QuartzEventTapsTest, AHeldClickComesBackMarkedAndPassesItsOwnTap) {
  relay_->install();
  EXPECT_TRUE(click(1, 10) && click(2, 10));
  EXPECT_FALSE(click(1, onClock) || click(2, onClock));
  EXPECT_EQ(reveals_, 1);
  takeCalls();
  queue_.advance(180ms);
  const std::string mark = "field 42 " + std::to_string(0x5155494C4C4554);
  EXPECT_THAT(takeCalls(), ElementsAre(mark, "post 1 120 1", mark, "post 1 120 1"));
  world.refused = "copy";
  EXPECT_TRUE(click(1, onClock));
  EXPECT_EQ(reveals_, 1);
}

TEST_F(QuartzEventTapsTest, ADisabledTapIsEnabledAgainWhetherItsNewsHasAnEventOrNone) {
  relay_->install();
  for (const CGEventType type : {0xFFFFFFFEU, 0xFFFFFFFFU}) {
    EXPECT_TRUE(send(type, nullptr));
    EXPECT_EQ(takeCalls().back(), "enable 1 1");
    EXPECT_TRUE(click(type, 0));
    EXPECT_EQ(takeCalls().back(), "enable 1 1");
  }
  EXPECT_EQ(reveals_, 4);
}

TEST_F(QuartzEventTapsTest, ATapMayGoWhileItIsBeingAskedAndADroppedPortTakesItsSourceAlong) {
  relay_->install();
  relay_->onReveal = [this] { relay_->stop(); };
  EXPECT_FALSE(click(1, onClock));
  const EventTapCallback pass = [](EventType, Event* event, void*) { return event; };
  auto port = taps_.create(EventTapLocation::session, EventTapPlacement::headInsert, EventTapOptions::activeFilter, 2,
                           pass, nullptr);
  port->addToMainRunLoop();
  takeCalls();
  port.reset();
  EXPECT_THAT(takeCalls(), ElementsAre("remove 0x5 0x3 1", "invalidate 1"));
}

TEST_F(QuartzAdaptersTest, ThePressReachesTheShortcutAndTheEndGivesBackWhatWasNotRefused) {
  const std::string install = "install 0x6 1 " + std::to_string(0x6B657962) + " 5";
  const std::string registration = "register 11 6400 " + std::to_string(0x5155494C) + " 1 0x6 0";
  int presses = 0;
  auto shortcut = std::make_unique<GlobalShortcut>(hotKeys_);
  EXPECT_TRUE(shortcut->isRegistered());
  EXPECT_EQ(press(), 0);
  shortcut->onPress = [&] { ++presses; };
  EXPECT_EQ(press(), 0);
  EXPECT_EQ(presses, 1);
  shortcut.reset();
  EXPECT_THAT(takeCalls(), ElementsAre(install, registration, "unregister 0x8", "remove handler 0x7"));
  world.refused = "register";
  EXPECT_FALSE(GlobalShortcut(hotKeys_).isRegistered());
  EXPECT_THAT(takeCalls(), ElementsAre(install, registration, "remove handler 0x7"));
  world.refused = "install";
  EXPECT_FALSE(GlobalShortcut(hotKeys_).isRegistered());
  EXPECT_THAT(takeCalls(), ElementsAre(install));
}

TEST_F(QuartzAdaptersTest, AHandlerMayGoWhileItIsBeingCalledAndSeesItsOwnData) {
  std::pair installed{&hotKeys_, EventHandlerRef::none};
  const EventHandlerFunction remove = [](void* data) -> HotKeyStatus {
    const auto& mine = *static_cast<decltype(installed)*>(data);
    return mine.first->removeEventHandler(mine.second), 3;
  };
  ASSERT_EQ(hotKeys_.installEventHandler(remove, {1, 2}, &installed, installed.second), 0);
  EXPECT_EQ(press(), 3);
}

}  // namespace
}  // namespace orvo
