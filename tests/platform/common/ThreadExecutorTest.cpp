#include "platform/common/ThreadExecutor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>

namespace orvo {
namespace {

TEST(ThreadExecutorTest, TheEndWaitsForTheRunningTaskAndDropsTheWaitingOnes) {
  std::promise<void> started;
  std::promise<void> mayEnd;
  std::atomic<bool> finished = false;
  bool droppedRan = false;
  auto resource = std::make_shared<int>();
  // The running task goes on only once the end has begun and has dropped the other.
  std::thread helper([&, waiting = std::weak_ptr(resource)] {
    while (!waiting.expired()) std::this_thread::yield();
    mayEnd.set_value();
  });
  {
    ThreadExecutor executor;
    executor.post([&] {
      started.set_value();
      mayEnd.get_future().wait();
      finished = true;
    });
    executor.post([&, held = std::move(resource)] { droppedRan = true; });
    started.get_future().wait();
    EXPECT_FALSE(finished);
  }
  helper.join();
  EXPECT_TRUE(finished);
  EXPECT_FALSE(droppedRan);
}

}  // namespace
}  // namespace orvo
