#include "platform/macos/cocoa/FakeAppKit.h"

#include "platform/macos/foundation/NsText.h"
#include "platform/macos/foundation/Retained.h"

#import <AppKit/AppKit.h>
#import <ServiceManagement/ServiceManagement.h>

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
  id target = nil;  // not kept, as in AppKit
  SEL action = nullptr;
  unsigned long long mask = 0;
  bool enabled = true;
  NSEventType type = NSEventTypeLeftMouseUp;
  std::vector<NSMenuItem*> items;
};
auto& fields = *new std::map<const void*, Fields>;  // outlives the program's end, which frees objects too

// What is freed with the fields may look its own up.
void forget(id owner) { const auto dropped = fields.extract(owner); }

void keep(id owner, const char* name, id value) { fields[owner].kept[name] = orvo::Retained<id>::retaining(value); }
id kept(id owner, const char* name) { return fields[owner].kept[name].get(); }
std::string text(id value) { return textOf(value).value_or("(nil)"); }

template <typename... Values>
void note(const char* name, const Values&... values) {
  std::ostringstream line;
  line << name;
  ((line << ' ' << values), ...);
  appKit().calls.push_back(line.str());
}

void send(id sender) {
  const Fields& all = fields[sender];
  [all.target performSelector:all.action withObject:sender];
}

NSStatusBarButton* button = nil;
id<NSApplicationDelegate> delegate = nil;
NSMenu* menu = nil;
NSEvent* currentEvent = nil;

void whileHandling(NSEventType type, void (^handler)(void)) {
  @autoreleasepool {
    currentEvent = [[NSEvent new] autorelease];
    fields[currentEvent].type = type;
    handler();
    currentEvent = nil;
  }
}

std::vector<std::string> lines(NSMenu* of) {
  std::vector<std::string> all;
  for (NSMenuItem* item : fields[of].items) {
    std::string line = text(kept(item, "title"));
    if (const auto key = text(kept(item, "key")); !key.empty()) line += ' ' + key;
    if (!fields[item].enabled) line += " off";
    if (fields[item].action != nullptr && fields[item].target == nil) line += " without target";
    all.push_back(line);
    if (NSMenu* const inner = kept(item, "submenu")) {
      all.push_back("[" + text(kept(inner, "title")) + (fields[inner].enabled ? "" : " manual"));
      for (const std::string& each : lines(inner)) all.push_back(each);
    }
  }
  return all;
}

bool choose(NSMenu* in, const char* field, const std::string& value) {
  for (NSMenuItem* item : fields[in].items) {
    if (text(kept(item, field)) == value) return send(item), true;
    if (NSMenu* const inner = kept(item, "submenu"); inner != nil && choose(inner, field, value)) return true;
  }
  return false;
}

NSRunningApplication* application(const orvo::RunningApplication& running) {
  NSRunningApplication* const made = [[NSRunningApplication new] autorelease];
  if (running.bundleIdentifier) keep(made, "bundle", nsText(*running.bundleIdentifier));
  if (running.localizedName) keep(made, "name", nsText(*running.localizedName));
  if (running.bundlePath) keep(made, "url", [NSURL fileURLWithPath:nsText(*running.bundlePath)]);
  keep(made, "process", [NSNumber numberWithInt:running.processIdentifier]);
  return made;
}

NSArray* applications() {
  NSMutableArray* const all = [NSMutableArray array];
  for (const auto& running : appKit().running) [all addObject:application(running)];
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

#define ORVO_FORGETS \
  -(void)dealloc {   \
    forget(self);    \
    [super dealloc]; \
  }

NSString* const NSApplicationDidChangeScreenParametersNotification = @"Screens";
NSString* const NSWorkspaceDidLaunchApplicationNotification = @"Launch";
NSString* const NSWorkspaceDidTerminateApplicationNotification = @"Termination";
NSString* const NSWorkspaceWillSleepNotification = @"Sleep";
NSString* const NSWorkspaceDidWakeNotification = @"Wake";
NSString* const NSPasteboardTypeString = @"plain";

@implementation NSEvent
- (NSEventType)type {
  return fields[self].type;
}
ORVO_FORGETS
@end

@implementation NSResponder
- (void)keyDown:(NSEvent*)event {
  note("keyDown", event == currentEvent);
}
ORVO_FORGETS
@end

@implementation NSView
- (NSRect)bounds {
  return NSMakeRect(0, 3, 24, 22);
}
@end

@implementation NSControl
- (void)setTarget:(id)target {
  fields[self].target = target;
}
- (void)setAction:(SEL)action {
  fields[self].action = action;
}
- (NSInteger)sendActionOn:(NSEventMask)mask {
  note("sendActionOn", mask);
  fields[self].mask = mask;
  return 0;
}
@end

@implementation NSButton
- (void)setImage:(NSImage*)image {
  note("image", text(kept(image, "name")), text(kept(image, "description")));
  keep(self, "image", image);
}
- (void)setToolTip:(NSString*)toolTip {
  note("toolTip", text(toolTip));
}
- (void)setAccessibilityLabel:(NSString*)label {
  note("label", text(label));
}
- (void)setAccessibilityIdentifier:(NSString*)identifier {
  note("identifier", text(identifier));
}
@end

@implementation NSStatusBarButton
@end

@implementation NSStatusItem
- (NSStatusBarButton*)button {
  return button;
}
- (void)setAutosaveName:(NSString*)name {
  note("autosaveName", text(name));
}
- (void)setBehavior:(NSStatusItemBehavior)behavior {
  note("behavior", behavior);
}
- (void)setVisible:(BOOL)visible {
  note("visible", visible == YES);
}
- (void)dealloc {
  note("itemGone");
  [super dealloc];
}
@end

@implementation NSStatusBar
+ (NSStatusBar*)systemStatusBar {
  static NSStatusBar* const only = [NSStatusBar new];
  return only;
}
- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
  note("statusItem", length);
  if (!appKit().grantsItems) return nil;
  [button release];
  button = appKit().grantsButtons ? [NSStatusBarButton new] : nil;
  return [[NSStatusItem new] autorelease];
}
- (void)removeStatusItem:(NSStatusItem*)item {
  note("removeStatusItem", item != nil);
}
@end

@implementation NSImage
+ (instancetype)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)description {
  NSImage* const made = [[[self class] new] autorelease];
  keep(made, "name", name);
  keep(made, "description", description);
  return made;
}
ORVO_FORGETS
@end

@implementation NSMenuItem
+ (NSMenuItem*)separatorItem {
  return [[[NSMenuItem alloc] initWithTitle:@"-" action:SEL() keyEquivalent:@""] autorelease];
}
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key {
  keep(self, "title", title);
  keep(self, "key", key);
  fields[self].action = action;
  return self;
}
- (void)setTarget:(id)target {
  fields[self].target = target;
}
- (void)setRepresentedObject:(id)object {
  keep(self, "object", object);
}
- (void)setEnabled:(BOOL)enabled {
  fields[self].enabled = enabled;
}
- (void)setSubmenu:(NSMenu*)submenu {
  keep(self, "submenu", submenu);
}
ORVO_FORGETS
@end

@implementation NSMenu
- (instancetype)initWithTitle:(NSString*)title {
  keep(self, "title", title);
  return self;
}
- (void)setAutoenablesItems:(BOOL)enables {
  fields[self].enabled = enables;
}
- (void)addItem:(NSMenuItem*)item {
  fields[self].items.push_back([item retain]);
}
- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)place inView:(NSView*)view {
  note("popUp", item == nil, place.x, place.y, view == button, fields[self].enabled);
  appKit().poppedUp = lines(self);
  return choose(self, "title", std::exchange(appKit().choice, "")) ? YES : NO;
}
- (void)dealloc {
  for (NSMenuItem* item : fields[self].items) [item release];
  forget(self);
  [super dealloc];
}
@end

@implementation NSWindow
- (NSResponder*)firstResponder {
  static NSResponder* const only = [NSResponder new];
  return only;
}
@end

@implementation NSApplication
+ (NSApplication*)sharedApplication {
  static NSApplication* const only = [NSApplication new];
  return only;
}
- (void)setDelegate:(id<NSApplicationDelegate>)newDelegate {
  delegate = newDelegate;
}
- (void)setMainMenu:(NSMenu*)newMenu {
  [newMenu retain];
  [menu release];
  menu = newMenu;
}
- (NSEvent*)currentEvent {
  return currentEvent;
}
- (NSWindow*)keyWindow {
  static NSWindow* const only = [NSWindow new];
  return only;
}
- (void)run {
  note("run");
}
- (void)terminate:(id)sender {
  note("terminate", sender == nil);
  [delegate applicationWillTerminate:[NSNotification notificationWithName:@"" object:nil]];
}
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  note("policy", policy);
  return YES;
}
- (void)activateIgnoringOtherApps:(BOOL)ignoring {
  note("activate", ignoring == YES);
}
@end

@implementation NSRunningApplication
+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)process {
  for (NSRunningApplication* each in applications()) {
    if ([each processIdentifier] == process) return each;
  }
  return nil;
}
+ (NSArray*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
  NSMutableArray* const found = [NSMutableArray array];
  for (NSRunningApplication* each in applications()) {
    if ([[each bundleIdentifier] isEqualToString:identifier]) [found addObject:each];
  }
  return found;
}
- (NSString*)bundleIdentifier {
  return kept(self, "bundle");
}
- (NSString*)localizedName {
  return kept(self, "name");
}
- (NSURL*)bundleURL {
  return kept(self, "url");
}
- (pid_t)processIdentifier {
  return [kept(self, "process") intValue];
}
- (BOOL)isEqual:(id)other {
  return [self processIdentifier] == [other processIdentifier];
}
- (NSUInteger)hash {
  return static_cast<NSUInteger>([self processIdentifier]);
}
ORVO_FORGETS
@end

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
  static NSWorkspace* const only = [NSWorkspace new];
  return only;
}
- (NSNotificationCenter*)notificationCenter {
  static NSNotificationCenter* const only = [NSNotificationCenter new];
  return only;
}
- (NSArray*)runningApplications {
  return applications();
}
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier {
  return [identifier isEqualToString:@"local.orvo.Orvo"] ? [NSURL fileURLWithPath:@"/Applications/Orvo.app"] : nil;
}
- (BOOL)openURL:(NSURL*)url {
  note("openURL", text([url absoluteString]));
  return YES;
}
@end

@implementation NSPasteboard
+ (NSPasteboard*)generalPasteboard {
  static NSPasteboard* const only = [NSPasteboard new];
  return only;
}
- (NSInteger)clearContents {
  note("clearContents");
  return 0;
}
- (BOOL)setString:(NSString*)string forType:(NSString*)type {
  note("setString", text(string), text(type));
  return YES;
}
@end

@implementation SMAppService
+ (SMAppService*)mainAppService {
  static SMAppService* const only = [SMAppService new];
  return only;
}
- (SMAppServiceStatus)status {
  return static_cast<SMAppServiceStatus>(appKit().loginStatus);
}
- (BOOL)changeTo:(long)status error:(NSError**)error {
  if (appKit().loginError.empty()) return appKit().loginStatus = status, YES;
  NSDictionary* const information = [NSDictionary dictionaryWithObject:nsText(appKit().loginError)
                                                                forKey:NSLocalizedDescriptionKey];
  *error = [NSError errorWithDomain:@"SMAppServiceErrorDomain" code:1 userInfo:information];
  return NO;
}
- (BOOL)registerAndReturnError:(NSError**)error {
  return [self changeTo:1 error:error];
}
- (BOOL)unregisterAndReturnError:(NSError**)error {
  return [self changeTo:0 error:error];
}
+ (void)openSystemSettingsLoginItems {
  note("openLoginItems");
}
@end

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
    choose(menu, "key", key);
  });
}

std::vector<std::string> mainMenu() {
  @autoreleasepool {
    return lines(menu);
  }
}

void launch() {
  @autoreleasepool {
    [delegate applicationDidFinishLaunching:[NSNotification notificationWithName:@"" object:nil]];
  }
}
bool reopen() {
  return [delegate applicationShouldHandleReopen:[NSApplication sharedApplication] hasVisibleWindows:NO] == YES;
}
bool terminatesAfterLastWindow() {
  return [delegate applicationShouldTerminateAfterLastWindowClosed:[NSApplication sharedApplication]] == YES;
}

void postWorkspace(const char* name) {
  @autoreleasepool {
    [[[NSWorkspace sharedWorkspace] notificationCenter] postNotificationName:nsText(name) object:nil];
    turn();
  }
}

void postScreenChange() {
  @autoreleasepool {
    NSString* const name = NSApplicationDidChangeScreenParametersNotification;
    [[NSNotificationCenter defaultCenter] postNotificationName:name object:nil];
    turn();
  }
}

void setRunning(std::vector<RunningApplication> running, bool tellsRemovalOnly) {
  @autoreleasepool {
    NSWorkspace* const workspace = [NSWorkspace sharedWorkspace];
    NSMutableIndexSet* const removed = [NSMutableIndexSet indexSet];
    for (std::size_t index = 0; index < appKit().running.size(); ++index) {
      if (std::find(running.begin(), running.end(), appKit().running[index]) == running.end()) [removed addIndex:index];
    }
    if (tellsRemovalOnly) {
      [workspace willChange:NSKeyValueChangeRemoval valuesAtIndexes:removed forKey:@"runningApplications"];
      appKit().running = std::move(running);
      [workspace didChange:NSKeyValueChangeRemoval valuesAtIndexes:removed forKey:@"runningApplications"];
    } else {
      [workspace willChangeValueForKey:@"runningApplications"];
      appKit().running = std::move(running);
      [workspace didChangeValueForKey:@"runningApplications"];
    }
  }
}

void forgetDefaults() {
  @autoreleasepool {
    NSUserDefaults* const defaults = [NSUserDefaults standardUserDefaults];
    [defaults removePersistentDomainForName:[[NSProcessInfo processInfo] processName]];
  }
}

void setDefaultText(const char* key, const char* value) {
  @autoreleasepool {
    [[NSUserDefaults standardUserDefaults] setObject:nsText(value) forKey:nsText(key)];
  }
}

}  // namespace orvo::fake
