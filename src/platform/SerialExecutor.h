// Runs tasks one after the other away from the main thread.
#pragma once

#include <functional>

namespace orvo {

class SerialExecutor {
 public:
  virtual ~SerialExecutor() = default;

  // Callable from any thread; tasks run in the order in which they were posted and never overlap.
  virtual void post(std::function<void()> task) = 0;
};

}  // namespace orvo
