// The main thread's queue and its only clock. Model, relay, view and adapters use nothing else to
// defer work or to wait.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace orvo {

class MainQueue {
 public:
  using Task = std::function<void()>;
  using Duration = std::chrono::milliseconds;
  // Names a delayed or repeating task; `none` names nothing and may be cancelled freely.
  enum class Handle : std::uint64_t { none = 0 };

  virtual ~MainQueue() = default;

  // Callable from any thread. Tasks run on the main thread in the order in which they were posted,
  // never inside the call.
  virtual void post(Task task) = 0;

  // The rest is for the main thread alone.

  // Runs once, `delay` from now on a clock that goes on while the machine sleeps. Every delay from
  // zero to Duration::max() is valid.
  virtual Handle runAfter(Duration delay, Task task) = 0;

  // Runs every `interval`, first after one interval; each run may be late by up to `tolerance`. Runs
  // that were missed while the machine slept are made up by one.
  virtual Handle repeat(Duration interval, Duration tolerance, Task task) = 0;

  // A cancelled task never runs again, even when it is already due. Unknown handles are ignored.
  virtual void cancel(Handle handle) = 0;

  // Time since some fixed moment, on the clock of runAfter.
  virtual Duration now() const = 0;

  virtual bool isMainThread() const = 0;
};

}  // namespace orvo
