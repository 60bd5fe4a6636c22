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
    MemoryEvent event(type, point);
    event.serial = serial;
    return taps_.send(event);
  }
  std::vector<int> postedSerials() const {
    std::vector<int> serials;
    for (const MemoryEvent& event : taps_.posted()) {
      EXPECT_EQ(event.integerValueField(eventSourceUserData), marker);
      serials.push_back(event.serial);
    }
    return serials;
  }

  ManualMainQueue queue_;
  MemoryEventTaps taps_;
  int reveals_ = 0;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
};

TEST_F(SystemControlRelayTest, MakesOneActiveSessionTapForMouseButtons) {
  relay_->install();
  relay_->install();
  ASSERT_EQ(taps_.created(), 1U);
  EXPECT_EQ(taps_.tap()->location, EventTapLocation::session);
  EXPECT_EQ(taps_.tap()->placement, EventTapPlacement::headInsert);
  EXPECT_EQ(taps_.tap()->options, EventTapOptions::activeFilter);
  EXPECT_EQ(taps_.tap()->mask, 0x1EU);
  EXPECT_TRUE(taps_.tap()->enabled && taps_.tap()->inRunLoop && relay_->isInstalled());
  relay_->stop();
  EXPECT_FALSE(taps_.tap()->valid || taps_.tap()->inRunLoop || relay_->isInstalled());
  relay_->stop();
  relay_->install();
  EXPECT_EQ(taps_.created(), 2U);
  EXPECT_TRUE(relay_->isInstalled());
}

TEST_F(SystemControlRelayTest, TriesAgainAfterAFailedTapAndGoesOnWithoutASource) {
  taps_.creationFails = true;
  relay_->install();
  EXPECT_FALSE(relay_->isInstalled());
  taps_.creationFails = false;
  taps_.sourceFails = true;
  conceal();
  EXPECT_TRUE(relay_->isInstalled() && taps_.tap()->enabled);
  EXPECT_TRUE(passes(leftMouseDown, onClock));
  EXPECT_EQ(taps_.asked(), 0);
  relay_->stop();
}

TEST_F(SystemControlRelayTest, HoldsAClickRevealsAndReplaysIt) {
  for (const auto& [down, up] : {std::pair{leftMouseDown, leftMouseUp}, std::pair{rightMouseDown, rightMouseUp}}) {
    MemoryEventTaps taps;
    auto relay = SystemControlRelay::make(taps, queue_);
    relay->setSystemFrames(frames);
    relay->install();
    relay->setConcealed(true);
    int reveals = 0;
    relay->onReveal = [&] {
      ++reveals;
      EXPECT_THAT(taps.posted(), IsEmpty());
      relay->setConcealed(false);
    };
    MemoryEvent press(down, onClock);
    MemoryEvent release(up, elsewhere);
    press.serial = 1;
    release.serial = 2;
    EXPECT_FALSE(taps.send(press));
    EXPECT_EQ(reveals, 1);
    queue_.advance(milliseconds(100));
    EXPECT_FALSE(taps.send(release));
    queue_.advance(milliseconds(79));
    EXPECT_THAT(taps.posted(), IsEmpty());
    queue_.advance(milliseconds(1));
    ASSERT_EQ(taps.posted().size(), 2U);
    EXPECT_EQ(taps.posted()[0].serial, 1);
    EXPECT_EQ(taps.posted()[1].serial, 2);
    EXPECT_THAT(taps.postedAt(), ElementsAre(EventTapLocation::session, EventTapLocation::session));
    EXPECT_EQ(press.integerValueField(eventSourceUserData), 0) << "the held original was marked";
    relay->setConcealed(true);
    for (MemoryEvent replayed : taps.posted()) EXPECT_TRUE(taps.send(replayed));
    EXPECT_EQ(reveals, 1);
    relay->stop();
  }
}

TEST_F(SystemControlRelayTest, ReplacesALateMouseUpByAMarkedCopyAtOnce) {
  conceal();
  EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
  queue_.advance(milliseconds(300));
  EXPECT_THAT(postedSerials(), ElementsAre(1));
  EXPECT_TRUE(passes(rightMouseUp, onClock, 2)) << "the other button's";
  EXPECT_FALSE(passes(leftMouseUp, elsewhere, 3));
  EXPECT_THAT(postedSerials(), ElementsAre(1, 3));
  EXPECT_TRUE(passes(leftMouseUp, elsewhere, 4));
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
  marked.setIntegerValueField(eventSourceUserData, marker);
  EXPECT_TRUE(taps_.send(marked));
  relay_->setSystemFrames({});
  EXPECT_TRUE(passes(leftMouseDown, onClock));
  EXPECT_EQ(reveals_, 0);
  EXPECT_TRUE(queue_.waiting().empty());
}

TEST_F(SystemControlRelayTest, LetsAnEventPassThatCannotBeCopied) {
  conceal();
  MemoryEvent press(leftMouseDown, onClock);
  press.copyFails = true;
  EXPECT_TRUE(taps_.send(press));
  EXPECT_EQ(reveals_, 0);
  EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
  MemoryEvent release(leftMouseUp, onClock);
  release.copyFails = true;
  EXPECT_TRUE(taps_.send(release));
  EXPECT_FALSE(passes(leftMouseUp, onClock, 2)) << "still owed";
  queue_.advance(milliseconds(180));
  EXPECT_THAT(postedSerials(), ElementsAre(1, 2));
}

TEST_F(SystemControlRelayTest, ReplaysOnlyTheNewestOfTwoQuickClicksWithTheFirstDelay) {
  conceal();
  EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
  EXPECT_FALSE(passes(leftMouseUp, onClock, 2));
  queue_.advance(milliseconds(100));
  EXPECT_FALSE(passes(rightMouseDown, onClock, 3));
  EXPECT_TRUE(passes(leftMouseUp, onClock, 4));
  queue_.advance(milliseconds(80));
  EXPECT_THAT(postedSerials(), ElementsAre(3));
  EXPECT_FALSE(passes(rightMouseUp, onClock, 5));
  queue_.advance(milliseconds(1000));
  EXPECT_THAT(postedSerials(), ElementsAre(3, 5));
  EXPECT_EQ(reveals_, 2);
}

TEST_F(SystemControlRelayTest, RecoversWhenTheSystemDisablesTheTap) {
  relay_->install();
  for (const EventType reason : {tapDisabledByTimeout, tapDisabledByUserInput}) {
    relay_->setConcealed(true);
    EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
    relay_->setConcealed(false);
    reveals_ = 0;
    relay_->onReveal = [this, before = taps_.posted().size()] {
      ++reveals_;
      EXPECT_EQ(taps_.posted().size(), before) << "revealed before the replay";
      EXPECT_FALSE(taps_.tap()->enabled);
    };
    taps_.disable(reason);
    EXPECT_EQ(reveals_, 1);
    EXPECT_TRUE(taps_.tap()->enabled);
    EXPECT_FALSE(passes(leftMouseUp, onClock, 2));
    relay_->onReveal = [this] { ++reveals_; };
  }
  queue_.advance(milliseconds(1000));
  EXPECT_THAT(postedSerials(), ElementsAre(1, 2, 1, 2));
}

TEST_F(SystemControlRelayTest, ReplaysAtOnceWhenStoppedAndStillOwesTheMouseUp) {
  conceal();
  EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
  relay_->stop();
  EXPECT_THAT(postedSerials(), ElementsAre(1));
  queue_.advance(milliseconds(180));
  relay_->install();
  EXPECT_FALSE(passes(leftMouseUp, onClock, 2));
  EXPECT_THAT(postedSerials(), ElementsAre(1, 2));
}

TEST_F(SystemControlRelayTest, ForgetsTheReplayWhenItGoesAndWorksWithoutACallback) {
  conceal();
  relay_->onReveal = nullptr;
  EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
  relay_.reset();
  EXPECT_FALSE(taps_.tap()->valid);
  queue_.advance(milliseconds(180));
  EXPECT_THAT(taps_.posted(), IsEmpty());
}

TEST_F(SystemControlRelayTest, AllowsTheCallbackToReplaceItselfAndToStopTheRelay) {
  conceal();
  relay_->onReveal = [this] {
    relay_->onReveal = nullptr;
    relay_->stop();
  };
  EXPECT_FALSE(passes(leftMouseDown, onClock, 1));
  queue_.advance(milliseconds(180));
  EXPECT_THAT(postedSerials(), ElementsAre(1));
}

TEST_F(SystemControlRelayTest, NamesItsFramesAsRegionsWhileConcealedAlone) {
  relay_->setConcealed(true);
  relay_->install();
  EXPECT_EQ(taps_.tap()->regions, frames);
  relay_->setSystemFrames({{1, 2, 3, 4}});
  EXPECT_THAT(taps_.tap()->regions, ElementsAre(Rect{1, 2, 3, 4}));
  relay_->setConcealed(false);
  EXPECT_THAT(taps_.tap()->regions, IsEmpty());
  relay_->setSystemFrames(frames);
  EXPECT_THAT(taps_.tap()->regions, IsEmpty());
  relay_->setConcealed(true);
  EXPECT_EQ(taps_.tap()->regions, frames);
}

TEST_F(SystemControlRelayTest, EndsTheProcessWhenCalledFromAnotherThread) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  conceal();
  EXPECT_DEATH(std::thread([this] { passes(leftMouseDown, onClock); }).join(), "");
  MemoryEvent event(leftMouseDown, onClock);
  EXPECT_EQ(taps_.tap()->callback(leftMouseDown, &event, nullptr), &event);
}

}  // namespace
}  // namespace orvo
