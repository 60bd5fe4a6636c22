// Gives each task of another executor an autorelease pool: on a thread of ours nobody else does, and what the
// system's functions autorelease there would stay as long as the thread. Owned by main.cpp; any thread.
#pragma once

#include "platform/SerialExecutor.h"

namespace orvo {

class PooledExecutor final : public SerialExecutor {
 public:
  // `executor` outlives this one.
  explicit PooledExecutor(SerialExecutor& executor) : executor_(executor) {}

  void post(std::function<void()> task) override;

 private:
  SerialExecutor& executor_;
};

}  // namespace orvo
