// Each test ends with every reference given back and nothing used after its end.
#include "app/GlobalShortcut.h"
#include "platform/macos/quartz/AxAccessibility.h"
#include "platform/macos/quartz/CarbonHotKeys.h"
#include "platform/macos/quartz/FakeQuartz.h"
#include "platform/macos/quartz/QuartzEventTaps.h"
#include "sensing/SystemControlRelay.h"
#include "support/ManualMainQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo {
namespace {

using namespace std::chrono_literals;
using fake::Kind;
using fake::Object;
using fake::world;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class QuartzAdaptersTest : public ::testing::Test {
 protected:
  void SetUp() override { world() = {}; }
  void TearDown() override {
    EXPECT_THAT(world().live, IsEmpty());
    EXPECT_EQ(world().misuses, 0);
  }
  static std::vector<std::string> takeCalls() { return std::exchange(world().calls, {}); }
};

class AxAccessibilityTest : public QuartzAdaptersTest {
 protected:
  AxAccessibility accessibility_;
};

TEST_F(AxAccessibilityTest, TrustIsAskedWithAndWithoutAPrompt) {
  for (const bool trusted : {false, true}) {
    world().trusted = trusted;
    EXPECT_EQ(std::as_const(accessibility_).isProcessTrusted(), trusted);
    EXPECT_EQ(accessibility_.isProcessTrusted(true), trusted);
    EXPECT_EQ(accessibility_.isProcessTrusted(false), trusted);
  }
  EXPECT_THAT(world().prompts, ElementsAre(true, false, true, false));
}

// What an attribute's value is, and the number of the alternative that it becomes; -1 for absent.
struct AttributeCase {
  const char* name;
  AXError error;
  std::function<Object*()> value;
  int alternative;
};

TEST_F(AxAccessibilityTest, EveryKindOfAttributeIsReadAndGivenBack) {
  const auto broken = [] {
    Object* made = fake::rectangle({});
    made->unpacks = false;
    return made;
  };
  const std::vector<AttributeCase> cases{{"text", 0, [] { return fake::text("com.apple.menuextra.clock é"); }, 1},
                                         {"empty text", 0, [] { return fake::text(""); }, 1},
                                         {"rectangle", 0,
                                          [] {
                                            return fake::rectangle({{1, -2}, {3, 4}});
                                          },
                                          2},
                                         {"not a rectangle", 0, broken, 0},
                                         {"no elements", 0, [] { return fake::array({}); }, 3},
                                         {"elements", 0,
                                          [] {
                                            return fake::array({new Object(Kind::element), new Object(Kind::element)});
                                          },
                                          3},
                                         {"mixed", 0,
                                          [] {
                                            return fake::array({new Object(Kind::element), fake::text("")});
                                          },
                                          0},
                                         {"another kind", 0, [] { return new Object(Kind::number); }, 0},
                                         {"error", -25205, [] { return static_cast<Object*>(nullptr); }, -1},
                                         {"error with a value", -25204, [] { return fake::text("half"); }, -1},
                                         {"success without one", 0, [] { return static_cast<Object*>(nullptr); }, -1}};
  const auto element = accessibility_.applicationElement(7);
  for (const AttributeCase& each : cases) {
    world().error = each.error;
    world().attribute = [&](const std::string& name) { return name == "AXFrame" ? each.value() : nullptr; };
    const auto value = element->copyAttributeValue("AXFrame");
    EXPECT_EQ(value ? static_cast<int>(value->index()) : -1, each.alternative) << each.name;
    if (value && each.name == std::string("text")) {
      EXPECT_EQ(std::get<std::string>(*value), "com.apple.menuextra.clock é");
    }
    if (value && each.alternative == 2) {
      EXPECT_EQ(std::get<Rect>(*value), (Rect{1, -2, 3, 4}));
    }
  }
  EXPECT_FALSE(element->copyAttributeValue("\xFF"));
}

TEST_F(AxAccessibilityTest, ChildrenOutliveTheListTheyCameIn) {
  world().attribute = [](const std::string&) { return fake::array({new Object(Kind::element)}); };
  const auto value = accessibility_.applicationElement(7)->copyAttributeValue("AXChildren");
  const auto child = std::get<std::vector<AccessibilityElementRef>>(*value).front();
  EXPECT_EQ(child->processIdentifier(), 7);
  child->setMessagingTimeout(0.2F);
  EXPECT_EQ(world().timeout, 0.2F);
  world().error = -25202;
  EXPECT_EQ(child->processIdentifier(), std::nullopt);
}

TEST_F(AxAccessibilityTest, AnElementThatCouldNotBeMadeAnswersNothing) {
  world().makesElements = false;
  const auto element = accessibility_.applicationElement(7);
  element->setMessagingTimeout(1);
  EXPECT_EQ(element->processIdentifier(), std::nullopt);
  EXPECT_FALSE(element->copyAttributeValue("AXFrame"));
}

class QuartzEventTapsTest : public QuartzAdaptersTest {
 protected:
  void SetUp() override {
    QuartzAdaptersTest::SetUp();
    relay_->setSystemFrames({{100, 0, 50, 24}});
    relay_->setConcealed(true);
    relay_->onReveal = [this] { ++reveals_; };
  }
  void TearDown() override {
    if (relay_) relay_->stop();
    QuartzAdaptersTest::TearDown();
  }

  static constexpr CGPoint onClock{120, 10};
  static constexpr CGPoint elsewhere{10, 10};
  ManualMainQueue queue_;
  QuartzEventTaps taps_;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
  int reveals_ = 0;
};

TEST_F(QuartzEventTapsTest, ATapIsMadeAddedEnabledAndTakenDownInOrder) {
  relay_->install();
  EXPECT_THAT(takeCalls(), ElementsAre("create 1 0 0 30", "source 0", "add 1", "enable 1"));
  relay_->stop();
  EXPECT_THAT(takeCalls(), ElementsAre("remove 1", "invalidate"));
  world().makesTap = false;
  relay_->install();
  EXPECT_FALSE(relay_->isInstalled());
}

TEST_F(QuartzEventTapsTest, ATapWithoutASourceIsEnabledAndTakenDown) {
  world().makesSource = false;
  relay_->install();
  EXPECT_TRUE(relay_->isInstalled());
  relay_->stop();
  EXPECT_THAT(takeCalls(), ElementsAre("create 1 0 0 30", "source 0", "enable 1", "invalidate"));
}

TEST_F(QuartzEventTapsTest, AHeldClickComesBackMarkedAndPassesItsOwnTap) {
  relay_->install();
  EXPECT_TRUE(fake::click(1, elsewhere));
  EXPECT_TRUE(fake::click(2, elsewhere));
  EXPECT_FALSE(fake::click(1, onClock));
  EXPECT_EQ(reveals_, 1);
  EXPECT_FALSE(fake::click(2, onClock));
  takeCalls();
  queue_.advance(180ms);
  const std::string mark = "field 42 " + std::to_string(0x5155494C4C4554);
  EXPECT_THAT(takeCalls(), ElementsAre(mark, "post 1 120", mark, "post 1 120"));
  EXPECT_THAT(world().passedReplays, ElementsAre(1, 2));
}

TEST_F(QuartzEventTapsTest, WithoutACopyAClickPasses) {
  relay_->install();
  world().makesCopies = false;
  EXPECT_TRUE(fake::click(1, onClock));
  EXPECT_EQ(reveals_, 0);
}

TEST_F(QuartzEventTapsTest, ADisabledTapIsEnabledAgainWhetherItsNewsHasAnEventOrNone) {
  relay_->install();
  for (const CGEventType type : {0xFFFFFFFEU, 0xFFFFFFFFU}) {
    for (const bool withEvent : {false, true}) {
      EXPECT_TRUE(fake::disableTap(type, withEvent)) << type << withEvent;
      EXPECT_EQ(takeCalls().back(), "enable 1");
    }
  }
  EXPECT_EQ(reveals_, 4);
}

TEST_F(QuartzEventTapsTest, ATapMayGoWhileItIsBeingAsked) {
  relay_->install();
  relay_->onReveal = [this] { relay_->stop(); };
  EXPECT_FALSE(fake::click(1, onClock));
  EXPECT_FALSE(world().sourceAdded);
}

TEST_F(QuartzEventTapsTest, APortThatIsDroppedTakesItsSourceAlong) {
  const EventTapCallback pass = [](EventType, Event* event, void*) { return event; };
  auto port = taps_.create(EventTapLocation::session, EventTapPlacement::headInsert, EventTapOptions::activeFilter, 2,
                           pass, nullptr);
  port->addToMainRunLoop();
  port.reset();
  EXPECT_THAT(takeCalls(), ElementsAre("create 1 0 0 2", "source 0", "add 1", "remove 1", "invalidate"));
}

class CarbonHotKeysTest : public QuartzAdaptersTest {
 protected:
  static OSStatus press() { return world().handler(nullptr, nullptr, world().handlerData); }

  const std::string install_ = "install 1 1 " + std::to_string(0x6B657962) + " 5";
  const std::string register_ = "register 11 6400 " + std::to_string(0x5155494C) + " 1 1 0";
  CarbonHotKeys hotKeys_;
};

TEST_F(CarbonHotKeysTest, ThePressReachesTheShortcutAndTheEndGivesBothBack) {
  int presses = 0;
  auto shortcut = std::make_unique<GlobalShortcut>(hotKeys_);
  EXPECT_TRUE(shortcut->isRegistered());
  EXPECT_EQ(press(), 0);
  shortcut->onPress = [&] { ++presses; };
  EXPECT_EQ(press(), 0);
  EXPECT_EQ(presses, 1);
  shortcut.reset();
  EXPECT_THAT(takeCalls(), ElementsAre(install_, register_, "unregister 8", "removeHandler 7"));
}

TEST_F(CarbonHotKeysTest, WhatWasRefusedIsNotGivenBack) {
  world().registerStatus = -9878;
  EXPECT_FALSE(GlobalShortcut(hotKeys_).isRegistered());
  EXPECT_THAT(takeCalls(), ElementsAre(install_, register_, "removeHandler 7"));
  world().installStatus = -9860;
  EXPECT_FALSE(GlobalShortcut(hotKeys_).isRegistered());
  EXPECT_THAT(takeCalls(), ElementsAre(install_));
}

TEST_F(CarbonHotKeysTest, AHandlerMayGoWhileItIsBeingCalledAndSeesItsOwnData) {
  struct Installed {
    CarbonHotKeys& hotKeys;
    EventHandlerRef handler;
  } installed{hotKeys_, EventHandlerRef::none};
  const EventHandlerFunction remove = [](void* data) -> HotKeyStatus {
    if (data == nullptr) return eventNotHandledErr;
    auto& mine = *static_cast<Installed*>(data);
    mine.hotKeys.removeEventHandler(mine.handler);
    return 3;
  };
  ASSERT_EQ(hotKeys_.installEventHandler(remove, {1, 2}, &installed, installed.handler), 0);
  EXPECT_EQ(press(), 3);
  ASSERT_EQ(hotKeys_.installEventHandler(remove, {1, 2}, nullptr, installed.handler), 0);
  EXPECT_EQ(press(), eventNotHandledErr);
}

}  // namespace
}  // namespace orvo
