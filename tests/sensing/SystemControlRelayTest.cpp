#include "sensing/SystemControlRelay.h"

#include "support/ManualMainQueue.h"
#include "support/MemoryEventTaps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace orvo {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using enum EventType;

constexpr std::int64_t marker = 0x5155494C4C4554;
const std::vector<Rect> frames{{1800, 0, 80, 24}, {1700, 0, 40, 24}};
constexpr Point onClock{1850, 10};
constexpr Point elsewhere{10, 10};

class SystemControlRelayTest : public testing::Test {
 protected:
  SystemControlRelayTest() {
    relay_->onReveal = [this] { ++reveals_; };
    relay_->setSystemFrames(frames);
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
  int reveals_ = 0;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
};

TEST_F(SystemControlRelayTest, MakesOneActiveSessionTapForMouseButtons) {
  taps_.creationFails = true;
  relay_->install();
  EXPECT_FALSE(relay_->isInstalled());
  taps_.creationFails = false;
  relay_->install();
  relay_->install();
  ASSERT_EQ(taps_.created(), 1U);
  EXPECT_EQ(taps_.tap()->location, EventTapLocation::session);
  EXPECT_EQ(taps_.tap()->options, EventTapOptions::activeFilter);
  EXPECT_EQ(taps_.tap()->mask, 0x1EU);
  EXPECT_TRUE(taps_.tap()->enabled && taps_.tap()->inRunLoop && relay_->isInstalled());
  relay_->stop();
  EXPECT_FALSE(taps_.tap()->valid || taps_.tap()->inRunLoop || relay_->isInstalled());
  relay_->stop();
  taps_.sourceFails = true;
  conceal();
  EXPECT_EQ(taps_.created(), 2U);
  EXPECT_TRUE(relay_->isInstalled() && taps_.tap()->enabled);
  EXPECT_TRUE(passes(leftMouseDown, onClock));
  relay_->stop();
}

TEST_F(SystemControlRelayTest, HoldsAClickRevealsAndReplaysIt) {
  conceal();
  relay_->onReveal = [this] {
    ++reveals_;
    EXPECT_THAT(posted(), IsEmpty());
    relay_->setConcealed(false);
  };
  MemoryEvent press(rightMouseDown, onClock, 1);
  EXPECT_FALSE(taps_.send(press));
  EXPECT_EQ(reveals_, 1);
  queue_.advance(milliseconds(100));
  EXPECT_FALSE(passes(rightMouseUp, elsewhere, 2));
  queue_.advance(milliseconds(79));
  EXPECT_THAT(posted(), IsEmpty());
  queue_.advance(milliseconds(1));
  EXPECT_THAT(posted(), ElementsAre(1, 2));
  EXPECT_EQ(taps_.posted[0].integerValueField(42), marker);
  EXPECT_EQ(press.integerValueField(42), 0) << "the held original was marked";
}

TEST_F(SystemControlRelayTest, LetsEverythingElsePass) {
  relay_->install();
  EXPECT_TRUE(passes(leftMouseDown, onClock)) << "not concealed";
  relay_->setConcealed(true);
  for (const Point outside : {elsewhere, Point{1880, 10}, Point{1850, 24}, Point{1799.9, 0}}) {
    EXPECT_TRUE(passes(leftMouseDown, outside));
    EXPECT_TRUE(passes(leftMouseUp, outside));
  }
  MemoryEvent marked(leftMouseDown, onClock);
  marked.setIntegerValueField(42, marker);
  EXPECT_TRUE(taps_.send(marked));
  MemoryEvent uncopied(leftMouseDown, onClock);
  uncopied.copyFails = true;
  EXPECT_TRUE(taps_.send(uncopied));
  EXPECT_EQ(reveals_, 0);
  EXPECT_TRUE(queue_.waiting().empty());
}

TEST_F(SystemControlRelayTest, RecoversWhenTheSystemDisablesTheTap) {
  conceal();
  EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
  relay_->onReveal = [this] {
    EXPECT_THAT(posted(), IsEmpty()) << "revealed before the replay";
    EXPECT_FALSE(taps_.tap()->enabled);
  };
  taps_.disable(tapDisabledByTimeout);
  EXPECT_THAT(posted(), ElementsAre(1));
  EXPECT_TRUE(taps_.tap()->enabled);
  EXPECT_FALSE(passes(leftMouseUp, onClock, 2));
  EXPECT_THAT(posted(), ElementsAre(1, 2));
}

TEST_F(SystemControlRelayTest, AllowsTheCallbackToReplaceItselfAndToStopTheRelay) {
  conceal();
  relay_->onReveal = [this] {
    relay_->onReveal = nullptr;
    relay_->stop();
  };
  EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
  EXPECT_THAT(posted(), ElementsAre(1));
  relay_->install();
  EXPECT_FALSE(passes(leftMouseDown, onClock, 2)) << "without a callback";
  relay_.reset();
  EXPECT_FALSE(taps_.tap()->valid);
  queue_.advance(milliseconds(180));
  EXPECT_THAT(posted(), ElementsAre(1));
}

TEST_F(SystemControlRelayTest, EndsTheProcessWhenCalledFromAnotherThread) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  conceal();
  EXPECT_DEATH(std::thread([this] { passes(leftMouseDown, onClock); }).join(), "");
}

}  // namespace
}  // namespace orvo
