// The agent's own interface, see platform/linux/AgentProtocol.h. Owned by main; main thread.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "agent/BusCall.h"
#include "agent/rules/LegacyIcons.h"
#include "agent/rules/StatusControls.h"
#include "platform/linux/Timer.h"

namespace orvo {

class ApplicationLookup;
class LegacyTray;
class MenuBarService;
class PanelReader;
class StatusNotifierWatcher;

class MenuBarAgent {
 public:
  // `legacy` may be null.
  MenuBarAgent(sd_bus* bus, ApplicationLookup& applications, MenuBarService& service, StatusNotifierWatcher& watcher,
               PanelReader& panel, LegacyTray* legacy);

  // False when another agent has it.
  bool claimName();

  // Tells again of the items of a process whose application is known by now.
  void announceItems(std::int32_t process);

  // The methods and the property, see sd-bus.h.
  static int activate(sd_bus_message* call, void* agent, sd_bus_error* error);
  static int invalidate(sd_bus_message* call, void* agent, sd_bus_error* error);
  static int tree(sd_bus_message* call, void* agent, sd_bus_error* error);
  static int items(sd_bus_message* call, void* agent, sd_bus_error* error);
  static int requesters(sd_bus_message* call, void* agent, sd_bus_error* error);
  static int endOthers(sd_bus_message* call, void* agent, sd_bus_error* error);
  static int takeOver(sd_bus_message* call, void* agent, sd_bus_error* error);
  static int isWatcherHeld(sd_bus* bus, const char* path, const char* interface, const char* property,
                           sd_bus_message* reply, void* agent, sd_bus_error* error);

 private:
  void announceItem(const std::string& address, std::int32_t process, const std::string& bundle);
  void docked(const LegacyIcon& icon);
  void requestersChanged();
  std::vector<LegacyIcon> legacyIcons() const;

  sd_bus* bus_;
  ApplicationLookup& applications_;
  MenuBarService& service_;
  StatusNotifierWatcher& watcher_;
  PanelReader& panel_;
  LegacyTray* legacy_;
  BusSlot object_;
  // With the last tree, whoever asked for it, and when the panel was last looked at.
  std::vector<DockControls> told_;
  std::vector<DockControls> seen_;
  std::set<std::int32_t> announced_;  // requesters
  Timer pause_;                       // after that
};

}  // namespace orvo
