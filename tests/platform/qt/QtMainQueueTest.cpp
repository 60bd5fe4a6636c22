#include "platform/qt/QtMainQueue.h"

#include "support/QtEventLoop.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

namespace orvo {

using test::runUntil;
namespace {

using namespace std::chrono_literals;

using Duration = MainQueue::Duration;

TEST(QtMainQueueTest, PostsFromManyThreadsKeepEachThreadsOrder) {
  constexpr int threadCount = 4;
  constexpr int postCount = 500;
  QtMainQueue queue;
  std::array<int, threadCount> next{};
  int misplaced = 0;
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < threadCount; ++number) {
    threads.emplace_back([&, number] {
      for (int post = 0; post < postCount; ++post) {
        queue.post([&, number, post] {
          if (!queue.isMainThread() || next.at(number)++ != post) ++misplaced;
        });
      }
      EXPECT_FALSE(queue.isMainThread());
    });
  }
  EXPECT_TRUE(runUntil([&] { return next == std::array{postCount, postCount, postCount, postCount}; }));
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(misplaced, 0);
}

TEST(QtMainQueueTest, APostedTaskThatPostsAgainLetsTheLoopTurn) {
  QtMainQueue queue;
  bool delayedRan = false;
  int rounds = 0;
  std::function<void()> again = [&] {
    ++rounds;
    if (!delayedRan) queue.post(again);
  };
  queue.post(again);
  EXPECT_EQ(rounds, 0);
  queue.runAfter(1ms, [&] { delayedRan = true; });
  EXPECT_TRUE(runUntil([&] { return delayedRan; })) << "endless posting starves the timers";
}

TEST(QtMainQueueTest, DelaysEndInTheirOrderAndNeverEarly) {
  QtMainQueue queue;
  std::string order;
  std::vector<Duration> waits;
  const Duration start = queue.now();
  const auto note = [&](char name) {
    return [&, name] {
      order += name;
      waits.push_back(queue.now() - start);
    };
  };
  queue.runAfter(Duration::max(), note('x'));
  queue.runAfter(40ms, note('c'));
  queue.runAfter(20ms, note('b'));
  queue.runAfter(0ms, note('a'));
  queue.cancel(queue.runAfter(1ms, note('x')));
  queue.cancel(MainQueue::Handle::none);
  EXPECT_EQ(order, "") << "no task may run inside the call";
  ASSERT_TRUE(runUntil([&] { return order.size() >= 3; }));
  EXPECT_EQ(order, "abc");
  EXPECT_GE(waits.at(1), 20ms);
  EXPECT_GE(waits.at(2), 40ms);
}

TEST(QtMainQueueTest, ARepeatingTaskMayEndItselfAndReplaceItself) {
  QtMainQueue queue;
  int runs = 0;
  bool replaced = false;
  MainQueue::Handle handle{};
  handle = queue.repeat(1ms, 0ms, [&] {
    if (++runs < 3) return;
    queue.cancel(handle);
    queue.runAfter(10ms, [&] { replaced = true; });
  });
  EXPECT_TRUE(runUntil([&] { return replaced; }));
  EXPECT_EQ(runs, 3);
}

TEST(QtMainQueueTest, AQueueThatOnlyWaitsDoesNotWake) {
  QtMainQueue queue;
  bool done = false;
  queue.repeat(1h, 1h, [] {});
  queue.runAfter(Duration::max(), [] {});
  queue.runAfter(400ms, [&] { done = true; });
  rusage before{};
  rusage after{};
  getrusage(RUSAGE_THREAD, &before);
  while (!done) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  getrusage(RUSAGE_THREAD, &after);
  EXPECT_LE(after.ru_nvcsw - before.ru_nvcsw, 5);
}

}  // namespace
}  // namespace orvo
