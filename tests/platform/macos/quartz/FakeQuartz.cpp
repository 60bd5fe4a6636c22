#include "platform/macos/quartz/FakeQuartz.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

using orvo::fake::Kind;
using orvo::fake::Object;

namespace orvo::fake {

World& world() {
  static World only;
  return only;
}

Object::Object(Kind made) : kind(made) { world().live.insert(this); }
Object::~Object() {
  world().live.erase(this);
  for (Object* member : members) CFRelease(member);
}

Object* text(const std::string& utf8) {
  auto* made = new Object(Kind::text);
  made->text = utf8;
  return made;
}

Object* rectangle(CGRect rect) {
  auto* made = new Object(Kind::value);
  made->rect = rect;
  return made;
}

Object* array(std::vector<Object*> members) {
  auto* made = new Object(Kind::array);
  made->members = std::move(members);
  return made;
}

namespace {

// Null for what is not there any more.
Object* find(const void* reference, Kind kind) {
  auto* object = static_cast<Object*>(const_cast<void*>(reference));
  if (world().live.contains(object) && object->kind == kind) return object;
  ++world().misuses;
  return nullptr;
}

template <typename... Values>
void note(const char* name, const Values&... values) {
  std::ostringstream line;
  line << name;
  ((line << ' ' << values), ...);
  world().calls.push_back(line.str());
}

template <typename Reference>
Reference as(Object* object) {
  return reinterpret_cast<Reference>(object);
}

bool send(CGEventType type, Object* event) {
  World& all = world();
  const auto reference = as<CGEventRef>(event);
  if (!all.sourceAdded || !all.tapEnabled) return true;
  CGEventRef passed = all.tapCallback(nullptr, type, reference, all.tapInfo);
  EXPECT_TRUE(passed == nullptr || passed == reference) << "Another event was passed on.";
  return passed == reference;
}

}  // namespace

bool click(CGEventType type, CGPoint location) {
  auto* event = new Object(Kind::event);
  event->location = location;
  const bool passed = send(type, event);
  CFRelease(event);
  return passed;
}

bool disableTap(CGEventType type, bool withEvent) {
  auto* event = withEvent ? new Object(Kind::event) : nullptr;
  const bool same = send(type, event);
  world().tapEnabled = world().calls.back() == "enable 1";
  if (event != nullptr) CFRelease(event);
  return same;
}

}  // namespace orvo::fake

using namespace orvo::fake;

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFBooleanRef kCFBooleanTrue = reinterpret_cast<CFBooleanRef>(1);
const CFBooleanRef kCFBooleanFalse = reinterpret_cast<CFBooleanRef>(2);
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{};
const CFRunLoopMode kCFRunLoopCommonModes = reinterpret_cast<CFRunLoopMode>(3);
const CFStringRef kAXTrustedCheckOptionPrompt = reinterpret_cast<CFStringRef>(4);

CFTypeRef CFRetain(CFTypeRef object) {
  ++static_cast<Object*>(const_cast<void*>(object))->references;
  return object;
}
void CFRelease(CFTypeRef reference) {
  if (!world().live.contains(reference)) {
    ++world().misuses;
    return;
  }
  auto* object = static_cast<Object*>(const_cast<void*>(reference));
  if (--object->references == 0) delete object;
}
CFTypeID CFGetTypeID(CFTypeRef object) {
  return static_cast<CFTypeID>(static_cast<Object*>(const_cast<void*>(object))->kind);
}
CFTypeID CFArrayGetTypeID() { return static_cast<CFTypeID>(Kind::array); }
CFTypeID CFStringGetTypeID() { return static_cast<CFTypeID>(Kind::text); }
CFTypeID AXValueGetTypeID() { return static_cast<CFTypeID>(Kind::value); }
CFTypeID AXUIElementGetTypeID() { return static_cast<CFTypeID>(Kind::element); }

CFIndex CFArrayGetCount(CFArrayRef array) { return static_cast<CFIndex>(find(array, Kind::array)->members.size()); }
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  return find(array, Kind::array)->members[static_cast<std::size_t>(index)];
}
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks*, const CFDictionaryValueCallBacks*) {
  auto* made = new Object(Kind::dictionary);
  if (count == 1 && keys[0] == kAXTrustedCheckOptionPrompt) made->unpacks = values[0] == kCFBooleanTrue;
  return as<CFDictionaryRef>(made);
}
CFIndex CFStringGetLength(CFStringRef string) { return static_cast<CFIndex>(find(string, Kind::text)->text.size()); }
CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count, CFStringEncoding encoding,
                                    Boolean) {
  const std::string given(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(count));
  if (encoding != kCFStringEncodingUTF8 || given.find('\xFF') != std::string::npos) return nullptr;
  return as<CFStringRef>(text(given));
}
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding, UInt8, Boolean, UInt8* buffer,
                         CFIndex size, CFIndex* used) {
  const std::string& whole = find(string, Kind::text)->text;
  *used = std::min(range.length, buffer != nullptr ? size : range.length);
  if (buffer != nullptr) std::copy_n(whole.begin() + range.location, *used, buffer);
  return range.length;
}

Boolean AXIsProcessTrusted() { return world().trusted; }
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) {
  world().prompts.push_back(find(options, Kind::dictionary)->unpacks);
  return world().trusted;
}
AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
  world().process = pid;
  return world().makesElements ? as<AXUIElementRef>(new Object(Kind::element)) : nullptr;
}
AXError AXUIElementGetPid(AXUIElementRef element, pid_t* pid) {
  if (find(element, Kind::element) != nullptr) *pid = world().process;
  return world().error;
}
AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float seconds) {
  if (find(element, Kind::element) != nullptr) world().timeout = seconds;
  return world().error;
}
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute, CFTypeRef* value) {
  if (find(element, Kind::element) != nullptr) *value = world().attribute(find(attribute, Kind::text)->text);
  return world().error;
}
Boolean AXValueGetValue(AXValueRef reference, AXValueType type, void* out) {
  const Object& value = *find(reference, Kind::value);
  if (type == kAXValueTypeCGRect && value.unpacks) *static_cast<CGRect*>(out) = value.rect;
  return type == kAXValueTypeCGRect && value.unpacks;
}

CFMachPortRef CGEventTapCreate(CGEventTapLocation tap, CGEventTapPlacement place, CGEventTapOptions options,
                               CGEventMask mask, CGEventTapCallBack callback, void* info) {
  note("create", tap, place, options, mask);
  if (!world().makesTap) return nullptr;
  world().tapCallback = callback;
  world().tapInfo = info;
  return as<CFMachPortRef>(new Object(Kind::port));
}
void CGEventTapEnable(CFMachPortRef tap, bool enable) {
  note("enable", enable);
  world().tapEnabled = find(tap, Kind::port) != nullptr && enable;
}
CFRunLoopSourceRef CFMachPortCreateRunLoopSource(CFAllocatorRef, CFMachPortRef port, CFIndex order) {
  note("source", order);
  return find(port, Kind::port) != nullptr && world().makesSource ? as<CFRunLoopSourceRef>(new Object(Kind::source))
                                                                  : nullptr;
}
void CFMachPortInvalidate(CFMachPortRef port) {
  note("invalidate");
  if (find(port, Kind::port) != nullptr) world().tapEnabled = false;
}
CFRunLoopRef CFRunLoopGetMain() { return reinterpret_cast<CFRunLoopRef>(5); }
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  note("add", loop == CFRunLoopGetMain() && mode == kCFRunLoopCommonModes);
  world().sourceAdded = find(source, Kind::source) != nullptr;
}
void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  note("remove", loop == CFRunLoopGetMain() && mode == kCFRunLoopCommonModes);
  if (find(source, Kind::source) != nullptr) world().sourceAdded = false;
}
CGPoint CGEventGetLocation(CGEventRef event) { return find(event, Kind::event)->location; }
CGEventRef CGEventCreateCopy(CGEventRef event) {
  const Object& original = *find(event, Kind::event);
  if (!world().makesCopies) return nullptr;
  auto* copy = new Object(Kind::event);
  copy->location = original.location;
  copy->userData = original.userData;
  return as<CGEventRef>(copy);
}
int64_t CGEventGetIntegerValueField(CGEventRef event, CGEventField field) {
  const Object* found = find(event, Kind::event);
  return found != nullptr && field == 42 ? found->userData : 0;
}
void CGEventSetIntegerValueField(CGEventRef event, CGEventField field, int64_t value) {
  note("field", field, value);
  find(event, Kind::event)->userData = value;
}
void CGEventPost(CGEventTapLocation tap, CGEventRef event) {
  Object* posted = find(event, Kind::event);
  note("post", tap, posted->location.x);
  // The first of a click is its press.
  const CGEventType type = world().passedReplays.size() % 2 == 0 ? 1 : 2;
  const int before = posted->references;
  if (send(type, posted)) world().passedReplays.push_back(type);
  EXPECT_EQ(posted->references, before);
}

EventTargetRef GetApplicationEventTarget() { return reinterpret_cast<EventTargetRef>(6); }
OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount count, const EventTypeSpec* list,
                             void* userData, EventHandlerRef* outRef) {
  note("install", target == GetApplicationEventTarget(), count, list->eventClass, list->eventKind);
  if (world().installStatus != 0) return world().installStatus;
  world().handler = handler;
  world().handlerData = userData;
  *outRef = reinterpret_cast<EventHandlerRef>(7);
  return 0;
}
OSStatus RemoveEventHandler(EventHandlerRef handler) {
  note("removeHandler", reinterpret_cast<std::uintptr_t>(handler));
  return 0;
}
OSStatus RegisterEventHotKey(UInt32 key, UInt32 modifiers, EventHotKeyID id, EventTargetRef target, OptionBits options,
                             EventHotKeyRef* outRef) {
  note("register", key, modifiers, id.signature, id.id, target == GetApplicationEventTarget(), options);
  *outRef = reinterpret_cast<EventHotKeyRef>(8);
  return world().registerStatus;
}
OSStatus UnregisterEventHotKey(EventHotKeyRef hotKey) {
  note("unregister", reinterpret_cast<std::uintptr_t>(hotKey));
  return 0;
}

}  // extern "C"
