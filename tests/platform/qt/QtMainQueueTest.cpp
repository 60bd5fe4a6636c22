#include "platform/qt/QtMainQueue.h"

#include "support/QtEventLoop.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <array>
#include <thread>
#include <vector>

namespace orvo {
namespace {

using namespace std::chrono_literals;
using test::runUntil;

TEST(QtMainQueueTest, PostsFromManyThreadsKeepEachThreadsOrder) {
  constexpr int postCount = 500;
  QtMainQueue queue;
  std::array<int, 4> next{};
  int misplaced = 0;
  std::vector<std::thread> threads;
  threads.reserve(next.size());
  for (int& expected : next) {
    threads.emplace_back([&] {
      for (int post = 0; post < postCount; ++post) {
        queue.post([&, post] { misplaced += queue.isMainThread() && expected++ == post ? 0 : 1; });
      }
    });
  }
  EXPECT_TRUE(runUntil([&] { return next == std::array{postCount, postCount, postCount, postCount}; }));
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(misplaced, 0);
}

TEST(QtMainQueueTest, EndlessPostingDoesNotStarveDelaysWhichEndInOrderAndNeverEarly) {
  QtMainQueue queue;
  std::string order;
  const auto start = queue.now();
  std::function<void()> again = [&] {
    if (order != "abc") queue.post(again);
  };
  queue.post(again);
  queue.runAfter(40ms, [&] { order += queue.now() - start < 40ms ? 'x' : 'c'; });
  queue.runAfter(20ms, [&] { order += queue.now() - start < 20ms ? 'x' : 'b'; });
  queue.runAfter(0ms, [&] { order += 'a'; });
  queue.cancel(queue.runAfter(1ms, [&] { order += 'x'; }));
  queue.cancel(MainQueue::Handle::none);
  EXPECT_EQ(order, "") << "no task may run inside the call";
  runUntil([&] { return order.size() >= 3; });
  EXPECT_EQ(order, "abc");
}

TEST(QtMainQueueTest, AQueueThatOnlyWaitsDoesNotWake) {
  QtMainQueue queue;
  bool done = false;
  queue.repeat(1h, 1h, [] {});
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
