#include "sensing/SystemControlRelay.h"

#include "support/ManualMainQueue.h"
#include "support/MemoryEventTaps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace orvo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using enum EventType;

constexpr Point onClock{1850, 10};

class SystemControlRelayTest : public testing::Test {
 protected:
  SystemControlRelayTest() {
    relay_->onReveal = [this] { postedAtReveal_ = posted(); };
    relay_->setSystemFrames({{1700, 0, 40, 24}, {1800, 0, 80, 24}});
  }
  // A relay in the middle of a hide, as the model leaves it.
  void conceal() {
    relay_->install();
    relay_->setConcealed(true);
  }
  bool passes(EventType type, Point point, int serial = 0) {
    MemoryEvent event(type, point, serial);
    return taps_.send(event);
  }
  std::vector<int> posted() const {
    std::vector<int> serials;
    for (const MemoryEvent& event : taps_.posted) serials.push_back(event.serial);
    return serials;
  }

  ManualMainQueue queue_;
  MemoryEventTaps taps_;
  // Absent before the first reveal.
  std::optional<std::vector<int>> postedAtReveal_;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
};

TEST_F(SystemControlRelayTest, MakesOneActiveSessionTapForMouseButtons) {
  taps_.creationFails = true;
  relay_->install();
  EXPECT_FALSE(relay_->isInstalled());
  taps_.creationFails = false;
  relay_->install();
  relay_->install();
  ASSERT_EQ(taps_.created.size(), 1U);
  EXPECT_EQ(taps_.tap()->mask, 0x1EU);
  EXPECT_TRUE(taps_.tap()->enabled && taps_.tap()->inRunLoop && relay_->isInstalled());
  relay_->stop();
  EXPECT_FALSE(taps_.tap()->valid || taps_.tap()->inRunLoop || relay_->isInstalled());
  relay_->stop();
  taps_.sourceFails = true;
  relay_->install();
  EXPECT_TRUE(relay_->isInstalled() && taps_.tap()->enabled) << "without a run-loop source";
  relay_->stop();
}

TEST_F(SystemControlRelayTest, HoldsAClickRevealsAndReplaysItAfter180Milliseconds) {
  conceal();
  MemoryEvent press(rightMouseDown, {1800, 0}, 1);
  EXPECT_FALSE(taps_.send(press));
  EXPECT_TRUE(postedAtReveal_);
  queue_.advance(100ms);
  EXPECT_FALSE(passes(rightMouseUp, {10, 10}, 2));
  queue_.advance(79ms);
  EXPECT_THAT(posted(), ElementsAre());
  queue_.advance(1ms);
  EXPECT_THAT(posted(), ElementsAre(1, 2));
  EXPECT_EQ(press.userData, 0) << "the held original was marked";
}

TEST_F(SystemControlRelayTest, LetsClicksBesideTheControlsPass) {
  conceal();
  for (const Point outside : {Point{1880, 10}, Point{1850, 24}, Point{1799.9, 0}}) {
    EXPECT_TRUE(passes(leftMouseDown, outside)) << outside.x;
  }
}

TEST_F(SystemControlRelayTest, RecoversWhenTheSystemDisablesTheTap) {
  conceal();
  EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
  postedAtReveal_.reset();
  taps_.disable(tapDisabledByTimeout);
  EXPECT_EQ(postedAtReveal_, std::vector<int>{}) << "revealed before the replay";
  EXPECT_THAT(posted(), ElementsAre(1));
  EXPECT_TRUE(taps_.tap()->enabled);
  EXPECT_FALSE(passes(leftMouseUp, onClock, 2));
  EXPECT_THAT(posted(), ElementsAre(1, 2));
}

TEST_F(SystemControlRelayTest, RevealsForNobodyAndReplaysNothingOnceItIsGone) {
  conceal();
  relay_->onReveal = nullptr;
  EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
  relay_.reset();
  EXPECT_FALSE(taps_.tap()->valid);
  queue_.advance(180ms);
  EXPECT_THAT(posted(), ElementsAre());
}

TEST_F(SystemControlRelayTest, EndsTheProcessWhenCalledFromAnotherThread) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  conceal();
  EXPECT_DEATH(std::thread([this] { passes(leftMouseDown, onClock); }).join(), "");
}

}  // namespace
}  // namespace orvo
