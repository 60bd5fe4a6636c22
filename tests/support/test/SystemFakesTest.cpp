#include "support/AsciiText.h"
#include "support/MemoryAccessibility.h"
#include "support/MemoryEventTaps.h"
#include "support/MemoryFramework.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(AsciiText, OrdersAsAFileBrowserDoes) {
  const AsciiText text;
  const std::vector<std::string> ordered{"",     "1",    "02",     "10",       "alpha",
                                         "Beta", "Item", "item 2", "Item 010", "item 10b"};
  for (std::size_t left = 0; left < ordered.size(); ++left) {
    for (std::size_t right = 0; right < ordered.size(); ++right) {
      const int order = text.standardCompare(ordered[left], ordered[right]);
      EXPECT_EQ(order < 0, left < right) << ordered[left] << " " << ordered[right];
      EXPECT_EQ(order == 0, left == right) << ordered[left] << " " << ordered[right];
    }
  }
  EXPECT_EQ(text.standardCompare("aB1", "Ab01"), 0);
  EXPECT_TRUE(text.caseInsensitiveContains("Menu BAR", "u b"));
  EXPECT_FALSE(text.caseInsensitiveContains("Menu", ""));
}

TEST(MemoryAccessibility, AnswersWhatWasBuiltAndNothingElse) {
  MemoryAccessibility accessibility;
  accessibility.setTree(7, element(7)->withIdentifier("root")->withChildren({element()}));
  const auto root = accessibility.applicationElement(7);
  EXPECT_EQ(std::get<std::string>(root->copyAttributeValue("AXIdentifier").value()), "root");
  const auto children = std::get<std::vector<AccessibilityElementRef>>(root->copyAttributeValue("AXChildren").value());
  EXPECT_EQ(children.at(0)->processIdentifier(), std::nullopt);
  EXPECT_FALSE(root->copyAttributeValue("AXFrame"));
  EXPECT_FALSE(accessibility.applicationElement(8)->copyAttributeValue("AXChildren"));
  EXPECT_THAT(accessibility.asked(), ElementsAre(7, 8));
  accessibility.trusted = false;
  EXPECT_FALSE(accessibility.isProcessTrusted(true));
  EXPECT_EQ(accessibility.prompts, 1);
}

Event* dropPresses(EventType type, Event* event, void* userInfo) {
  ++*static_cast<int*>(userInfo);
  return type == EventType::leftMouseDown ? nullptr : event;
}

class MemoryEventTapsTest : public testing::Test {
 protected:
  std::unique_ptr<EventTapPort> make() {
    return taps_.create(EventTapLocation::session, EventTapPlacement::headInsert, EventTapOptions::activeFilter, 0x6,
                        dropPresses, &calls_);
  }
  bool send(EventType type, Point point = {5, 5}) {
    MemoryEvent event(type, point);
    return taps_.send(event);
  }

  MemoryEventTaps taps_;
  int calls_ = 0;
};

TEST_F(MemoryEventTapsTest, AsksOnlyAValidEnabledScheduledTapAboutItsOwnEvents) {
  EXPECT_TRUE(send(EventType::leftMouseDown));
  auto port = make();
  EXPECT_TRUE(send(EventType::leftMouseDown));
  EXPECT_TRUE(port->addToMainRunLoop());
  EXPECT_TRUE(send(EventType::leftMouseDown));
  port->enable();
  EXPECT_FALSE(send(EventType::leftMouseDown));
  EXPECT_TRUE(send(EventType::leftMouseUp));
  EXPECT_TRUE(send(EventType::rightMouseDown));
  EXPECT_EQ(calls_, 2);
  taps_.disable(EventType::tapDisabledByTimeout);
  EXPECT_EQ(calls_, 3);
  EXPECT_TRUE(send(EventType::leftMouseDown));
  port->enable();
  port.reset();
  EXPECT_TRUE(send(EventType::leftMouseDown));
  taps_.sourceFails = true;
  EXPECT_FALSE(make()->addToMainRunLoop());
  taps_.creationFails = true;
  EXPECT_EQ(make(), nullptr);
}

TEST_F(MemoryEventTapsTest, AsksAboutRegionsAndTheUpsThatFollowWhenItHonoursThem) {
  taps_.honoursRegions = true;
  const auto port = make();
  port->addToMainRunLoop();
  port->enable();
  EXPECT_TRUE(send(EventType::leftMouseDown));
  port->setRegionsOfInterest({{0, 0, 10, 10}});
  EXPECT_TRUE(send(EventType::leftMouseDown, {10, 5}));
  EXPECT_TRUE(send(EventType::leftMouseUp));
  EXPECT_EQ(calls_, 0);
  EXPECT_FALSE(send(EventType::leftMouseDown));
  port->setRegionsOfInterest({});
  EXPECT_TRUE(send(EventType::leftMouseUp, {500, 5}));
  EXPECT_EQ(calls_, 2);
}

TEST(MemoryFramework, ConcealsFromActivationUntilTheAssertionEnds) {
  MemoryFramework framework;
  const auto* configurationType = framework.classNamed("MBAssessmentModeConfiguration");
  const auto* assertionType = framework.classNamed("MBAssessmentModeAssertion");
  EXPECT_EQ(framework.classNamed("Other"), nullptr);
  EXPECT_FALSE(framework.instancesRespondTo(configurationType, "invalidate"));
  const std::vector<int> items{1};
  auto configuration = framework.makeConfiguration(configurationType, items, {"app"});
  const auto invalidated = framework.makeAssertion(assertionType);
  auto dropped = framework.makeAssertion(assertionType);
  int answers = 0;
  for (const auto& assertion : {invalidated, dropped}) {
    framework.activate(*assertion, configuration, [&](const auto&) { ++answers; });
  }
  EXPECT_EQ(framework.active().size(), 2U);
  framework.invalidate(*invalidated);
  ASSERT_EQ(framework.active().size(), 1U);
  EXPECT_EQ(framework.active()[0].assertion, dropped.get());
  dropped.reset();
  EXPECT_THAT(framework.active(), IsEmpty());
  framework.answer(0);
  framework.answer(0);
  framework.forgetCompletion(1);
  framework.answer(1);
  EXPECT_EQ(answers, 2);
  configuration.reset();
  EXPECT_EQ(framework.liveObjects(), 1U);
}

}  // namespace
}  // namespace orvo
