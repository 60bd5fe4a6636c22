#include "platform/common/ThreadExecutor.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <thread>

namespace orvo {
namespace {

TEST(ThreadExecutorTest, TheEndWaitsForTheRunningTaskAndDropsTheWaitingOnes) {
  std::promise<void> started;
  bool finished = false;
  bool droppedRan = false;
  auto resource = std::make_shared<int>();
  {
    ThreadExecutor executor;
    // It goes on only once the end has begun and has dropped the other.
    executor.post([&, waiting = std::weak_ptr(resource)] {
      started.set_value();
      while (!waiting.expired()) std::this_thread::yield();
      finished = true;
    });
    executor.post([&, held = std::move(resource)] { droppedRan = true; });
    started.get_future().wait();
  }
  EXPECT_TRUE(finished && !droppedRan);
}

}  // namespace
}  // namespace orvo
