#include "support/ManualMainQueue.h"

#include "support/ManualExecutor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>
#include <vector>

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
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
  queue_.post(note("posted"));
  queue_.runAfter(Duration(20), note("later"));
  queue_.runAfter(Duration(10), [this] {
    note("first")();
    queue_.post(note("between"));
    queue_.runAfter(Duration(0), note("child"));
  });
  queue_.runAfter(Duration(10), note("second"));
  EXPECT_THAT(log_, IsEmpty());
  queue_.advance(Duration(20));
  EXPECT_THAT(log_, ElementsAre("posted@0", "first@10", "between@10", "second@10", "child@10", "later@20"));
}

TEST_F(ManualMainQueueTest, RepeatsUntilCancelledEvenFromInside) {
  MainQueue::Handle handle{};
  handle = queue_.repeat(Duration(3000), Duration(500), [&] {
    note("poll")();
    if (log_.size() == 3) queue_.cancel(handle);
  });
  const auto waiting = queue_.waiting();
  ASSERT_EQ(waiting.size(), 1U);
  EXPECT_EQ(waiting[0].interval, Duration(3000));
  EXPECT_EQ(waiting[0].tolerance, Duration(500));
  queue_.advance(Duration(60'000));
  EXPECT_THAT(log_, ElementsAre("poll@3000", "poll@6000", "poll@9000"));
  EXPECT_TRUE(queue_.waiting().empty());
}

TEST_F(ManualMainQueueTest, MakesUpForSleepByOneRun) {
  queue_.repeat(Duration(3000), Duration(0), note("poll"));
  queue_.runAfter(Duration(5000), note("once"));
  queue_.sleepThrough(Duration(10'000));
  EXPECT_THAT(log_, ElementsAre("poll@10000", "once@10000"));
  queue_.advance(Duration(2000));
  EXPECT_EQ(log_.back(), "poll@12000");
}

TEST_F(ManualMainQueueTest, CancelsWhatIsDueAlreadyAndTakesEveryDelay) {
  MainQueue::Handle second{};
  queue_.runAfter(Duration(10), [&] { queue_.cancel(second); });
  second = queue_.runAfter(Duration(10), note("cancelled"));
  queue_.advance(Duration(1));
  queue_.runAfter(Duration::max(), note("never"));
  queue_.cancel(MainQueue::Handle::none);
  queue_.advance(Duration(1000));
  EXPECT_THAT(log_, IsEmpty());
  EXPECT_EQ(queue_.waiting().size(), 1U);
}

TEST_F(ManualMainQueueTest, TakesTasksFromOtherThreads) {
  std::thread other([this] {
    EXPECT_FALSE(queue_.isMainThread());
    queue_.post(note("from elsewhere"));
  });
  EXPECT_TRUE(queue_.waitUntilPosted(std::chrono::seconds(20)));
  other.join();
  EXPECT_TRUE(queue_.isMainThread());
  queue_.runPosted();
  EXPECT_THAT(log_, ElementsAre("from elsewhere@0"));
  EXPECT_FALSE(queue_.waitUntilPosted(std::chrono::seconds(0)));
}

TEST(Executors, RunTheirTasksInOrderAndTheThreadEndsItsOwn) {
  std::vector<int> order;
  ManualExecutor manual;
  manual.post([&] { manual.post([&] { order.push_back(3); }); });
  manual.post([&] { order.push_back(2); });
  EXPECT_THAT(order, IsEmpty());
  EXPECT_TRUE(manual.runOne());
  EXPECT_EQ(manual.count(), 2U);
  manual.runAll();
  EXPECT_FALSE(manual.runOne());
  {
    ThreadExecutor threaded;
    threaded.post([&] { order.push_back(std::this_thread::get_id() == std::thread::id() ? -1 : 4); });
    threaded.post([&] { order.push_back(5); });
  }
  EXPECT_THAT(order, ElementsAre(2, 3, 4, 5));
}

}  // namespace
}  // namespace orvo
