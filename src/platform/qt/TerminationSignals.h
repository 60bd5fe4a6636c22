// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. Owned by the application; at most
// one at a time in a process. A second signal of a kind kills as usual, so that a program that hangs
// while it ends can still be ended; a signal that was ignored from the start stays ignored.
#pragma once

#include <QSocketNotifier>

#include <array>
#include <functional>
#include <memory>

namespace orvo {

class TerminationSignals {
 public:
  explicit TerminationSignals(std::function<void()> received);
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  std::array<int, 2> pipe_{-1, -1};
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace orvo
