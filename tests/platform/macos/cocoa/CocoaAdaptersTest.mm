// The adapters over recording stand-ins for the few classes of AppKit and ServiceManagement, under GNUstep's
// Foundation.
#include "app/AppDelegate.h"
#include "model/OrvoModel.h"
#include "platform/macos/appkit/CocoaApplication.h"
#include "platform/macos/appkit/CocoaPasteboard.h"
#include "platform/macos/appkit/CocoaStatusBar.h"
#include "platform/macos/appkit/CocoaWorkspace.h"
#include "platform/macos/appkit/SystemLoginItem.h"
#include "platform/macos/foundation/FoundationBundle.h"
#include "platform/macos/foundation/FoundationProcessInfo.h"
#include "platform/macos/foundation/FoundationUserDefaults.h"
#include "platform/macos/foundation/NsText.h"
#include "platform/macos/foundation/Retained.h"
#include "support/MemoryPlatform.h"

#import <AppKit/AppKit.h>
#import <ServiceManagement/ServiceManagement.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

// The messages that the adapters sent, in order, but for those to menus and questions without an argument.
Lines calls;
// The item of the next popped-up menu that the person chooses, if any; what the last one showed.
std::string choice;
Lines poppedUp;
// What stand-ins and their classes were given, and answer. Outlives the program's end, which frees objects too.
auto& fields = *new std::map<const void*, std::map<std::string, orvo::Retained<id>>>;

void keep(id owner, const std::string& name, id value) { fields[owner][name] = orvo::Retained<id>::retaining(value); }
id kept(id owner, const std::string& name) { return fields[owner][name].get(); }

std::string shown(id value) {
  if ([value isKindOfClass:[NSURL class]]) value = [value absoluteString];
  if ([value isKindOfClass:[NSNumber class]]) value = [value description];
  if (value == nil || [value isKindOfClass:[NSString class]]) return orvo::textOf(value).value_or("nil");
  return "*";
}

template <typename Value>
Value argument(NSInvocation* invocation, NSInteger index) {
  Value value{};
  [invocation getArgument:&value atIndex:index];
  return value;
}

id boxed(id owner, NSInvocation* invocation, NSInteger index) {
  const char type = [[invocation methodSignature] getArgumentTypeAtIndex:static_cast<NSUInteger>(index)][0];
  if (type == '@') return argument<id>(invocation, index);
  if (type == ':') return NSStringFromSelector(argument<SEL>(invocation, index));
  if (type == 'd') return [NSNumber numberWithDouble:argument<double>(invocation, index)];
  if (type == '^') return *argument<id*>(invocation, index) = kept(owner, "error");
  return [NSNumber numberWithUnsignedLongLong:argument<unsigned long long>(invocation, index)];
}

// "title" of both "setTitle" and "initWithTitle".
std::string propertyOf(std::string part) {
  const std::size_t prefix = part.starts_with("set") ? 3 : part.starts_with("initWith") ? 8 : 0;
  part[prefix] = static_cast<char>(std::tolower(part[prefix]));
  return part.substr(prefix);
}

// Whatever a stand-in does not do itself: keeps what the message gives, of a target or delegate no more than
// its address, as AppKit does, and answers what was kept under its name. A class answers its one instance.
void forward(id owner, NSInvocation* invocation) {
  const std::string name = sel_getName([invocation selector]);
  std::istringstream parts(name);
  std::string line = name, part;
  for (NSInteger index = 2; name.ends_with(':') && std::getline(parts, part, ':'); ++index) {
    id value = boxed(owner, invocation, index);
    line += ' ' + shown(value);
    const bool loose = part == "setTarget" || part == "setDelegate";
    keep(owner, propertyOf(part), loose ? [NSValue valueWithNonretainedObject:value] : value);
  }
  const char returned = [[invocation methodSignature] methodReturnType][0];
  const bool asks = !name.ends_with(':') && (returned == '@' || kept(owner, name) != nil);
  if (!asks && ![owner isKindOfClass:[NSMenu class]] && ![owner isKindOfClass:[NSMenuItem class]])
    calls.push_back(line);
  if (asks && kept(owner, name) == nil && class_isMetaClass(object_getClass(owner))) keep(owner, name, [owner new]);
  id answer = name.starts_with("init") ? owner : kept(owner, name);
  long long number = answer != nil && returned != '@' ? [answer longLongValue] : kept(owner, "error") == nil;
  if (returned != 'v') [invocation setReturnValue:returned == '@' ? static_cast<void*>(&answer) : &number];
}

// GNUstep itself uses some names without types, all of them questions for an object.
NSMethodSignature* signatureOf(SEL selector) {
  const char* const types = sel_getTypeEncoding(selector);
  return [NSMethodSignature signatureWithObjCTypes:types != nullptr ? types : "@@:"];
}

void send(id sender) {
  [[kept(sender, "target") nonretainedObjectValue] performSelector:NSSelectorFromString(kept(sender, "action"))
                                                        withObject:sender];
}

// One line for an item: title, key, "off" for a disabled one; "[" and its title for a submenu.
Lines linesOf(NSMenu* menu) {
  Lines all;
  for (NSMenuItem* item in kept(menu, "items")) {
    id const enabled = kept(item, "enabled");
    const std::string key = shown(kept(item, "keyEquivalent"));
    all.push_back(shown(kept(item, "title")) + (key.empty() || key == "nil" ? "" : ' ' + key) +
                  (enabled == nil || [enabled boolValue] ? "" : " off"));
    NSMenu* const inner = kept(item, "submenu");
    if (inner != nil) all.push_back("[" + shown(kept(inner, "title")));
    std::ranges::copy(linesOf(inner), std::back_inserter(all));
  }
  return all;
}

bool choose(NSMenu* menu, const char* field, const std::string& value) {
  for (NSMenuItem* item in kept(menu, "items")) {
    if (shown(kept(item, field)) == value) return send(item), true;
    if (choose(kept(item, "submenu"), field, value)) return true;
  }
  return false;
}

}  // namespace

// clang-format off
#define ORVO_FORWARDS(sign) \
  sign (NSMethodSignature*)methodSignatureForSelector:(SEL)selector { return signatureOf(selector); } \
  sign (void)forwardInvocation:(NSInvocation*)invocation { forward(self, invocation); }
#define ORVO_STANDS_IN ORVO_FORWARDS(-) ORVO_FORWARDS(+) \
  - (void)dealloc { const auto dropped = fields.extract(self); [super dealloc]; }

NSString* const NSApplicationDidChangeScreenParametersNotification = @"Screens";
NSString* const NSWorkspaceDidLaunchApplicationNotification = @"Launch";
NSString* const NSWorkspaceDidTerminateApplicationNotification = @"Termination";
NSString* const NSWorkspaceWillSleepNotification = @"Sleep";
NSString* const NSWorkspaceDidWakeNotification = @"Wake";
NSString* const NSPasteboardTypeString = @"plain";

@implementation NSResponder ORVO_STANDS_IN @end
@implementation NSView - (NSRect)bounds { return NSMakeRect(0, 3, 24, 22); } @end
@implementation NSControl @end
@implementation NSButton @end
@implementation NSStatusBarButton @end
@implementation NSWindow @end
@implementation NSApplication @end
@implementation NSStatusBar ORVO_STANDS_IN @end
@implementation NSStatusItem ORVO_STANDS_IN @end
@implementation NSEvent ORVO_STANDS_IN @end
@implementation NSImage ORVO_STANDS_IN @end
@implementation NSMenuItem ORVO_STANDS_IN @end
@implementation NSPasteboard ORVO_STANDS_IN @end
@implementation NSRunningApplication ORVO_STANDS_IN @end
@implementation SMAppService ORVO_STANDS_IN @end
@implementation NSMenu ORVO_STANDS_IN
- (void)addItem:(NSMenuItem*)item {
  keep(self, "items", [[NSArray arrayWithArray:kept(self, "items")] arrayByAddingObject:item]);
}
- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)place inView:(NSView*)view {
  calls.push_back("popUp " + shown(item) + ' ' + shown(NSStringFromPoint(place)) + ' ' + shown(view) + ' ' +
                  shown(kept(self, "autoenablesItems")));
  poppedUp = linesOf(self);
  return choose(self, "title", std::exchange(choice, ""));
}
@end
@implementation NSWorkspace ORVO_STANDS_IN
- (NSArray*)runningApplications { return kept(self, "runningApplications"); }
@end
// clang-format on

namespace orvo {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Lines takeCalls() { return std::exchange(calls, {}); }

void post(const char* name) {
  @autoreleasepool {
    const bool screens = std::string(name) == "Screens";
    NSNotificationCenter* const center =
        screens ? [NSNotificationCenter defaultCenter] : [[NSWorkspace sharedWorkspace] notificationCenter];
    [center postNotificationName:nsText(name) object:nil];
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:10];
    while ([[[NSOperationQueue mainQueue] operations] count] > 0 && [limit timeIntervalSinceNow] > 0) {
      [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.01]];
    }
  }
}

class CocoaAdaptersTest : public ::testing::Test {
 protected:
  CocoaAdaptersTest() {
    ::testing::internal::CaptureStderr();
    @autoreleasepool {
      keep([NSWorkspace sharedWorkspace], "notificationCenter", [[NSNotificationCenter new] autorelease]);
      [[NSUserDefaults standardUserDefaults] removePersistentDomainForName:[[NSProcessInfo processInfo] processName]];
      item_ = Retained<NSStatusItem*>::owning([NSStatusItem new]);
      button_ = Retained<NSStatusBarButton*>::owning([NSStatusBarButton new]);
      keep([NSImage class], "imageWithSystemSymbolName:accessibilityDescription:", [[NSImage new] autorelease]);
      keep(item_.get(), "button", button_.get());
      keep([NSStatusBar systemStatusBar], "statusItemWithLength:", item_.get());
    }
    calls.clear();
  }
  // Threads of ours have no autorelease pool but what an adapter opens; GNUstep tells of a missing one.
  ~CocoaAdaptersTest() override {
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), ::testing::Not(::testing::HasSubstr("without pool")));
    @autoreleasepool {
      const auto dropped = std::exchange(fields, {});
    }
    EXPECT_EQ([item_.get() retainCount] + [button_.get() retainCount], 2U);
  }

  // A person's event; then `handle` runs with it as the application's current one.
  template <typename Handle>
  static void during(NSUInteger type, const Handle& handle) {
    @autoreleasepool {
      NSApplication* const application = [NSApplication sharedApplication];
      NSEvent* const event = [[NSEvent new] autorelease];
      keep(event, "type", [NSNumber numberWithUnsignedInteger:type]);
      keep(application, "currentEvent", event);
      handle(application);
      keep(application, "currentEvent", nil);
    }
  }
  void click(EventType type) {
    during(static_cast<NSUInteger>(type), [&](NSApplication*) {
      if ([kept(button_.get(), "sendActionOn") intValue] >> static_cast<int>(type) & 1) send(button_.get());
    });
  }

  Retained<NSStatusItem*> item_;
  Retained<NSStatusBarButton*> button_;
};

// The real delegate and model over AppKit's application and status bar.
class CocoaDelegateTest : public CocoaAdaptersTest {
 protected:
  CocoaDelegateTest() {
    const Platform& rest = memory_.platform;
    platform_.emplace(Platform{rest.mainQueue, rest.scanExecutor, rest.userDefaults, rest.bundle, rest.processInfo,
                               rest.fileSystem, rest.workspace, rest.accessibility, rest.eventTaps, rest.hotKeys,
                               rest.loginItem, rest.localizedText, application_, statusBar_, rest.windows,
                               rest.pasteboard, rest.applicationIcons, rest.words});
    memory_.showItems({"org.example.One"});
    memory_.userDefaults.setBoolean("Orvo.HasOpenedSettings", true);
    delegate_ = AppDelegate::make(*platform_);
    application_.setDelegate(delegate_.get());
    application_.run();
    [told() applicationDidFinishLaunching:nil];
    memory_.settle();
    delegate_->model().setRule(IconRule::hidden, "org.example.One");
    launch_ = takeCalls();
  }
  static id<NSApplicationDelegate> told() {
    @autoreleasepool {
      return [kept([NSApplication sharedApplication], "delegate") nonretainedObjectValue];
    }
  }
  static void press(const std::string& key) {
    during(NSEventTypeKeyDown, [&](NSApplication* application) {
      NSWindow* const window = [[NSWindow new] autorelease];
      keep(window, "firstResponder", [[NSResponder new] autorelease]);
      keep(application, "keyWindow", window);
      choose([application mainMenu], "keyEquivalent", key);
    });
  }
  BarState state() {
    memory_.settle();
    return delegate_->model().state();
  }

  MemoryPlatform memory_;
  CocoaApplication application_;
  CocoaStatusBar statusBar_;
  std::optional<Platform> platform_;
  std::shared_ptr<AppDelegate> delegate_;
  Lines launch_;
};

TEST_F(CocoaDelegateTest, LaunchingMakesTheItemAndTheMenuAsAppKitWantsThem) {
  const std::string image = "imageWithSystemSymbolName:accessibilityDescription: chevron.right Orvo";
  EXPECT_EQ(launch_,
            (Lines{"setDelegate: *", "run", "setActivationPolicy: 1", "setMainMenu: *", "statusItemWithLength: -2",
                   "setAutosaveName: Quillet.Toggle", "setBehavior: 0", "setVisible: 1", "setTarget: *",
                   "setAction: send:", "sendActionOn: 20", "setAccessibilityLabel: Orvo menu bar manager",
                   "setAccessibilityIdentifier: Orvo.NativeMenuBarToggle", image, "setImage: *",
                   "setToolTip: Hide selected icons · Right-click for settings"}));
  @autoreleasepool {
    EXPECT_THAT(linesOf([[NSApplication sharedApplication] mainMenu]),
                ElementsAre("", "[Orvo", "Settings… ,", "nil", "Quit Orvo q", "", "[Edit", "Undo z", "Cut x", "Copy c",
                            "Paste v", "Select All a"));
  }
}

TEST_F(CocoaDelegateTest, ClicksAndTheMenuReachTheDelegateAgainAndAgain) {
  click(EventType::leftMouseDown);
  EXPECT_EQ(state(), BarState::visible);
  click(EventType::leftMouseUp);
  EXPECT_EQ(state(), BarState::applying);
  EXPECT_THAT(takeCalls(), Contains("setToolTip: Show hidden icons · ⌃⌥⌘B"));
  click(EventType::rightMouseUp);
  EXPECT_THAT(takeCalls(), ElementsAre("popUp nil {x = 0; y = 3} * 0"));
  EXPECT_THAT(poppedUp, ElementsAre("Show all icons", "Settings…", "nil", "Quit Orvo"));
  choice = "Show all icons";
  click(EventType::rightMouseUp);
  EXPECT_EQ(state(), BarState::visible);
  delegate_->model().setRule(IconRule::visible, "org.example.One");
  memory_.accessibility.trusted = false;
  memory_.mainQueue.advance(std::chrono::seconds(3));
  click(EventType::rightMouseUp);
  EXPECT_EQ(poppedUp.front(), "Hide selected icons off");
}

TEST_F(CocoaDelegateTest, KeysReachTheDelegateOrTheFieldInFocus) {
  press(",");
  EXPECT_EQ(memory_.windows.shown, 1);
  EXPECT_THAT(takeCalls(), Contains("activateIgnoringOtherApps: 1"));
  press("c");
  EXPECT_THAT(takeCalls(), ElementsAre("keyDown: *"));
  press("q");
  EXPECT_THAT(takeCalls(), Contains("terminate: nil"));
}

TEST_F(CocoaDelegateTest, TheSystemsMessagesReachTheDelegate) {
  EXPECT_FALSE(application_.currentEventType());
  EXPECT_FALSE([told() applicationShouldTerminateAfterLastWindowClosed:nil]);
  const std::vector<std::function<void()>> endings{
      [] { EXPECT_TRUE([told() applicationShouldHandleReopen:nil hasVisibleWindows:NO]); }, [] { post("Screens"); },
      [] { [told() applicationWillTerminate:nil]; }};
  for (const auto& ending : endings) {
    click(EventType::leftMouseUp);
    EXPECT_EQ(state(), BarState::applying);
    ending();
    EXPECT_EQ(state(), BarState::visible);
  }
  EXPECT_EQ(memory_.windows.shown, 1);
}

TEST_F(CocoaDelegateTest, TheEndTakesTheItemAwayAndLetsEverythingGo) {
  const std::weak_ptr<AppDelegate> gone = delegate_;
  application_.setDelegate(nullptr);
  delegate_.reset();
  EXPECT_TRUE(gone.expired());
  EXPECT_THAT(takeCalls(), ElementsAre("setDelegate: nil", "setTarget: nil", "removeStatusItem: *"));
}

TEST_F(CocoaAdaptersTest, AnItemOrAButtonMayBeRefusedAndAnActionGoesWithItsItem) {
  CocoaStatusBar bar;
  const auto held = std::make_shared<int>();
  auto item = bar.statusItem(-2);
  // An action may remove the item that it belongs to.
  item->button()->setAction([&, copy = held] { item.reset(), ++*copy; }, leftMouseUpMask);
  click(EventType::leftMouseUp);
  EXPECT_EQ(item, nullptr);
  EXPECT_EQ(held.use_count(), 1);
  click(EventType::leftMouseUp);
  keep(item_.get(), "button", nil);
  EXPECT_EQ(bar.statusItem(-2)->button(), nullptr);
  @autoreleasepool {
    keep([NSStatusBar systemStatusBar], "statusItemWithLength:", nil);
    EXPECT_EQ(bar.statusItem(-2), nullptr);
  }
}

TEST_F(CocoaAdaptersTest, NotificationsArriveAsOursUntilTheWorkspaceGoes) {
  const std::map<const char*, Notification> names{{"Launch", Notification::applicationLaunched},
                                                  {"Termination", Notification::applicationTerminated},
                                                  {"Sleep", Notification::willSleep},
                                                  {"Wake", Notification::didWake}};
  std::vector<Notification> received;
  auto workspace = std::make_unique<CocoaWorkspace>();
  for (const auto& [name, ours] : names) {
    workspace->notificationCenter().addObserver(ours, [&](Notification told) { received.push_back(told); });
  }
  for (const auto& [name, ours] : names) {
    post(name);
    EXPECT_EQ(std::exchange(received, {}), std::vector{ours}) << name;
  }
  workspace.reset();
  for (const auto& [name, ours] : names) post(name);
  EXPECT_THAT(received, IsEmpty());
}

NSRunningApplication* standIn(const RunningApplication& of) {
  NSRunningApplication* const made = [[NSRunningApplication new] autorelease];
  if (of.bundleIdentifier) keep(made, "bundleIdentifier", nsText(*of.bundleIdentifier));
  if (of.localizedName) keep(made, "localizedName", nsText(*of.localizedName));
  if (of.bundlePath) keep(made, "bundleURL", [NSURL fileURLWithPath:nsText(*of.bundlePath)]);
  keep(made, "processIdentifier", [NSNumber numberWithInt:of.processIdentifier]);
  return made;
}

TEST_F(CocoaAdaptersTest, OnlyTheEndOfTheMenuBarsHostIsTold) {
  int ends = 0;
  auto observing = std::make_unique<CocoaWorkspace>();
  observing->notificationCenter().addObserver(Notification::menuBarHostTerminated, [&](Notification) { ++ends; });
  @autoreleasepool {
    NSString* const key = @"runningApplications";
    NSWorkspace* const workspace = [NSWorkspace sharedWorkspace];
    NSArray* const all = @[ standIn({"com.apple.MenuBarAgent", 10, {}, {}}), standIn({{}, 12, {}, {}}) ];
    // The whole list as it was, or what went; in the end nobody is told.
    for (const int round : {0, 1, 2}) {
      if (round == 2) observing.reset();
      keep(workspace, "runningApplications", all);
      for (const NSUInteger gone : {1U, 0U}) {
        NSIndexSet* const index = [NSIndexSet indexSetWithIndex:gone];
        if (round != 1) [workspace willChangeValueForKey:key];
        if (round == 1) [workspace willChange:NSKeyValueChangeRemoval valuesAtIndexes:index forKey:key];
        keep(workspace, "runningApplications", [all subarrayWithRange:NSMakeRange(0, gone)]);
        if (round != 1) [workspace didChangeValueForKey:key];
        if (round == 1) [workspace didChange:NSKeyValueChangeRemoval valuesAtIndexes:index forKey:key];
        EXPECT_EQ(std::exchange(ends, 0), gone == 0 && round < 2 ? 1 : 0) << round;
      }
    }
  }
}

TEST_F(CocoaAdaptersTest, ApplicationsAndPlacesAreFoundByProcessAndByIdentifier) {
  CocoaWorkspace workspace;
  const RunningApplication whole{"org.example.One", 11, "Eins ü", "/Applications/One.app"};
  const RunningApplication bare{{}, 12, {}, {}};
  EXPECT_EQ(workspace.runningApplication(13), std::nullopt);
  EXPECT_EQ(workspace.applicationPath("org.example.None"), std::nullopt);
  @autoreleasepool {
    Class const type = [NSRunningApplication class];
    keep([NSWorkspace sharedWorkspace], "runningApplications", @[ standIn(whole), standIn(bare) ]);
    keep([NSWorkspace sharedWorkspace], "URLForApplicationWithBundleIdentifier:", [NSURL fileURLWithPath:@"/Orvo.app"]);
    keep(type, "runningApplicationWithProcessIdentifier:", standIn(bare));
    keep(type, "runningApplicationsWithBundleIdentifier:", @[ standIn(whole) ]);
  }
  EXPECT_THAT(workspace.runningApplications(), ElementsAre(whole, bare));
  EXPECT_EQ(workspace.runningApplication(12), bare);
  EXPECT_THAT(workspace.runningApplications("org.example.One"), ElementsAre(whole));
  EXPECT_EQ(workspace.applicationPath("local.orvo.Orvo"), "/Orvo.app");
  workspace.openURL(fileURL("/Applications/Or vö.app", true), {});
  workspace.openURL("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility", {});
  EXPECT_EQ(
      takeCalls(),
      (Lines{"runningApplicationWithProcessIdentifier: 13", "URLForApplicationWithBundleIdentifier: org.example.None",
             "runningApplicationWithProcessIdentifier: 12", "runningApplicationsWithBundleIdentifier: org.example.One",
             "URLForApplicationWithBundleIdentifier: local.orvo.Orvo",
             "openURL: file:///Applications/Or%20v%C3%B6.app/",
             "openURL: x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"}));
}

TEST_F(CocoaAdaptersTest, TheLoginItemsChangesAndFailuresAreToldAndTextIsCopied) {
  SystemLoginItem login;
  for (const int status : {0, 1, 2, 3, 9}) {
    @autoreleasepool {
      keep([SMAppService mainAppService], "status", [NSNumber numberWithInt:status]);
    }
    EXPECT_EQ(static_cast<int>(login.status()), status);
  }
  EXPECT_EQ(login.registerItem(), std::nullopt);
  EXPECT_EQ(login.unregisterItem(), std::nullopt);
  @autoreleasepool {
    NSDictionary* const information = @{NSLocalizedDescriptionKey : @"Operation not permitted"};
    keep([SMAppService mainAppService], "error",
         [NSError errorWithDomain:@"SMAppServiceErrorDomain" code:1 userInfo:information]);
  }
  EXPECT_EQ(login.registerItem(), "Operation not permitted");
  EXPECT_EQ(login.unregisterItem(), "Operation not permitted");
  login.openSystemSettingsLoginItems();
  CocoaPasteboard pasteboard;
  pasteboard.clearContents();
  pasteboard.setString("Orvo 0.2.0\nmacOS: ü");
  EXPECT_THAT(takeCalls(),
              ElementsAre("registerAndReturnError: nil", "unregisterAndReturnError: nil", "registerAndReturnError: *",
                          "unregisterAndReturnError: *", "openSystemSettingsLoginItems", "clearContents",
                          "setString:forType: Orvo 0.2.0\nmacOS: ü plain"));
}

TEST_F(CocoaAdaptersTest, DefaultsComeBackAsTheyWereStored) {
  FoundationUserDefaults defaults;
  EXPECT_EQ(defaults.data("data"), std::nullopt);
  EXPECT_FALSE(defaults.boolean("flag"));
  for (const Bytes& value : {Bytes(), Bytes("{\"rules\":{}}"), Bytes("\0\xFF", 2)}) {
    defaults.setData("data", value);
    EXPECT_EQ(FoundationUserDefaults().data("data"), value);
  }
  for (const bool value : {true, false}) {
    defaults.setBoolean("flag", value);
    EXPECT_EQ(FoundationUserDefaults().boolean("flag"), value);
  }
  // A default of another kind.
  EXPECT_EQ(defaults.data("flag"), std::nullopt);
}

// A program outside of any bundle has no identifier.
TEST_F(CocoaAdaptersTest, TheProcessKnowsItself) {
  FoundationProcessInfo info;
  EXPECT_EQ(info.processIdentifier(), getpid());
  EXPECT_THAT(info.arguments().front(), ::testing::EndsWith("macos_cocoa_test"));
  EXPECT_FALSE(info.operatingSystemVersionString().empty());
  EXPECT_EQ(FoundationBundle().infoValue("CFBundleShortVersionString"), std::nullopt);
  EXPECT_FALSE(FoundationBundle().path().ends_with('/'));
}

}  // namespace
}  // namespace orvo
