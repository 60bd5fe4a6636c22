#include "platform/common/TimerTable.h"

#include <gtest/gtest.h>

namespace orvo {

using namespace std::chrono_literals;
using Duration = MainQueue::Duration;

class TimerTableTest : public ::testing::Test {
 protected:
  MainQueue::Task note(char name) {
    return [this, name] { log_ += name; };
  }
  std::string runDue(TimerTable::Time now) {
    const auto mark = table_.mark();
    while (const auto task = table_.takeDue(now, mark)) (*task)();
    return std::exchange(log_, {});
  }

  TimerTable table_;
  std::string log_;
};

TEST_F(TimerTableTest, TasksRunAsTheyFellDueWhatTheyAddWaitsAndTheLongestDelayNeverComes) {
  table_.addOnce(TimerTable::Time::max(), Duration::max(), note('x'));
  table_.addRepeating(0s, Duration::max(), Duration::max(), note('x'));
  EXPECT_EQ(table_.wakeTime(), std::nullopt);
  MainQueue::Handle victim{};
  table_.addOnce(0s, 3s, note('c'));
  table_.addOnce(0s, 1s, note('a'));
  table_.addOnce(0s, 1s, note('b'));
  table_.addOnce(0s, 2s, [&] { table_.addOnce(5s, 0ms, note('n')), table_.remove(victim); });
  victim = table_.addOnce(0s, 2s, note('x'));
  table_.addOnce(0s, Duration::min(), note('0'));
  EXPECT_EQ(runDue(999ms), "0");
  EXPECT_EQ(runDue(5s), "abc");
  EXPECT_EQ(runDue(5s), "n");
  EXPECT_EQ(runDue(TimerTable::Time(24h * 365 * 100)), "");
}

TEST_F(TimerTableTest, ToleranceLetsOneWakeUpServeSeveralAndSleepCostsOneRun) {
  const auto handle = table_.addRepeating(0s, 3s, 500ms, note('p'));
  EXPECT_EQ(table_.wakeTime(), 3500ms);
  table_.addOnce(0s, 3200ms, note('r'));
  EXPECT_EQ(runDue(*table_.wakeTime()), "pr");
  EXPECT_EQ(table_.wakeTime(), 6500ms) << "lateness must not add up";
  EXPECT_EQ(runDue(100s), "p") << "runs missed in sleep are made up by one";
  EXPECT_EQ(runDue(102s), "p") << "a run exactly on time is not skipped";
  table_.addRepeating(102s, 0ms, 0ms, note('z'));
  EXPECT_EQ(runDue(200s), "zp") << "an interval of nothing must not spin";
  table_.addOnce(200s, 0s, [&] { table_.remove(handle); });
  EXPECT_EQ(runDue(300s), "z");
}

}  // namespace orvo
