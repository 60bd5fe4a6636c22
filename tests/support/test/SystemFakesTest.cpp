#include "support/AsciiText.h"
#include "support/MemoryEventTaps.h"
#include "support/MemoryFramework.h"

#include <gtest/gtest.h>

namespace orvo {
namespace {

TEST(AsciiTextTest, OrdersAsAFileBrowserDoes) {
  const std::vector<std::string> ordered{"", "1", "02", "10", "alpha", "Beta", "Item", "item 2", "Item 10", "item 10b"};
  for (std::size_t left = 0; left < ordered.size(); ++left) {
    for (std::size_t right = 0; right < ordered.size(); ++right) {
      EXPECT_EQ(AsciiText().standardCompare(ordered[left], ordered[right]) < 0, left < right)
          << ordered[left] << " " << ordered[right];
    }
  }
}

TEST(MemoryEventTapsTest, AsksAboutRegionsAndTheUpsThatFollowWhenItHonoursThem) {
  MemoryEventTaps taps;
  taps.honoursRegions = true;
  const auto drop = [](EventType, Event*, void*) -> Event* { return nullptr; };
  const auto port = taps.create(EventTapLocation::session, EventTapPlacement::headInsert, EventTapOptions::activeFilter,
                                0x6, drop, nullptr);
  port->addToMainRunLoop();
  port->enable();
  const auto passes = [&](EventType type, double x) {
    MemoryEvent event(type, {x, 5});
    return taps.send(event);
  };
  EXPECT_TRUE(passes(EventType::leftMouseDown, 5));
  port->setRegionsOfInterest({{0, 0, 10, 10}});
  EXPECT_TRUE(passes(EventType::leftMouseDown, 10));
  EXPECT_TRUE(passes(EventType::leftMouseUp, 5));
  EXPECT_FALSE(passes(EventType::leftMouseDown, 5));
  port->setRegionsOfInterest({});
  EXPECT_FALSE(passes(EventType::leftMouseUp, 500));
}

TEST(MemoryFrameworkTest, ConcealsFromActivationUntilTheAssertionEnds) {
  MemoryFramework framework;
  auto configuration = framework.makeConfiguration(nullptr, {}, {"app"});
  const auto invalidated = framework.makeAssertion(nullptr);
  auto dropped = framework.makeAssertion(nullptr);
  for (const auto& assertion : {invalidated, dropped}) framework.activate(*assertion, configuration, {});
  EXPECT_EQ(framework.active().size(), 2U);
  framework.invalidate(*invalidated);
  ASSERT_EQ(framework.active().size(), 1U);
  EXPECT_EQ(framework.active()[0].assertion, dropped.get());
  dropped.reset();
  configuration.reset();
  EXPECT_TRUE(framework.active().empty());
  EXPECT_EQ(framework.liveObjects(), 1U);
}

}  // namespace
}  // namespace orvo
