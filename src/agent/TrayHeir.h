// Follows the watcher that has the tray's name while the agent waits for it, and knows what that one knew:
// items see no change when the name goes on without a gap, and do not register again. Owned by
// StatusNotifierWatcher; main thread.
#pragma once

#include <string>
#include <vector>

#include "agent/BusCall.h"

namespace orvo {

class TrayHeir {
 public:
  explicit TrayHeir(sd_bus* bus);

  // As items register, in the watcher's own order; once. Follows nobody from then on.
  std::vector<std::string> inherit();

 private:
  void heard(sd_bus_message* signal);
  void follow(const std::string& owner);

  sd_bus* bus_;
  BusSlot owners_;
  BusSlot signals_;
  std::string owner_;  // unique; empty for nobody, or the agent itself
  std::vector<std::string> items_;
};

}  // namespace orvo
