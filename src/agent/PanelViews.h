// Follows the panel while it makes its view of an item: it asks the item's program one question after the
// other, and nobody tells when it is done. A question to the panel is answered behind what reached it
// before, and one to the item's program behind the panel's; so after a few of both in turn it is done,
// whoever is slow, busy or stopped. Owned by MenuBarService; main thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "agent/BusCall.h"
#include "agent/PanelQueue.h"
#include "agent/rules/ItemRegistry.h"
#include "platform/linux/Timer.h"

namespace orvo {

// What the item's program says of it.
void askItem(sd_bus* bus, const TrayItem& item, const char* property, std::chrono::milliseconds limit,
             BusHandler answer);

class PanelViews {
 public:
  using Tell = std::function<void(const std::string& address)>;

  PanelViews(sd_bus* bus, PanelQueue& panels, Tell made, Tell delayed)
      : bus_(bus), panels_(panels), made_(std::move(made)), delayed_(std::move(delayed)) {}

  // To be called when the panel has just been told of the item.
  void follow(const TrayItem& item);
  void forget(const std::string& address) { open_.erase(address); }

 private:
  struct Following {
    Following(TrayItem itsItem, std::uint64_t itsNumber, sd_event* loop, std::function<void()> late)
        : item(std::move(itsItem)), number(itsNumber), patience(loop, std::move(late)) {}

    TrayItem item;
    std::uint64_t number;  // no other has it
    Timer patience;
    std::vector<std::string> panels{};  // unique names
    int rounds = 0;
    std::size_t answers = 0;  // still to come from the panels in this round
  };

  void askPanels(Following& following);
  void askProgram(Following& following);
  void proceed(Following& following);
  // Nothing for one that was forgotten, or followed anew, in the meantime.
  template <typename Answer>
  std::function<void(Answer)> ifStill(const Following& following, std::function<void(Following&, Answer)> step);

  sd_bus* bus_;
  PanelQueue& panels_;
  Tell made_;
  Tell delayed_;
  std::map<std::string, std::unique_ptr<Following>> open_;  // by address
  std::uint64_t last_ = 0;
};

}  // namespace orvo
