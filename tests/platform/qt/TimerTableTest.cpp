#include "platform/qt/TimerTable.h"

#include <gtest/gtest.h>

#include <string>

namespace orvo {
namespace {

using namespace std::chrono_literals;
using Duration = MainQueue::Duration;

class TimerTableTest : public ::testing::Test {
 protected:
  MainQueue::Task note(char name) {
    return [this, name] { log_ += name; };
  }
  std::string runDue(TimerTable::Time now) {
    log_.clear();
    const auto mark = table_.mark();
    while (const auto task = table_.takeDue(now, mark)) (*task)();
    return log_;
  }

  TimerTable table_;
  std::string log_;
};

TEST_F(TimerTableTest, TheLongestDelayNeverComesAndNeverWraps) {
  for (const TimerTable::Time now : {TimerTable::Time{0}, TimerTable::Time(24h * 365), TimerTable::Time::max()}) {
    table_.addOnce(now, Duration::max(), note('a'));
    table_.addRepeating(now, Duration::max(), Duration::max(), note('b'));
  }
  EXPECT_EQ(table_.wakeTime(), std::nullopt);
  EXPECT_EQ(runDue(TimerTable::Time(24h * 365 * 100)), "");
}

TEST_F(TimerTableTest, TasksRunInTheOrderInWhichTheyFellDue) {
  table_.addOnce(0s, 3s, note('c'));
  table_.addOnce(0s, 1s, note('a'));
  table_.addOnce(0s, 1s, note('b'));
  table_.addOnce(0s, Duration::min(), note('0'));
  EXPECT_EQ(runDue(999ms), "0");
  EXPECT_EQ(runDue(5s), "abc");
  EXPECT_EQ(table_.wakeTime(), std::nullopt);
}

TEST_F(TimerTableTest, ToleranceLetsOneWakeUpServeSeveral) {
  const auto tolerant = table_.addRepeating(0s, 3s, 500ms, note('p'));
  EXPECT_EQ(table_.wakeTime(), 3500ms);
  table_.addOnce(0s, 3200ms, note('r'));
  EXPECT_EQ(table_.wakeTime(), 3200ms);
  EXPECT_EQ(runDue(3200ms), "pr");
  EXPECT_EQ(table_.wakeTime(), 6500ms) << "lateness must not add up";
  table_.remove(tolerant);
  EXPECT_EQ(table_.wakeTime(), std::nullopt);
}

TEST_F(TimerTableTest, RunsMissedInSleepAreMadeUpByOne) {
  table_.addRepeating(0s, 3s, 0s, note('p'));
  EXPECT_EQ(runDue(100s), "p");
  EXPECT_EQ(table_.wakeTime(), 102s);
  EXPECT_EQ(runDue(102s), "p") << "a run exactly on time is not skipped";
  table_.addRepeating(102s, 0ms, 0ms, note('z'));
  EXPECT_EQ(runDue(200s), "zp") << "an interval of nothing must not spin";
}

TEST_F(TimerTableTest, ADueTaskThatAnotherCancelsDoesNotRun) {
  const auto first = table_.addOnce(0s, 1s, [this] { log_ += 'a'; });
  MainQueue::Handle victim{};
  table_.addOnce(0s, 2s, [&] { table_.remove(victim); });
  victim = table_.addOnce(0s, 3s, note('x'));
  const auto repeating = table_.addRepeating(0s, 4s, 0s, [&] { table_.remove(first); });
  EXPECT_EQ(runDue(10s), "a");
  table_.remove(repeating);
  EXPECT_EQ(table_.wakeTime(), std::nullopt);
}

TEST_F(TimerTableTest, WhatATaskAddsWaitsForTheNextTurn) {
  table_.addOnce(0s, 1s, [this] { table_.addOnce(5s, 0ms, note('n')); });
  EXPECT_EQ(runDue(5s), "");
  EXPECT_EQ(table_.wakeTime(), 5s);
  EXPECT_EQ(runDue(5s), "n");
}

}  // namespace
}  // namespace orvo
