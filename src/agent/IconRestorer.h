// Registers the items of a dead agent with whoever watches over the tray after it. The bus hands the
// watcher's name straight on to the panel, and many programs notice only a moment in which nobody has it.
// Owned by main; main thread of the process that outlives the agent.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <string>

#include "agent/BusCall.h"
#include "platform/linux/Timer.h"

namespace orvo {

class IconRestorer {
 public:
  // `kept` is a text of keptItems(). `finished` is called when every item is registered, or no other watcher has
  // come in time.
  IconRestorer(sd_bus* bus, pid_t agent, std::string kept, std::function<void()> finished);

 private:
  void askWatcher();
  void registerMissing(sd_bus_message* answer);

  sd_bus* bus_;
  const std::string kept_;
  std::function<void()> finished_;
  Timer late_;
  BusSlot owner_;
  std::size_t open_ = 0;  // registrations without an answer
};

}  // namespace orvo
