// The watcher of the StatusNotifierItem protocol as panels and items see it, and the hold on its name.
// Owned by main; main thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "agent/BusCall.h"
#include "agent/TrayHeir.h"
#include "platform/linux/Timer.h"

namespace orvo {

class MenuBarService;

inline constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";  // of the interface too
inline constexpr const char* watcherPath = "/StatusNotifierWatcher";

class StatusNotifierWatcher {
 public:
  StatusNotifierWatcher(sd_bus* bus, MenuBarService& service);

  // Waits in the queue where another program has the name; false when the bus refuses even that.
  bool claimName();
  bool isNameHeld() const { return held_; }
  std::function<void()> onNameHeld;

  // Has the panel start its tray plug-in anew where that has the name. `done` gets what hinders, or null once the
  // name is held.
  void takeOver(std::function<void(const char* hindrance)> done);

  // Panels that follow the property take in what they have missed, and nothing else.
  void announceList();

  // What panels and items ask for, see sd-bus.h.
  static int registerItem(sd_bus_message* call, void* watcher, sd_bus_error* error);
  static int registerHost(sd_bus_message* call, void* watcher, sd_bus_error* error);
  static int items(sd_bus* bus, const char* path, const char* interface, const char* property, sd_bus_message* reply,
                   void* watcher, sd_bus_error* error);

 private:
  using Clock = std::chrono::steady_clock;

  void takeName();
  void inherit();
  void restartTray(std::int32_t process);
  void endTakeOver(const char* hindrance);
  void answerLate();

  sd_bus* bus_;
  MenuBarService& service_;
  bool held_ = false;
  BusSlot object_;
  BusSlot acquired_;
  std::optional<TrayHeir> heir_;  // of the program that had the name before
  Clock::time_point unrestEnd_;   // after a takeover
  std::vector<BusMessage> late_;  // calls
  Timer answering_;
  std::vector<std::function<void(const char*)>> takingOver_;
  Timer takingLate_;
};

}  // namespace orvo
