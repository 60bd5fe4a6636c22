#include "sensing/SystemControlRelay.h"

#include "support/ManualMainQueue.h"
#include "support/MemoryEventTaps.h"

#include <gtest/gtest.h>

#include <thread>

namespace orvo {
namespace {

using namespace std::chrono_literals;
using enum EventType;

class SystemControlRelayTest : public testing::Test {
 protected:
  // A relay in the middle of a hide, as the model leaves it.
  void conceal() {
    relay_->setSystemFrames({{1800, 0, 80, 24}});
    relay_->install();
    relay_->setConcealed(true);
  }
  bool passes(EventType type, int serial = 0) {
    MemoryEvent event(type, {1850, 10}, serial);
    return taps_.send(event);
  }

  ManualMainQueue queue_;
  MemoryEventTaps taps_;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
};

TEST_F(SystemControlRelayTest, MakesOneActiveSessionTapForMouseButtons) {
  taps_.creationFails = true;
  relay_->install();
  EXPECT_FALSE(relay_->isInstalled());
  taps_.creationFails = false;
  relay_->install();
  relay_->install();
  EXPECT_EQ(taps_.created, 1);
  EXPECT_EQ(taps_.mask, 0x1EU);
  EXPECT_TRUE(taps_.enabled && taps_.inRunLoop && relay_->isInstalled());
  relay_->stop();
  EXPECT_FALSE(taps_.valid || taps_.inRunLoop || relay_->isInstalled());
  relay_->stop();
  taps_.sourceFails = true;
  relay_->install();
  EXPECT_TRUE(relay_->isInstalled() && taps_.enabled) << "without a run-loop source";
  relay_->stop();
}

TEST_F(SystemControlRelayTest, HoldsAClickFor180MillisecondsAndForNobodyOnceItIsGone) {
  conceal();
  EXPECT_FALSE(passes(rightMouseDown, 1));
  queue_.advance(100ms);
  EXPECT_FALSE(passes(rightMouseUp, 2));
  queue_.advance(79ms);
  EXPECT_TRUE(taps_.posted.empty());
  queue_.advance(1ms);
  EXPECT_TRUE(taps_.posted.size() == 2 && taps_.posted[0].serial == 1);
  EXPECT_FALSE(passes(leftMouseDown));
  relay_.reset();
  EXPECT_FALSE(taps_.valid);
  queue_.advance(180ms);
  EXPECT_EQ(taps_.posted.size(), 2U);
}

TEST_F(SystemControlRelayTest, EndsTheProcessWhenCalledFromAnotherThread) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  conceal();
  EXPECT_DEATH(std::thread([this] { passes(leftMouseDown); }).join(), "");
}

}  // namespace
}  // namespace orvo
