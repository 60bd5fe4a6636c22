#include "support/ManualMainQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace orvo {
namespace {

using testing::ElementsAre;
using Duration = MainQueue::Duration;

class ManualMainQueueTest : public testing::Test {
 protected:
  MainQueue::Task note(std::string what) {
    return [this, what = std::move(what)] { log_.push_back(what + "@" + std::to_string(queue_.now().count())); };
  }

  ManualMainQueue queue_;
  std::vector<std::string> log_;
};

TEST_F(ManualMainQueueTest, RunsTimersAtTheirOwnTimesAndPostedTasksBetween) {
  MainQueue::Handle cancelled{};
  queue_.post(note("posted"));
  queue_.runAfter(Duration(20), note("later"));
  queue_.runAfter(Duration(10), [&] {
    note("first")();
    queue_.post(note("between"));
    queue_.runAfter(Duration(0), note("child"));
    queue_.cancel(cancelled);
  });
  cancelled = queue_.runAfter(Duration(10), note("cancelled"));
  queue_.runAfter(Duration(10), note("second"));
  queue_.runAfter(Duration::max(), note("never"));
  queue_.advance(Duration(20));
  EXPECT_THAT(log_, ElementsAre("posted@0", "first@10", "between@10", "second@10", "child@10", "later@20"));
}

TEST_F(ManualMainQueueTest, RepeatsUntilCancelledFromInsideAndMakesUpForSleepByOneRun) {
  MainQueue::Handle handle{};
  handle = queue_.repeat(Duration(3000), Duration(500), [&] {
    note("poll")();
    if (log_.size() == 4) queue_.cancel(handle);
  });
  queue_.runAfter(Duration(5000), note("once"));
  queue_.sleepThrough(Duration(10'000));
  queue_.advance(Duration(60'000));
  EXPECT_THAT(log_, ElementsAre("poll@10000", "once@10000", "poll@12000", "poll@15000"));
  EXPECT_TRUE(queue_.waiting().empty());
}

}  // namespace
}  // namespace orvo
