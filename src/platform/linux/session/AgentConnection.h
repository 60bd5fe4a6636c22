// A connection to the session bus for questions to the agent whose asker waits, and no other thread is woken. Made
// when the first is asked. Any thread; one question at a time.
#pragma once

#include "platform/linux/BusHandles.h"

#include <chrono>
#include <mutex>

namespace orvo {

class AgentConnection {
 public:
  AgentConnection() = default;
  AgentConnection(const AgentConnection&) = delete;
  AgentConnection& operator=(const AgentConnection&) = delete;
  ~AgentConnection() = default;

  // The answer to a method without arguments, or the error in its place; null where nobody answers within the
  // limit, connecting and waiting for others who ask included.
  BusMessage ask(const char* method, std::chrono::milliseconds limit);

 private:
  using Clock = std::chrono::steady_clock;

  bool isOpen();
  BusMessage send(const char* method, Clock::time_point deadline);

  std::timed_mutex mutex_;
  BusHandle bus_;
};

}  // namespace orvo
