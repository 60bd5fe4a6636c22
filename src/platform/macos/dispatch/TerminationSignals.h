// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. Owned by main.cpp; at most one at a
// time in a process. A second signal of a kind kills as usual, so that a program that hangs while it
// ends can still be ended; a signal that was ignored from the start stays ignored.
#pragma once

#include <dispatch/dispatch.h>

#include <array>
#include <csignal>
#include <functional>

namespace orvo {

class TerminationSignals {
 public:
  explicit TerminationSignals(std::function<void()> received);
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  struct Handled {
    TerminationSignals* owner;
    int signal;
    dispatch_source_t source;  // null for one that is not handled
  };

  void handle(Handled& handled);

  std::function<void()> received_;
  std::array<Handled, 3> handled_{{{this, SIGTERM, nullptr}, {this, SIGINT, nullptr}, {this, SIGHUP, nullptr}}};
};

}  // namespace orvo
