// A second process that sleeps for as long as the agent lives and does one thing once it is gone, however
// it went. When the guardian itself ends, there is another one at once. Owned by main; main thread.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>

#include "platform/linux/ReadWatch.h"
#include "platform/linux/Timer.h"

namespace orvo {

class Guardian {
 public:
  // One that ends sooner than this has its successor only so long after its start: something is wrong.
  static constexpr std::chrono::seconds shortLife{1};
  // Where there could be none: out of processes or descriptors.
  static constexpr std::chrono::seconds retryPause{60};

  explicit Guardian(sd_event* loop);
  ~Guardian();
  Guardian(const Guardian&) = delete;
  Guardian& operator=(const Guardian&) = delete;

  // Wakes nobody.
  void keep(const std::string& text) const;

  struct Bequest {
    pid_t agent;
    std::string kept;  // as it was told last
  };

  // In a process that was started as a guardian: returns once the agent is gone. Absent in any other.
  static std::optional<Bequest> outlive(int count, char** arguments);

 private:
  void start();
  void bury();
  void replace();

  sd_event* loop_;
  int memory_ = -1;
  int lifeline_ = -1;  // held open by this process alone
  pid_t process_ = -1;
  int ending_ = -1;  // becomes readable at the guardian's end
  std::optional<ReadWatch> ended_;
  std::chrono::steady_clock::time_point started_;
  Timer successor_;
};

}  // namespace orvo
