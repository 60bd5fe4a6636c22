// The adapters over recording stand-ins for AppKit's and ServiceManagement's classes, under GNUstep's Foundation.
#include "platform/macos/appkit/CocoaApplication.h"
#include "platform/macos/appkit/CocoaPasteboard.h"
#include "platform/macos/appkit/CocoaStatusBar.h"
#include "platform/macos/appkit/CocoaWorkspace.h"
#include "platform/macos/appkit/SystemLoginItem.h"
#include "platform/macos/foundation/FoundationBundle.h"
#include "platform/macos/foundation/FoundationProcessInfo.h"
#include "platform/macos/foundation/FoundationUserDefaults.h"
#include "platform/macos/foundation/NsText.h"
#include "platform/macos/foundation/PooledExecutor.h"
#include "platform/macos/foundation/Retained.h"
#include "support/ManualMainQueue.h"

#import <AppKit/AppKit.h>
#import <ServiceManagement/ServiceManagement.h>

#include <gmock/gmock.h>

#include <bit>

namespace {

// The messages that the adapters sent, in order, but for questions without an argument.
std::vector<std::string> calls;
// A test has a pool of its own, and every adapter opens another.
NSAutoreleasePool* testPool = nil;
// What stand-ins and their classes were given, by the part of the message, and answer. Outlives the program's end,
// which frees objects too.
auto& fields = *new std::map<const void*, std::map<std::string, orvo::Retained<id>>>;

void keep(id owner, const std::string& name, id value) { fields[owner][name] = orvo::Retained<id>::retaining(value); }
id kept(id owner, const std::string& name) { return fields[owner][name].get(); }

std::string shown(id value) {
  for (Class const plain in @[ [NSString class], [NSNumber class], [NSURL class] ])
    if ([value isKindOfClass:plain]) return *orvo::textOf([value description]);
  return value == nil ? "nil" : "*";
}

id argument(id owner, NSInvocation* invocation, NSInteger index) {
  std::uintptr_t given = 0;
  [invocation getArgument:&given atIndex:index];
  const char type = [[invocation methodSignature] getArgumentTypeAtIndex:static_cast<NSUInteger>(index)][0];
  if (type == '@') return reinterpret_cast<id>(given);
  if (type == ':') return NSStringFromSelector(reinterpret_cast<SEL>(given));
  if (type == 'd') return [NSNumber numberWithDouble:std::bit_cast<double>(given)];
  if (type == '^') return *reinterpret_cast<id*>(given) = kept(owner, "error");
  return [NSNumber numberWithUnsignedLongLong:given];
}

// Whatever a stand-in does not do itself: keeps what the message gives, of a target or delegate no more than
// its address, as AppKit does, and answers what was kept under its name. A class answers its one instance.
void forward(id owner, NSInvocation* invocation) {
  const std::string name = sel_getName([invocation selector]);
  std::istringstream parts(name);
  std::string line = name, part;
  for (NSInteger index = 2; name.ends_with(':') && std::getline(parts, part, ':'); ++index) {
    id value = argument(owner, invocation, index);
    line += ' ' + shown(value);
    const bool loose = part == "setTarget" || part == "setDelegate";
    keep(owner, part, loose ? [NSValue valueWithNonretainedObject:value] : value);
  }
  const bool isClass = class_isMetaClass(object_getClass(owner));
  const char returned = [[invocation methodSignature] methodReturnType][0];
  const bool asks = !name.ends_with(':') && (returned == '@' || kept(owner, name) != nil);
  if (!asks) calls.push_back(line);
  EXPECT_TRUE(isClass || [NSAutoreleasePool currentPool] != testPool) << line;
  if (asks && kept(owner, name) == nil && isClass) keep(owner, name, [owner new]);
  id answer = name.starts_with("init") ? owner : kept(owner, name);
  long long number = answer != nil && returned != '@' ? [answer longLongValue] : kept(owner, "error") == nil;
  if (returned != 'v') [invocation setReturnValue:returned == '@' ? static_cast<void*>(&answer) : &number];
}

void send(id sender) {
  @autoreleasepool {
    NSString* const action = kept(sender, kept(sender, "action") != nil ? "action" : "setAction");
    [[kept(sender, "setTarget") nonretainedObjectValue] performSelector:NSSelectorFromString(action) withObject:sender];
  }
}

void turnUntil(const std::function<bool()>& done) {
  NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:10];
  while (!done() && [limit timeIntervalSinceNow] > 0) {
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.01]];
  }
}

void post(NSNotificationCenter* center, NSString* name, id application) {
  [center postNotificationName:name object:nil userInfo:@{NSWorkspaceApplicationKey : application}];
  turnUntil([] { return [[[NSOperationQueue mainQueue] operations] count] == 0; });
}

}  // namespace

// clang-format off
// GNUstep itself uses some names without types, all of them questions for an object.
#define ORVO_FORWARDS(sign) \
  sign (NSMethodSignature*)methodSignatureForSelector:(SEL)selector { \
    const char* const types = sel_getTypeEncoding(selector); \
    return [NSMethodSignature signatureWithObjCTypes:types != nullptr ? types : "@@:"]; } \
  sign (void)forwardInvocation:(NSInvocation*)invocation { forward(self, invocation); }
#define ORVO_STANDS_IN ORVO_FORWARDS(-) ORVO_FORWARDS(+) \
  - (void)dealloc { const auto dropped = fields.extract(self); [super dealloc]; }
#define ORVO_STAND_IN(name) @implementation name ORVO_STANDS_IN @end

NSString* const NSApplicationDidChangeScreenParametersNotification = @"Screens";
NSString* const NSWorkspaceDidLaunchApplicationNotification = @"Launch", *const NSPasteboardTypeString = @"plain";
NSString* const NSWorkspaceDidTerminateApplicationNotification = @"Termination";
NSString* const NSWorkspaceWillSleepNotification = @"Sleep", *const NSWorkspaceDidWakeNotification = @"Wake";
NSString* const NSWorkspaceApplicationKey = @"application";

ORVO_STAND_IN(NSResponder) ORVO_STAND_IN(NSStatusBar) ORVO_STAND_IN(NSStatusItem) ORVO_STAND_IN(NSEvent)
ORVO_STAND_IN(NSImage) ORVO_STAND_IN(NSMenuItem) ORVO_STAND_IN(NSPasteboard) ORVO_STAND_IN(NSRunningApplication)
ORVO_STAND_IN(SMAppService)
@implementation NSView - (NSRect)bounds { return NSMakeRect(0, 3, 24, 22); } @end
@implementation NSControl @end @implementation NSButton @end @implementation NSStatusBarButton @end
@implementation NSWindow @end @implementation NSApplication @end
@implementation NSMenu ORVO_STANDS_IN
// The person chooses the last item.
- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)place inView:(NSView*)view {
  calls.push_back("popUp " + shown(item) + ' ' + shown(NSStringFromPoint(place)) + ' ' + shown(view));
  return send(kept(self, "addItem")), YES;
}
@end
@implementation NSWorkspace ORVO_STANDS_IN
- (void)addObserver:(NSObject*)observer forKeyPath:(NSString*)path options:(NSUInteger)options context:(void*)context {
  calls.push_back("observe " + shown(path) + ' ' + std::to_string(options));
  keep(self, "observer of " + shown(path), [NSValue valueWithNonretainedObject:observer]);
}
- (void)removeObserver:(NSObject*)observer forKeyPath:(NSString*)path { keep(self, "observer of " + shown(path), nil); }
@end
// clang-format on

namespace orvo {

using namespace ::testing;

NSApplication* shared() { return [NSApplication sharedApplication]; }
NSWorkspace* workspace() { return [NSWorkspace sharedWorkspace]; }
auto takeCalls() { return std::exchange(calls, {}); }

// `handle` runs with an event of this type as the application's current one.
void during(EventType type, const std::function<void()>& handle) {
  NSEvent* const event = [[NSEvent new] autorelease];
  keep(event, "type", [NSNumber numberWithUnsignedInteger:static_cast<NSUInteger>(type)]);
  keep(shared(), "currentEvent", event);
  handle();
  keep(shared(), "currentEvent", nil);
}

class CocoaAdaptersTest : public ::testing::Test {
 protected:
  CocoaAdaptersTest() {
    testPool = [NSAutoreleasePool new];
    keep(workspace(), "notificationCenter", [[NSNotificationCenter new] autorelease]);
    [[NSUserDefaults standardUserDefaults] removePersistentDomainForName:[[NSProcessInfo processInfo] processName]];
    keep([NSImage class], "imageWithSystemSymbolName:accessibilityDescription:", [[NSImage new] autorelease]);
    keep(item_.get(), "button", button_.get());
    keep([NSStatusBar systemStatusBar], "statusItemWithLength:", item_.get());
    calls.clear();
  }
  ~CocoaAdaptersTest() override {
    std::remove_reference_t<decltype(fields)>().swap(fields);
    [testPool drain];
    EXPECT_EQ([item_.get() retainCount] + [button_.get() retainCount], 2U);
  }
  void click(EventType type) {
    if ([kept(button_.get(), "sendActionOn") intValue] >> static_cast<int>(type) & 1)
      during(type, [&] { send(button_.get()); });
  }

  const Retained<NSStatusItem*> item_ = Retained<NSStatusItem*>::owning([NSStatusItem new]);
  const Retained<NSStatusBarButton*> button_ = Retained<NSStatusBarButton*>::owning([NSStatusBarButton new]);
};

struct RecordingDelegate final : ApplicationDelegate {
  void applicationDidFinishLaunching() override { calls.emplace_back("launched"); }
  bool applicationShouldHandleReopen(bool visible) override { return visible; }
  void applicationWillTerminate() override { calls.emplace_back("ends"); }
  bool applicationShouldTerminateAfterLastWindowClosed() override { return false; }
};

TEST_F(CocoaAdaptersTest, TheApplicationIsToldAndTellsItsDelegateWhileItHasOne) {
  RecordingDelegate delegate;
  auto application = std::make_unique<CocoaApplication>();
  application->setDelegate(&delegate);
  application->notificationCenter().addObserver(Notification::screenParametersChanged,
                                                [](Notification) { calls.emplace_back("screens"); });
  id<NSApplicationDelegate> const told = [kept(shared(), "setDelegate") nonretainedObjectValue];
  [told applicationDidFinishLaunching:nil];
  application->setActivationPolicy(ActivationPolicy::accessory);
  for (const BOOL shown : {NO, YES}) EXPECT_EQ([told applicationShouldHandleReopen:nil hasVisibleWindows:shown], shown);
  EXPECT_FALSE([told applicationShouldTerminateAfterLastWindowClosed:nil]);
  EXPECT_EQ(application->currentEventType(), std::nullopt);
  during(EventType::rightMouseUp, [&] { EXPECT_EQ(application->currentEventType(), EventType::rightMouseUp); });
  post([NSNotificationCenter defaultCenter], NSApplicationDidChangeScreenParametersNotification, @"");
  [told applicationWillTerminate:nil];
  application.reset();
  post([NSNotificationCenter defaultCenter], NSApplicationDidChangeScreenParametersNotification, @"");
  EXPECT_THAT(takeCalls(), ElementsAre("setDelegate: *", "launched", "setActivationPolicy: 1", "screens", "ends",
                                       "setDelegate: nil"));
}

TEST_F(CocoaAdaptersTest, AMenuKeepsTheTargetsOfItsItemsAndLeavesItsKeysToTheFieldInFocus) {
  CocoaApplication application;
  const MenuItem copy{"Copy", FirstResponderAction{"copy:"}, "c", false, false, {}};
  application.setMainMenu({"Orvo", false, {{.separator = true}, {"", {}, "", true, false, {{"Edit", true, {copy}}}}}});
  EXPECT_THAT(takeCalls(), IsSupersetOf({"initWithTitle: Orvo", "setAutoenablesItems: 0", "setAutoenablesItems: 1",
                                         "initWithTitle:action:keyEquivalent: Copy send: c", "setEnabled: 0"}));
  // One object is the window and its field as well.
  for (const char* name : {"keyWindow", "firstResponder"}) keep(shared(), name, shared());
  NSMenu* const edit = kept(kept(kept(shared(), "setMainMenu"), "addItem"), "setSubmenu");
  for (const auto type : {EventType{NSEventTypeKeyDown}, EventType::leftMouseUp})
    during(type, [&] { send(kept(edit, "addItem")); });
  EXPECT_THAT(takeCalls(), ElementsAre("keyDown: *"));
}

TEST_F(CocoaAdaptersTest, AnItemShowsWhatItIsGivenAndPopsUpAMenuThatMayRemoveIt) {
  auto item = CocoaStatusBar().statusItem(-2);
  item->setAutosaveName("Quillet.Toggle");
  item->setBehavior(6);
  item->setVisible(true);
  StatusItemButton& button = *item->button();
  button.setAccessibilityLabel("Orvo menu bar manager");
  button.setImage("chevron.left", "Orvo");
  button.setToolTip("⌃⌥⌘B");
  EXPECT_THAT(takeCalls(), ElementsAre("statusItemWithLength: -2", "setAutosaveName: Quillet.Toggle", "setBehavior: 6",
                                       "setVisible: 1", "setAccessibilityLabel: Orvo menu bar manager",
                                       "imageWithSystemSymbolName:accessibilityDescription: chevron.left Orvo",
                                       "setImage: *", "setToolTip: ⌃⌥⌘B"));
  const auto held = std::make_shared<int>();
  const Menu menu{"", true, {{"Quit", [&, copy = held] { item.reset(); }, "", true, false, {}}}};
  button.setAction([&, copy = held] { button.popUpMenu(menu, {1, button.bounds().y}), ++*copy; }, rightMouseUpMask);
  click(EventType::leftMouseUp);
  EXPECT_EQ(held.use_count(), 3);
  click(EventType::rightMouseUp);
  EXPECT_EQ(held.use_count(), 2);
  click(EventType::rightMouseUp);
  EXPECT_THAT(takeCalls(), IsSupersetOf({"sendActionOn: 16", "popUp nil {x = 1; y = 3} *", "removeStatusItem: *"}));
  keep(item_.get(), "button", nil);
  EXPECT_EQ(CocoaStatusBar().statusItem(-2)->button(), nullptr);
  keep([NSStatusBar systemStatusBar], "statusItemWithLength:", nil);
  EXPECT_EQ(CocoaStatusBar().statusItem(-2), nullptr);
}

NSRunningApplication* standIn(const RunningApplication& of, int policy) {
  NSRunningApplication* const made = [[NSRunningApplication new] autorelease];
  if (of.bundleIdentifier) keep(made, "bundleIdentifier", nsText(*of.bundleIdentifier));
  if (of.localizedName) keep(made, "localizedName", nsText(*of.localizedName));
  if (of.bundlePath) keep(made, "bundleURL", [NSURL fileURLWithPath:nsText(*of.bundlePath)]);
  keep(made, "processIdentifier", [NSNumber numberWithInt:of.processIdentifier]);
  keep(made, "activationPolicy", [NSNumber numberWithInt:policy]);
  return made;
}

TEST_F(CocoaAdaptersTest, EachLaunchAndEndIsToldOnceUntilTheWorkspaceGoes) {
  using enum Notification;
  NSRunningApplication* const host = standIn({"com.apple.MenuBarAgent", 10, {}, "/System/A.app"}, 1);
  NSRunningApplication* const regular = standIn({{}, 11, {}, "/Applications/R.app"}, 0);
  NSRunningApplication* const accessory = standIn({{}, 12, {}, "/Applications/A.app"}, 1);
  NSRunningApplication* const helper = standIn({{}, 13, {}, "/Applications/A.app/Contents/Frameworks/H.app"}, 1);
  std::vector<Notification> received;
  auto observing = std::make_unique<CocoaWorkspace>();
  for (const auto ours : {applicationLaunched, applicationTerminated, willSleep, didWake, menuBarHostTerminated})
    observing->notificationCenter().addObserver(ours, [&](Notification told) { received.push_back(told); });
  const auto told = [&](NSString* name, NSRunningApplication* application) {
    post(kept(workspace(), "notificationCenter"), name, application);
    return std::exchange(received, {});
  };
  // Whole lists, or what came or went.
  const auto changed = [&](NSArray* before, NSArray* now) {
    NSDictionary* const change = @{NSKeyValueChangeOldKey : before, NSKeyValueChangeNewKey : now};
    id const observer = [kept(workspace(), "observer of runningApplications") nonretainedObjectValue];
    [observer observeValueForKeyPath:@"" ofObject:nil change:change context:nullptr];
    return std::exchange(received, {});
  };
  NSRunningApplication* const service = standIn({{}, 14, {}, "/usr/libexec/S"}, 1);
  EXPECT_THAT(changed(@[], @[ host, accessory, helper, service ]), ElementsAre(applicationLaunched));
  EXPECT_THAT(told(@"Launch", accessory), IsEmpty());
  EXPECT_THAT(changed(@[ host, accessory ], @[ host, accessory, regular ]), IsEmpty());
  EXPECT_THAT(told(@"Launch", regular), ElementsAre(applicationLaunched));
  EXPECT_THAT(changed(@[ regular ], @[]), IsEmpty());
  EXPECT_THAT(told(@"Termination", regular), ElementsAre(applicationTerminated));
  EXPECT_THAT(changed(@[ host, accessory ], @[ host ]), ElementsAre(applicationTerminated));
  EXPECT_THAT(told(@"Launch", accessory), ElementsAre(applicationLaunched));
  EXPECT_THAT(told(@"Sleep", regular), ElementsAre(willSleep));
  EXPECT_THAT(told(@"Wake", regular), ElementsAre(didWake));
  EXPECT_THAT(changed(@[ host ], @[]), ElementsAre(menuBarHostTerminated));
  observing.reset();
  for (NSString* name in @[ @"Launch", @"Termination", @"Sleep", @"Wake" ]) EXPECT_THAT(told(name, regular), IsEmpty());
  EXPECT_THAT(changed(@[], @[ accessory ]), IsEmpty());
}

TEST_F(CocoaAdaptersTest, ApplicationsAndPlacesAreFoundAndWhatDoesNotOpenIsToldLater) {
  CocoaWorkspace asked;
  const RunningApplication whole{"org.example.One", 11, "Eins ü", "/Applications/One.app"};
  const RunningApplication bare{{}, 12, {}, {}};
  EXPECT_EQ(asked.runningApplication(13), std::nullopt);
  EXPECT_EQ(asked.applicationPath("org.example.None"), std::nullopt);
  keep(workspace(), "runningApplications", @[ standIn(whole, 0), standIn(bare, 0) ]);
  keep(workspace(), "URLForApplicationWithBundleIdentifier:", [NSURL fileURLWithPath:@"/Orvo.app"]);
  keep([NSRunningApplication class], "runningApplicationWithProcessIdentifier:", standIn(bare, 0));
  keep([NSRunningApplication class], "runningApplicationsWithBundleIdentifier:", @[ standIn(whole, 0) ]);
  EXPECT_THAT(asked.runningApplications(), ElementsAre(whole, bare));
  EXPECT_EQ(asked.runningApplication(12), bare);
  EXPECT_THAT(asked.runningApplications("org.example.One"), ElementsAre(whole));
  EXPECT_EQ(asked.applicationPath("local.orvo.Orvo"), "/Orvo.app");
  EXPECT_THAT(takeCalls(),
              ElementsAre("observe runningApplications 3", EndsWith(": 13"), EndsWith(": org.example.None"),
                          EndsWith(": 12"), EndsWith(": org.example.One"), EndsWith(": local.orvo.Orvo")));
  int failures = 0;
  asked.openURL(fileURL("/Or vö.app", true), [&] { failures += 9; });
  keep(workspace(), "error", @"refused");
  for (const char* url : {"file:///None", "http://local:port"}) asked.openURL(url, [&] { ++failures; });
  EXPECT_EQ(failures, 0);
  turnUntil([&] { return failures >= 2; });
  EXPECT_EQ(failures, 2);
  EXPECT_THAT(takeCalls(), ElementsAre("openURL: file:///Or%20v%C3%B6.app/", "openURL: file:///None"));
}

TEST_F(CocoaAdaptersTest, TheLoginItemsChangesAndFailuresAreToldTextIsCopiedAndDefaultsComeBack) {
  SystemLoginItem login;
  id const service = [SMAppService mainAppService];
  NSError* const error = [NSError errorWithDomain:@"Service" code:1 userInfo:nil];
  for (const auto& failure : {std::optional<std::string>(), textOf([error localizedDescription])}) {
    if (failure) keep(service, "error", error);
    for (const bool registered : {true, false}) EXPECT_EQ(login.setRegistered(registered), failure);
  }
  keep(service, "status", [NSNumber numberWithInt:2]);
  EXPECT_EQ(login.status(), LoginItemStatus::requiresApproval);
  CocoaPasteboard().clearContents();
  CocoaPasteboard().setString("Orvo 0.2.0\nmacOS: ü");
  EXPECT_THAT(takeCalls(), ElementsAre("registerAndReturnError: nil", "unregisterAndReturnError: nil",
                                       "registerAndReturnError: *", "unregisterAndReturnError: *", "clearContents",
                                       "setString:forType: Orvo 0.2.0\nmacOS: ü plain"));
  FoundationUserDefaults defaults;
  EXPECT_TRUE(!defaults.data("data") && !defaults.boolean("flag"));
  defaults.setData("data", {"\0\xFF", 2});
  defaults.setBoolean("flag", true);
  EXPECT_EQ(defaults.data("data"), Bytes("\0\xFF", 2));
  EXPECT_TRUE(defaults.boolean("flag") && !defaults.data("flag"));
}

// GNUstep tells of what is left to a pool where there is none, as on a thread of ours. A program outside of any
// bundle has no identifier.
TEST_F(CocoaAdaptersTest, WhatAThreadAsksOrLeavesBehindGoesWithAPool) {
  ::testing::internal::CaptureStderr();
  std::thread([] {
    EXPECT_EQ(FoundationProcessInfo().processIdentifier(), getpid());
    EXPECT_THAT(FoundationProcessInfo().arguments().front(), EndsWith("macos_cocoa_test"));
    EXPECT_EQ(FoundationBundle().infoText("CFBundleShortVersionString"), std::nullopt);
    EXPECT_THAT(CocoaWorkspace().runningApplications(), IsEmpty());
    ManualExecutor executor;
    PooledExecutor(executor).post([] { [[NSObject new] autorelease]; });
    EXPECT_TRUE(executor.runOne());
  }).join();
  EXPECT_THAT(::testing::internal::GetCapturedStderr(), ::testing::Not(::testing::HasSubstr("without pool")));
}

}  // namespace orvo
