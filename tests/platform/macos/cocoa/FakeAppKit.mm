#include "platform/macos/cocoa/FakeAppKit.h"

#include "platform/macos/foundation/NsText.h"
#include "platform/macos/foundation/Retained.h"

#import <AppKit/AppKit.h>
#import <ServiceManagement/ServiceManagement.h>

#include <objc/runtime.h>

#include <algorithm>
#include <map>
#include <sstream>

using orvo::nsText;
using orvo::textOf;
using orvo::fake::appKit;

namespace {

// The old runtime lets no class have variables that its interface does not list.
struct Fields {
  std::map<std::string, orvo::Retained<id>> kept;
  std::map<std::string, id> loose;  // what AppKit does not keep either
  SEL action = nullptr;
  unsigned long long mask = 0;
  bool enabled = true;  // of a menu: enables its items by itself
  NSEventType type = NSEventTypeLeftMouseUp;
  std::vector<orvo::Retained<NSMenuItem*>> items;
};
auto& fields = *new std::map<const void*, Fields>;  // outlives the program's end, which frees objects too

// What is freed with the fields may look its own up.
void forget(id owner) {
  if ([owner isKindOfClass:[NSStatusItem class]]) appKit().calls.emplace_back("gone");
  const auto dropped = fields.extract(owner);
}

void keep(id owner, const char* name, id value) { fields[owner].kept[name] = orvo::Retained<id>::retaining(value); }
id kept(id owner, const char* name) { return fields[owner].kept[name].get(); }

std::string shown(id value) {
  if (value == nil || [value isKindOfClass:[NSString class]]) return textOf(value).value_or("nil");
  if ([value isKindOfClass:[NSURL class]]) return textOf([value absoluteString]).value_or("");
  return fields[value].kept.contains("symbol") ? shown(kept(value, "symbol")) : "*";
}

template <typename Value>
Value argument(NSInvocation* invocation, NSInteger index) {
  Value value{};
  [invocation getArgument:&value atIndex:index];
  return value;
}

// Objects are kept under the name of the property that a message sets.
void describe(std::ostringstream& line, id owner, NSInvocation* invocation, NSInteger index) {
  std::string name = textOf(NSStringFromSelector([invocation selector])).value_or("");
  switch ([[invocation methodSignature] getArgumentTypeAtIndex:static_cast<NSUInteger>(index)][0]) {
    case '@': {
      id const value = argument<id>(invocation, index);
      line << ' ' << shown(value);
      if (!name.starts_with("set")) return;
      name = static_cast<char>(std::tolower(name[3])) + name.substr(4, name.size() - 5);
      if (name == "target" || name == "delegate") return void(fields[owner].loose[name] = value);
      return keep(owner, name.c_str(), value);
    }
    case ':':
      fields[owner].action = argument<SEL>(invocation, index);
      return void(line << ' ' << sel_getName(fields[owner].action));
    case 'C':
      fields[owner].enabled = argument<BOOL>(invocation, index) == YES;
      return void(line << ' ' << fields[owner].enabled);
    case 'd':
      return void(line << ' ' << argument<double>(invocation, index));
    default:
      fields[owner].mask = argument<unsigned long long>(invocation, index);
      line << ' ' << fields[owner].mask;
  }
}

// GNUstep itself uses some names without types, all of them questions for an object.
NSMethodSignature* signatureOf(SEL selector) {
  const char* const types = sel_getTypeEncoding(selector);
  return [NSMethodSignature signatureWithObjCTypes:types != nullptr ? types : "@@:"];
}

// Whatever a stand-in does not do itself: notes the message and answers what was kept under its name; a
// class answers its one instance.
void forward(id owner, NSInvocation* invocation) {
  const char* const name = sel_getName([invocation selector]);
  std::ostringstream line;
  line << name;
  const auto count = static_cast<NSInteger>([[invocation methodSignature] numberOfArguments]);
  for (NSInteger index = 2; index < count; ++index) describe(line, owner, invocation, index);
  const bool asks = [[invocation methodSignature] methodReturnType][0] == '@';
  const bool isMenu = [owner isKindOfClass:[NSMenu class]] || [owner isKindOfClass:[NSMenuItem class]];
  if (!asks && !isMenu) appKit().calls.push_back(line.str());
  if (!asks) return;
  if (class_isMetaClass(object_getClass(owner)) && kept(owner, name) == nil) keep(owner, name, [owner new]);
  id answer = kept(owner, name);
  [invocation setReturnValue:&answer];
}

void note(const std::string& line) { appKit().calls.push_back(line); }

NSStatusBarButton* button = nil;

void send(id sender) { [fields[sender].loose["target"] performSelector:fields[sender].action withObject:sender]; }
id delegate() {
  @autoreleasepool {
    return fields[[NSApplication sharedApplication]].loose["delegate"];
  }
}

void whileHandling(NSEventType type, void (^handler)(void)) {
  @autoreleasepool {
    NSEvent* const event = [[NSEvent new] autorelease];
    fields[event].type = type;
    keep([NSApplication sharedApplication], "currentEvent", event);
    handler();
    keep([NSApplication sharedApplication], "currentEvent", nil);
  }
}

std::vector<std::string> lines(NSMenu* of) {
  std::vector<std::string> all;
  for (const auto& each : fields[of].items) {
    NSMenuItem* const item = each.get();
    const std::string key = shown(kept(item, "key"));
    all.push_back(shown(kept(item, "title")) + (key.empty() ? "" : ' ' + key) + (fields[item].enabled ? "" : " off"));
    if (NSMenu* const inner = kept(item, "submenu")) {
      all.push_back("[" + shown(kept(inner, "title")));
      for (const std::string& line : lines(inner)) all.push_back(line);
    }
  }
  return all;
}

bool choose(NSMenu* in, const char* field, const std::string& value) {
  for (const auto& each : fields[in].items) {
    NSMenuItem* const item = each.get();
    if (shown(kept(item, field)) == value) return send(item), true;
    if (NSMenu* const inner = kept(item, "submenu"); inner != nil && choose(inner, field, value)) return true;
  }
  return false;
}

NSArray* applications() {
  NSMutableArray* const all = [NSMutableArray array];
  for (const auto& running : appKit().running) {
    NSRunningApplication* const made = [[NSRunningApplication new] autorelease];
    if (running.bundleIdentifier) keep(made, "bundleIdentifier", nsText(*running.bundleIdentifier));
    if (running.localizedName) keep(made, "localizedName", nsText(*running.localizedName));
    if (running.bundlePath) keep(made, "bundleURL", [NSURL fileURLWithPath:nsText(*running.bundlePath)]);
    fields[made].mask = static_cast<unsigned long long>(running.processIdentifier);
    [all addObject:made];
  }
  return all;
}

// Turns the main run loop until what was posted to the main operation queue has run.
void turn() {
  NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:10];
  while ([[[NSOperationQueue mainQueue] operations] count] > 0 && [limit timeIntervalSinceNow] > 0) {
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.01]];
  }
}

}  // namespace

// clang-format off
#define ORVO_SIGNATURE(sign) \
  sign (NSMethodSignature*)methodSignatureForSelector:(SEL)selector { return signatureOf(selector); } \
  sign (void)forwardInvocation:(NSInvocation*)invocation { forward(self, invocation); }
#define ORVO_STANDS_IN ORVO_SIGNATURE(-) ORVO_SIGNATURE(+) - (void)dealloc { forget(self); [super dealloc]; }

NSString* const NSApplicationDidChangeScreenParametersNotification = @"Screens";
NSString* const NSWorkspaceDidLaunchApplicationNotification = @"Launch";
NSString* const NSWorkspaceDidTerminateApplicationNotification = @"Termination";
NSString* const NSWorkspaceWillSleepNotification = @"Sleep";
NSString* const NSWorkspaceDidWakeNotification = @"Wake";
NSString* const NSPasteboardTypeString = @"plain";

@implementation NSResponder ORVO_STANDS_IN @end
@implementation NSControl @end
@implementation NSButton @end
@implementation NSStatusBarButton @end
@implementation NSWindow @end
@implementation NSStatusItem ORVO_STANDS_IN @end
@implementation NSPasteboard ORVO_STANDS_IN @end
@implementation NSView - (NSRect)bounds { return NSMakeRect(0, 3, 24, 22); } @end
@implementation NSEvent ORVO_STANDS_IN - (NSEventType)type { return fields[self].type; } @end

@implementation NSStatusBar ORVO_STANDS_IN
- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
  note("statusItemWithLength: " + std::to_string(static_cast<int>(length)));
  NSStatusItem* const item = [[NSStatusItem new] autorelease];
  [button release];
  button = appKit().grantsButtons ? [NSStatusBarButton new] : nil;
  keep(item, "button", button);
  return appKit().grantsItems ? item : nil;
}
@end

@implementation NSImage ORVO_STANDS_IN
+ (instancetype)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)description {
  NSImage* const made = [[[self class] new] autorelease];
  keep(made, "symbol", [NSString stringWithFormat:@"%@ %@", name, description]);
  return made;
}
@end

@implementation NSMenuItem ORVO_STANDS_IN
+ (NSMenuItem*)separatorItem {
  return [[[NSMenuItem alloc] initWithTitle:@"-" action:SEL() keyEquivalent:@""] autorelease];
}
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key {
  keep(self, "title", title);
  keep(self, "key", key);
  fields[self].action = action;
  return self;
}
@end

@implementation NSMenu ORVO_STANDS_IN
- (instancetype)initWithTitle:(NSString*)title { keep(self, "title", title); return self; }
- (void)addItem:(NSMenuItem*)item { fields[self].items.push_back(orvo::Retained<NSMenuItem*>::retaining(item)); }
- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)place inView:(NSView*)view {
  std::ostringstream line;
  line << "popUp " << (item == nil && view == button) << ' ' << place.x << ' ' << place.y << ' ' << fields[self].enabled;
  note(line.str());
  appKit().poppedUp = lines(self);
  return choose(self, "title", std::exchange(appKit().choice, "")) ? YES : NO;
}
@end

@implementation NSApplication
- (void)terminate:(id)sender {
  note(sender == nil ? "terminate" : "terminate for a sender");
  [delegate() applicationWillTerminate:nil];
}
@end

@implementation NSRunningApplication ORVO_STANDS_IN
+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)process {
  for (NSRunningApplication* each in applications()) if ([each processIdentifier] == process) return each;
  return nil;
}
+ (NSArray*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
  NSPredicate* const same = [NSPredicate predicateWithFormat:@"bundleIdentifier == %@", identifier];
  return [applications() filteredArrayUsingPredicate:same];
}
- (NSString*)bundleIdentifier { return kept(self, "bundleIdentifier"); }
- (pid_t)processIdentifier { return static_cast<pid_t>(fields[self].mask); }
- (BOOL)isEqual:(id)other { return [self processIdentifier] == [other processIdentifier]; }
@end

@implementation NSWorkspace ORVO_STANDS_IN
- (NSArray*)runningApplications { return applications(); }
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier {
  return [identifier isEqualToString:@"local.orvo.Orvo"] ? [NSURL fileURLWithPath:@"/Applications/Orvo.app"] : nil;
}
@end

@implementation SMAppService ORVO_STANDS_IN
- (SMAppServiceStatus)status { return static_cast<SMAppServiceStatus>(appKit().loginStatus); }
- (BOOL)changeTo:(long)status error:(NSError**)error {
  if (appKit().loginError.empty()) return appKit().loginStatus = status, YES;
  NSDictionary* const information = @{NSLocalizedDescriptionKey : nsText(appKit().loginError)};
  if (error != nullptr) *error = [NSError errorWithDomain:@"SMAppServiceErrorDomain" code:1 userInfo:information];
  return NO;
}
- (BOOL)registerAndReturnError:(NSError**)error { return [self changeTo:1 error:error]; }
- (BOOL)unregisterAndReturnError:(NSError**)error { return [self changeTo:0 error:error]; }
@end
// clang-format on

namespace orvo::fake {

AppKit& appKit() {
  static AppKit only;
  return only;
}

void click(EventType type) {
  if ((fields[button].mask >> static_cast<unsigned>(type) & 1U) == 0) return;
  whileHandling(static_cast<NSEventType>(type), ^{
    send(button);
  });
}

void press(const std::string& key) {
  whileHandling(NSEventTypeKeyDown, ^{
    NSWindow* const window = [[NSWindow new] autorelease];
    keep(window, "firstResponder", [[NSResponder new] autorelease]);
    keep([NSApplication sharedApplication], "keyWindow", window);
    choose([[NSApplication sharedApplication] mainMenu], "key", key);
  });
}

std::vector<std::string> mainMenu() {
  @autoreleasepool {
    return lines([[NSApplication sharedApplication] mainMenu]);
  }
}

void launch() { [delegate() applicationDidFinishLaunching:nil]; }
bool reopen() { return [delegate() applicationShouldHandleReopen:nil hasVisibleWindows:NO] == YES; }
bool terminatesAfterLastWindow() { return [delegate() applicationShouldTerminateAfterLastWindowClosed:nil] == YES; }

void post(const char* name) {
  @autoreleasepool {
    const bool screens = std::string(name) == "Screens";
    NSNotificationCenter* const center =
        screens ? [NSNotificationCenter defaultCenter] : [[NSWorkspace sharedWorkspace] notificationCenter];
    [center postNotificationName:nsText(name) object:nil];
    turn();
  }
}

void prepare() {
  @autoreleasepool {
    appKit() = {};
    keep([NSWorkspace sharedWorkspace], "notificationCenter", [[NSNotificationCenter new] autorelease]);
    NSUserDefaults* const defaults = [NSUserDefaults standardUserDefaults];
    [defaults removePersistentDomainForName:[[NSProcessInfo processInfo] processName]];
  }
}

void setRunning(const std::vector<RunningApplication>& running, bool tellsRemovalOnly) {
  @autoreleasepool {
    NSWorkspace* const workspace = [NSWorkspace sharedWorkspace];
    NSMutableIndexSet* const removed = [NSMutableIndexSet indexSet];
    for (std::size_t index = 0; index < appKit().running.size(); ++index) {
      if (std::count(running.begin(), running.end(), appKit().running[index]) == 0) [removed addIndex:index];
    }
    NSString* const key = @"runningApplications";
    if (!tellsRemovalOnly) [workspace willChangeValueForKey:key];
    if (tellsRemovalOnly) [workspace willChange:NSKeyValueChangeRemoval valuesAtIndexes:removed forKey:key];
    appKit().running = running;
    if (tellsRemovalOnly) [workspace didChange:NSKeyValueChangeRemoval valuesAtIndexes:removed forKey:key];
    if (!tellsRemovalOnly) [workspace didChangeValueForKey:key];
  }
}

}  // namespace orvo::fake
