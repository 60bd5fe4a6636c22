#include "support/MemoryEventTaps.h"

#include <gtest/gtest.h>

namespace orvo {
namespace {

TEST(MemoryEventTapsTest, AsksAboutRegionsAndTheUpsThatFollowWhenItHonoursThem) {
  MemoryEventTaps taps;
  taps.honoursRegions = true;
  const auto drop = [](EventType, Event*, void*) -> Event* { return nullptr; };
  const auto port = taps.create({}, {}, {}, 0x6, drop, nullptr);
  taps.tap()->inRunLoop = taps.tap()->enabled = true;
  const auto passes = [&](EventType type, double x) {
    MemoryEvent event(type, {x, 5});
    return taps.send(event);
  };
  EXPECT_TRUE(passes(EventType::leftMouseDown, 5));
  port->setRegionsOfInterest({{0, 0, 10, 10}});
  EXPECT_TRUE(passes(EventType::leftMouseDown, 10) && passes(EventType::leftMouseUp, 5));
  EXPECT_FALSE(passes(EventType::leftMouseDown, 5));
  port->setRegionsOfInterest({});
  EXPECT_FALSE(passes(EventType::leftMouseUp, 500));
}

}  // namespace
}  // namespace orvo
