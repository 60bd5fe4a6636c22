#include "platform/qt/ThreadExecutor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <vector>

namespace orvo {
namespace {

TEST(ThreadExecutorTest, TasksOfManyPostersNeverOverlapAndNoneIsLost) {
  constexpr int posts = 300;
  ThreadExecutor executor;
  int plain = 0;  // torn or lost if tasks overlapped
  std::vector<std::thread> posters;
  for (int number = 0; number < 3; ++number) {
    posters.emplace_back([&] {
      for (int post = 0; post < posts; ++post) executor.post([&] { ++plain; });
    });
  }
  for (std::thread& poster : posters) poster.join();
  std::promise<int> seen;
  executor.post([&] { seen.set_value(plain); });
  EXPECT_EQ(seen.get_future().get(), 3 * posts);
}

TEST(ThreadExecutorTest, TheEndWaitsForTheRunningTaskAndDropsTheWaitingOnes) {
  std::promise<void> started;
  std::promise<void> mayEnd;
  bool finished = false;
  std::atomic<bool> droppedRan = false;
  std::weak_ptr<int> waiting;
  std::thread helper;
  {
    ThreadExecutor executor;
    executor.post([&] {
      started.set_value();
      mayEnd.get_future().wait();
      finished = true;
    });
    auto resource = std::make_shared<int>(0);
    waiting = resource;
    executor.post([&, resource] { droppedRan = true; });
    resource.reset();
    started.get_future().wait();
    // The running task goes on only once the end has begun and has dropped the other.
    helper = std::thread([&] {
      while (!waiting.expired()) std::this_thread::yield();
      mayEnd.set_value();
    });
  }
  helper.join();
  EXPECT_TRUE(finished);
  EXPECT_FALSE(droppedRan);
}

}  // namespace
}  // namespace orvo
