#include "platform/common/TimerTable.h"

#include <gtest/gtest.h>

namespace orvo {

using namespace std::chrono_literals;
using Time = TimerTable::Time;
using Duration = MainQueue::Duration;

TEST(TimerTableTest, TasksRunAsTheyFellDueWhatTheyAddWaitsAndNeitherTheLongestDelayNorNoneIsTooMuch) {
  TimerTable table;
  std::string log;
  const auto note = [&log](char name) { return [&log, name] { log += name; }; };
  const auto runDue = [&](Time now) {
    const auto mark = table.mark();
    while (const auto task = table.takeDue(now, mark)) (*task)();
    return std::exchange(log, {});
  };
  table.addOnce(Time::max(), Duration::max(), note('x'));
  table.addRepeating(0s, Duration::max(), Duration::max(), note('x'));
  EXPECT_EQ(table.wakeTime(), std::nullopt);
  const auto poll = table.addRepeating(0s, 3s, 500ms, note('p'));
  EXPECT_EQ(runDue(3500ms), "p");
  EXPECT_EQ(table.wakeTime(), 6500ms) << "lateness must not add up";
  EXPECT_EQ(runDue(100s), "p") << "runs missed in sleep are made up by one";
  table.remove(poll);
  MainQueue::Handle victim{};
  table.addOnce(0s, 3s, note('c'));
  table.addOnce(0s, 1s, note('a'));
  table.addOnce(0s, 1s, note('b'));
  table.addOnce(0s, 2s, [&] { table.addOnce(5s, 0ms, note('n')), table.remove(victim); });
  victim = table.addOnce(0s, 2s, note('x'));
  table.addOnce(0s, Duration::min(), note('0'));
  EXPECT_EQ(runDue(999ms), "0");
  EXPECT_EQ(runDue(5s), "abc");
  EXPECT_EQ(runDue(5s), "n");
  EXPECT_EQ(runDue(Time(24h * 365 * 100)), "");
  table.addRepeating(0s, 0ms, 0ms, note('z'));
  for (const Time now : {200s, 300s}) EXPECT_EQ(runDue(now), "z") << "an interval of nothing must not spin";
}

}  // namespace orvo
