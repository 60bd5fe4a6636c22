#include "agent/PanelViews.h"

#include <chrono>

#include "agent/StatusNotifierWatcher.h"

namespace orvo {

namespace {

// xfce4-panel 4.18 asks three times, and turns to other work before the first.
constexpr int neededRounds = 5;

// Behind one that takes longer, others are no longer held back.
constexpr std::chrono::seconds patience{1};

}  // namespace

void askItem(sd_bus* bus, const TrayItem& item, const char* property, std::chrono::milliseconds limit,
             BusHandler answer) {
  askProperty(bus, {item.owner, item.path}, "org.kde.StatusNotifierItem", property, limit, std::move(answer));
}

void PanelViews::follow(const TrayItem& item) {
  const std::string address = item.address();
  const auto late = [this, address] { delayed_(address); };
  Following& following = *(open_[address] = std::make_unique<Following>(item, ++last_, sd_bus_get_event(bus_), late));
  following.patience.start(patience);
  // Panels stand in the queue for the watcher's name.
  askAboutName(bus_, "ListQueuedOwners", watcherName, unlimited,
               ifStill(following, [this](Following& each, sd_bus_message* answer) {
                 each.panels = readTexts(answer);
                 std::erase(each.panels, uniqueName(bus_));
                 if (each.panels.empty()) each.rounds = neededRounds;
                 proceed(each);
               }));
}

void PanelViews::proceed(Following& following) {
  if (following.rounds < neededRounds) return askPanels(following);
  const std::string address = following.item.address();
  open_.erase(address);
  made_(address);
}

void PanelViews::askPanels(Following& following) {
  following.answers = following.panels.size();
  for (const std::string& panel : following.panels) {
    askProperty(bus_, {panel, watcherPath}, watcherName, "ProtocolVersion", unlimited,
                ifStill(following, [this](Following& each, sd_bus_message*) {
                  if (--each.answers == 0) askProgram(each);
                }));
  }
}

void PanelViews::askProgram(Following& following) {
  askItem(bus_, following.item, "Status", unlimited, ifStill(following, [this](Following& each, sd_bus_message*) {
            ++each.rounds;
            proceed(each);
          }));
}

BusHandler PanelViews::ifStill(const Following& following, std::function<void(Following&, sd_bus_message*)> step) {
  return [this, address = following.item.address(), number = following.number,
          step = std::move(step)](sd_bus_message* answer) {
    const auto found = open_.find(address);
    if (found != open_.end() && found->second->number == number) step(*found->second, answer);
  };
}

}  // namespace orvo
