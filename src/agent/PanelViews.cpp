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
  panels_.ask(ifStill<const PanelQueue::Panels&>(following, [this](Following& each, const PanelQueue::Panels& panels) {
    for (const auto& [name, process] : panels) each.panels.push_back(name);
    if (panels.empty()) each.rounds = neededRounds;
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
                ifStill<sd_bus_message*>(following, [this](Following& each, sd_bus_message*) {
                  if (--each.answers == 0) askProgram(each);
                }));
  }
}

void PanelViews::askProgram(Following& following) {
  askItem(bus_, following.item, "Status", unlimited,
          ifStill<sd_bus_message*>(following, [this](Following& each, sd_bus_message*) {
            ++each.rounds;
            proceed(each);
          }));
}

template <typename Answer>
std::function<void(Answer)> PanelViews::ifStill(const Following& following,
                                                std::function<void(Following&, Answer)> step) {
  return [this, address = following.item.address(), number = following.number, step = std::move(step)](Answer answer) {
    const auto found = open_.find(address);
    if (found != open_.end() && found->second->number == number) step(*found->second, answer);
  };
}

}  // namespace orvo
