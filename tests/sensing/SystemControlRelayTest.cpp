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
  bool passes(EventType type) {
    MemoryEvent event(type, {1850, 10});
    return taps_.send(event);
  }

  ManualMainQueue queue_;
  MemoryEventTaps taps_;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
};

TEST_F(SystemControlRelayTest, HoldsAClickFor180MillisecondsAndForNobodyOnceItIsGone) {
  conceal();
  EXPECT_FALSE(passes(rightMouseDown));
  queue_.advance(179ms);
  EXPECT_TRUE(taps_.posted.empty());
  queue_.advance(1ms);
  EXPECT_EQ(taps_.posted.size(), 1U);
  EXPECT_FALSE(passes(leftMouseDown));
  relay_.reset();
  queue_.advance(180ms);
  EXPECT_TRUE(taps_.posted.size() == 1 && !taps_.valid);
}

TEST_F(SystemControlRelayTest, EndsTheProcessWhenCalledFromAnotherThread) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  conceal();
  EXPECT_DEATH(std::thread([this] { passes(leftMouseDown); }).join(), "");
}

}  // namespace
}  // namespace orvo
