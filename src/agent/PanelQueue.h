// Tells the panel's connections: its tray stands in the queue for the watcher's name, to serve when the agent is
// gone. Any program may stand there, and need not answer what it is asked; only Xfce's panel counts. Owned by
// MenuBarService; main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "agent/BusCall.h"

namespace orvo {

class PanelQueue {
 public:
  explicit PanelQueue(sd_bus* bus) : bus_(bus) {}

  using Panels = std::map<std::string, std::int32_t>;  // unique names, and their processes
  // Called once, when the bus has answered.
  void ask(std::function<void(const Panels&)> found);

 private:
  sd_bus* bus_;
  Panels known_;  // in the queue; with 0 who is no panel
};

// Whether Xfce's panel runs a plug-in in the process.
bool isPlugin(std::int32_t process);

}  // namespace orvo
