// The panel's accessible tree as far as it tells places. Where things hang is kept from reading to reading;
// each reading asks for that and for the places anew, all at once, and starts over where it finds another
// tree than it knew. Owned by PanelReader; main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "agent/AccessibilityBus.h"
#include "agent/rules/StatusControls.h"

namespace orvo {

class PanelTree {
 public:
  // The panel's docks in its own order; absent when somebody did not answer, or nothing usable.
  using Answer = std::function<void(const std::optional<std::vector<Dock>>&)>;

  explicit PanelTree(AccessibilityBus& bus) : bus_(bus) {}

  // To be called once the bus has begun, and not again before the answer.
  void read(std::int32_t panelProcess, Answer answer);

  // The panel's name on the accessibility bus; empty while it is not known.
  const std::string& panelService() const { return known_.panel.service; }

 private:
  struct DockTree {
    Accessible frame;
    std::vector<Accessible> containers;  // the first holds the plug-ins
    std::vector<Accessible> plugins;
  };
  struct Structure {
    std::int32_t process = 0;  // 0 for none
    Accessible panel{};
    std::vector<Accessible> windows{};
    std::map<std::size_t, DockTree> docks{};  // by their place among the windows
  };

  void find();
  void findDocks();
  void findPlugins(std::size_t index);
  void measure();
  void measure(std::size_t index, const DockTree& dock);
  void expectChildren(const Accessible& parent, const std::vector<Accessible>& children);
  void measured(AccessibilityBus::Outcome outcome);
  void answer(const std::optional<std::vector<Dock>>& docks);

  AccessibilityBus& bus_;
  Structure known_;
  std::int32_t process_ = 0;
  int finds_ = 0;  // in this reading
  bool isOutdated_ = false;
  std::map<std::size_t, Dock> docks_;
  Answer answer_;
};

}  // namespace orvo
