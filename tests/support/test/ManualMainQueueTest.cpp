#include "support/ManualMainQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace orvo {
namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

TEST(ManualMainQueueTest, RunsTimersAtTheirOwnTimesPostedTasksBetweenAndOneRunForASleep) {
  ManualMainQueue queue;
  std::vector<std::string> log;
  const auto note = [&](const char* what) {
    return [&, what] { log.push_back(what + ("@" + std::to_string(queue.now().count()))); };
  };
  queue.post(note("posted"));
  queue.runAfter(20ms, note("later"));
  queue.runAfter(10ms, [&] {
    note("first")();
    queue.post(note("between"));
    queue.runAfter(0ms, note("child"));
    queue.cancel(queue.waiting().front().handle);
  });
  queue.runAfter(10ms, note("cancelled"));
  queue.runAfter(10ms, note("second"));
  queue.runAfter(MainQueue::Duration::max(), note("never"));
  queue.advance(20ms);
  EXPECT_THAT(log, ElementsAre("posted@0", "first@10", "between@10", "second@10", "child@10", "later@20"));
  log.clear();
  MainQueue::Handle handle{};
  handle = queue.repeat(30ms, 5ms, [&] {
    note("poll")();
    if (log.size() == 4) queue.cancel(handle);
  });
  queue.runAfter(50ms, note("once"));
  queue.sleepThrough(100ms);
  queue.advance(600ms);
  EXPECT_THAT(log, ElementsAre("poll@120", "once@120", "poll@140", "poll@170"));
}

}  // namespace
}  // namespace orvo
