#include "app/AppDelegate.h"
#include "model/OrvoModel.h"
#include "platform/macos/appkit/CocoaApplication.h"
#include "platform/macos/appkit/CocoaPasteboard.h"
#include "platform/macos/appkit/CocoaStatusBar.h"
#include "platform/macos/appkit/CocoaWorkspace.h"
#include "platform/macos/appkit/SystemLoginItem.h"
#include "platform/macos/cocoa/FakeAppKit.h"
#include "platform/macos/foundation/FoundationBundle.h"
#include "platform/macos/foundation/FoundationProcessInfo.h"
#include "platform/macos/foundation/FoundationUserDefaults.h"
#include "support/MemoryPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace orvo {
namespace {

using fake::appKit;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> takeCalls() { return std::exchange(appKit().calls, {}); }

class CocoaAdaptersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::prepare();
    ::testing::internal::CaptureStderr();
  }
  // Threads of ours have no autorelease pool but what an adapter opens; GNUstep tells of a missing one.
  void TearDown() override {
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), ::testing::Not(::testing::HasSubstr("without pool")));
  }
};

// The real delegate and model over AppKit's application and status bar.
class CocoaDelegateTest : public CocoaAdaptersTest {
 protected:
  void start() {
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
    fake::launch();
    memory_.settle();
    delegate_->model().setRule(IconRule::hidden, "org.example.One");
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
};

TEST_F(CocoaDelegateTest, LaunchingMakesTheItemAndTheMenuAsAppKitWantsThem) {
  start();
  EXPECT_THAT(
      takeCalls(),
      ElementsAre("setDelegate: *", "run", "setActivationPolicy: 1", "setMainMenu: *", "statusItemWithLength: -2",
                  "setAutosaveName: Quillet.Toggle", "setBehavior: 0", "setVisible: 1", "setTarget: *",
                  "setAction: send:", "sendActionOn: 20", "setAccessibilityLabel: Orvo menu bar manager",
                  "setAccessibilityIdentifier: Orvo.NativeMenuBarToggle", "setImage: chevron.right Orvo",
                  "setToolTip: Hide selected icons · Right-click for settings"));
  EXPECT_THAT(fake::mainMenu(), ElementsAre("", "[Orvo", "Settings… ,", "-", "Quit Orvo q", "", "[Edit", "Undo z",
                                            "Cut x", "Copy c", "Paste v", "Select All a"));
}

TEST_F(CocoaDelegateTest, ClicksAndTheMenuReachTheDelegateAgainAndAgain) {
  start();
  takeCalls();
  fake::click(EventType::leftMouseDown);
  EXPECT_EQ(state(), BarState::visible);
  fake::click(EventType::leftMouseUp);
  EXPECT_EQ(state(), BarState::applying);
  EXPECT_THAT(takeCalls(), ElementsAre("setImage: chevron.left Orvo", "setToolTip: Show hidden icons · ⌃⌥⌘B"));
  fake::click(EventType::rightMouseUp);
  EXPECT_THAT(takeCalls(), ElementsAre("popUp 1 0 3 0"));
  EXPECT_THAT(appKit().poppedUp, ElementsAre("Show all icons", "Settings…", "-", "Quit Orvo"));
  appKit().choice = "Show all icons";
  fake::click(EventType::rightMouseUp);
  EXPECT_EQ(state(), BarState::visible);
  delegate_->model().setRule(IconRule::visible, "org.example.One");
  memory_.accessibility.trusted = false;
  memory_.mainQueue.advance(std::chrono::seconds(3));
  fake::click(EventType::rightMouseUp);
  EXPECT_EQ(appKit().poppedUp.front(), "Hide selected icons off");
}

TEST_F(CocoaDelegateTest, KeysReachTheDelegateOrTheFieldInFocus) {
  start();
  takeCalls();
  fake::press(",");
  EXPECT_EQ(memory_.windows.shown, 1);
  EXPECT_THAT(takeCalls(), ::testing::Contains("activateIgnoringOtherApps: 1"));
  fake::press("c");
  EXPECT_THAT(takeCalls(), ElementsAre("keyDown: *"));
  fake::press("q");
  EXPECT_THAT(takeCalls(), ::testing::Contains("terminate"));
}

TEST_F(CocoaDelegateTest, TheSystemsMessagesReachTheDelegate) {
  start();
  EXPECT_FALSE(application_.currentEventType());
  EXPECT_FALSE(fake::terminatesAfterLastWindow());
  fake::click(EventType::leftMouseUp);
  EXPECT_EQ(state(), BarState::applying);
  EXPECT_TRUE(fake::reopen());
  EXPECT_EQ(state(), BarState::visible);
  EXPECT_EQ(memory_.windows.shown, 1);
  fake::click(EventType::leftMouseUp);
  fake::post("Screens");
  EXPECT_EQ(state(), BarState::visible);
  fake::click(EventType::leftMouseUp);
  application_.terminate();
  EXPECT_EQ(state(), BarState::visible);
}

TEST_F(CocoaDelegateTest, TheEndTakesTheItemAwayAndLetsEverythingGo) {
  start();
  const std::weak_ptr<AppDelegate> gone = delegate_;
  takeCalls();
  application_.setDelegate(nullptr);
  delegate_.reset();
  EXPECT_TRUE(gone.expired());
  EXPECT_THAT(takeCalls(), ElementsAre("setDelegate: nil", "setTarget: nil", "removeStatusItem: *", "gone"));
}

TEST_F(CocoaAdaptersTest, AnItemOrAButtonMayBeRefusedAndAnActionGoesWithItsItem) {
  CocoaStatusBar bar;
  appKit().grantsButtons = false;
  EXPECT_EQ(bar.statusItem(-2)->button(), nullptr);
  appKit().grantsItems = false;
  EXPECT_EQ(bar.statusItem(-2), nullptr);
  appKit().grantsItems = appKit().grantsButtons = true;
  const auto held = std::make_shared<int>();
  auto item = bar.statusItem(-2);
  // An action may remove the item that it belongs to.
  item->button()->setAction([&, copy = held] { item.reset(), ++*copy; }, leftMouseUpMask);
  fake::click(EventType::leftMouseUp);
  EXPECT_EQ(item, nullptr);
  EXPECT_EQ(held.use_count(), 1);
  fake::click(EventType::leftMouseUp);
}

TEST_F(CocoaAdaptersTest, NotificationsArriveAsOursUntilTheWorkspaceGoes) {
  const std::map<std::string, Notification> names{{"Launch", Notification::applicationLaunched},
                                                  {"Termination", Notification::applicationTerminated},
                                                  {"Sleep", Notification::willSleep},
                                                  {"Wake", Notification::didWake}};
  std::vector<Notification> received;
  auto workspace = std::make_unique<CocoaWorkspace>();
  for (const auto& [name, ours] : names) {
    workspace->notificationCenter().addObserver(ours, [&](Notification told) { received.push_back(told); });
  }
  for (const auto& [name, ours] : names) {
    fake::post(name.c_str());
    EXPECT_EQ(std::exchange(received, {}), std::vector{ours}) << name;
  }
  workspace.reset();
  for (const auto& [name, ours] : names) fake::post(name.c_str());
  EXPECT_THAT(received, IsEmpty());
}

TEST_F(CocoaAdaptersTest, OnlyTheEndOfTheMenuBarsHostIsTold) {
  const RunningApplication host{"com.apple.MenuBarAgent", 10, {}, {}};
  const RunningApplication other{"org.example.One", 11, {}, {}};
  const RunningApplication nameless{{}, 12, {}, {}};
  int ends = 0;
  CocoaWorkspace workspace;
  workspace.notificationCenter().addObserver(Notification::menuBarHostTerminated, [&](Notification) { ++ends; });
  for (const bool removalOnly : {false, true}) {
    fake::setRunning({host, other, nameless}, false);
    fake::setRunning({host, nameless}, removalOnly);
    EXPECT_EQ(ends, 0) << removalOnly;
    fake::setRunning({nameless}, removalOnly);
    EXPECT_EQ(std::exchange(ends, 0), 1) << removalOnly;
  }
}

TEST_F(CocoaAdaptersTest, ApplicationsAreFoundByProcessAndByIdentifier) {
  CocoaWorkspace workspace;
  const RunningApplication whole{"org.example.One", 11, "Eins ü", "/Applications/One.app"};
  const RunningApplication bare{{}, 12, {}, {}};
  appKit().running = {whole, bare};
  EXPECT_THAT(workspace.runningApplications(), ElementsAre(whole, bare));
  EXPECT_EQ(workspace.runningApplication(12), bare);
  EXPECT_EQ(workspace.runningApplication(13), std::nullopt);
  EXPECT_THAT(workspace.runningApplications("org.example.One"), ElementsAre(whole));
  EXPECT_THAT(workspace.runningApplications("org.example.one"), IsEmpty());
  EXPECT_EQ(workspace.applicationPath("local.orvo.Orvo"), "/Applications/Orvo.app");
  EXPECT_EQ(workspace.applicationPath("org.example.None"), std::nullopt);
  workspace.openURL(fileURL("/Applications/Or vö.app", true), {});
  workspace.openURL("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility", {});
  EXPECT_THAT(takeCalls(),
              ElementsAre("openURL: file:///Applications/Or%20v%C3%B6.app/",
                          "openURL: x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"));
}

TEST_F(CocoaAdaptersTest, TheLoginItemsChangesAndFailuresAreTold) {
  SystemLoginItem item;
  for (const auto& status : {LoginItemStatus::notRegistered, LoginItemStatus::requiresApproval,
                             LoginItemStatus::notFound, static_cast<LoginItemStatus>(9)}) {
    appKit().loginStatus = static_cast<long>(status);
    EXPECT_EQ(item.status(), status);
  }
  EXPECT_EQ(item.registerItem(), std::nullopt);
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
  EXPECT_EQ(item.unregisterItem(), std::nullopt);
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
  appKit().loginError = "Operation not permitted";
  EXPECT_EQ(item.registerItem(), "Operation not permitted");
  EXPECT_EQ(item.unregisterItem(), "Operation not permitted");
  item.openSystemSettingsLoginItems();
  CocoaPasteboard pasteboard;
  pasteboard.clearContents();
  pasteboard.setString("Orvo 0.2.0\nmacOS: ü");
  EXPECT_THAT(takeCalls(), ElementsAre("openSystemSettingsLoginItems", "clearContents",
                                       "setString:forType: Orvo 0.2.0\nmacOS: ü plain"));
}

TEST_F(CocoaAdaptersTest, DefaultsComeBackAsTheyWereStored) {
  FoundationUserDefaults defaults;
  EXPECT_EQ(defaults.data("Quillet.Preferences.v1"), std::nullopt);
  EXPECT_FALSE(defaults.boolean("Orvo.HasOpenedSettings"));
  for (const Bytes& value : {Bytes(), Bytes("{\"rules\":{}}"), Bytes("\0\xFF", 2)}) {
    defaults.setData("Quillet.Preferences.v1", value);
    EXPECT_EQ(FoundationUserDefaults().data("Quillet.Preferences.v1"), value);
  }
  for (const bool value : {true, false}) {
    defaults.setBoolean("Orvo.HasOpenedSettings", value);
    EXPECT_EQ(FoundationUserDefaults().boolean("Orvo.HasOpenedSettings"), value);
  }
  // A default of another kind.
  EXPECT_EQ(defaults.data("Orvo.HasOpenedSettings"), std::nullopt);
}

TEST_F(CocoaAdaptersTest, TheProcessKnowsItself) {
  FoundationProcessInfo info;
  EXPECT_EQ(info.processIdentifier(), getpid());
  EXPECT_THAT(info.arguments().front(), ::testing::EndsWith("macos_cocoa_test"));
  EXPECT_FALSE(info.operatingSystemVersionString().empty());
  // A program outside of any bundle has no identifier.
  EXPECT_EQ(FoundationBundle().infoValue("CFBundleShortVersionString"), std::nullopt);
  EXPECT_FALSE(FoundationBundle().path().ends_with('/'));
}

}  // namespace
}  // namespace orvo
