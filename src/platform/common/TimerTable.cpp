#include "platform/common/TimerTable.h"

#include <algorithm>
#include <utility>

namespace orvo {

namespace {

using Time = TimerTable::Time;

Time sum(Time left, Time right) { return left > Time::max() - right ? Time::max() : left + right; }

Time nanoseconds(MainQueue::Duration duration) {
  if (duration <= MainQueue::Duration::zero()) return Time::zero();
  constexpr auto longest = std::chrono::duration_cast<MainQueue::Duration>(Time::max());
  return duration > longest ? Time::max() : Time(duration);
}

Time firstAfter(Time due, Time interval, Time now) {
  const auto missed = (now - due) / interval;
  return sum(due + interval * missed, interval);
}

}  // namespace

TimerTable::Handle TimerTable::addOnce(Time now, MainQueue::Duration delay, Task task) {
  return add({.due = sum(now, nanoseconds(delay)), .tolerance = {}, .interval = {}, .task = std::move(task)});
}

TimerTable::Handle TimerTable::addRepeating(Time now, MainQueue::Duration interval, MainQueue::Duration tolerance,
                                            Task task) {
  const Time step = nanoseconds(std::max(interval, MainQueue::Duration{1}));
  return add({sum(now, step), nanoseconds(tolerance), step, std::move(task)});
}

TimerTable::Handle TimerTable::add(Entry entry) {
  entries_.emplace(++last_, std::move(entry));
  return static_cast<Handle>(last_);
}

void TimerTable::remove(Handle handle) { entries_.erase(static_cast<std::uint64_t>(handle)); }

std::optional<Time> TimerTable::wakeTime() const {
  Time earliest = Time::max();
  for (const auto& [number, entry] : entries_) earliest = std::min(earliest, sum(entry.due, entry.tolerance));
  if (earliest == Time::max()) return std::nullopt;
  return earliest;
}

std::optional<TimerTable::Task> TimerTable::takeDue(Time now, std::uint64_t mark) {
  const auto end = entries_.lower_bound(mark);
  const auto found = std::min_element(
      entries_.begin(), end, [](const auto& left, const auto& right) { return left.second.due < right.second.due; });
  if (found == end || found->second.due > now) return std::nullopt;
  if (found->second.interval == Time::zero()) return std::move(entries_.extract(found).mapped().task);
  found->second.due = firstAfter(found->second.due, found->second.interval, now);
  return found->second.task;
}

}  // namespace orvo
