// A second process that sleeps for as long as the agent lives and does one thing once it is gone, however
// it went. Owned by main; main thread.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace orvo {

class Guardian {
 public:
  // The agent's process identifier and what it kept last.
  using Duty = std::function<void(pid_t agent, const std::string& kept)>;

  // Forks; to be called while the process has one thread. The copy never returns from here: it does its
  // duty, unless nothing was kept, and ends. It heeds none of the signals that end a session or a service,
  // which come to it as well.
  explicit Guardian(const Duty& duty);
  ~Guardian();
  Guardian(const Guardian&) = delete;
  Guardian& operator=(const Guardian&) = delete;

  // Wakes nobody.
  void keep(const std::string& text) const;

 private:
  [[noreturn]] void serve(pid_t agent, int lifeline, const Duty& duty) const;

  int memory_ = -1;
  int lifeline_ = -1;  // held open by this process alone
};

}  // namespace orvo
