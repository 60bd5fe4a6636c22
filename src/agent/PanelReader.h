// Tells the panel's status controls: their kinds from the panel's settings, their places through
// Accessibility. Never waits. Asks for places only when it is asked, and is not woken by what the panel
// shows in between, unless it watches. Owned by main; main thread.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <vector>

#include "agent/AccessibilityBus.h"
#include "agent/PanelSettings.h"
#include "agent/PanelTree.h"
#include "agent/rules/StatusControls.h"
#include "platform/linux/Timer.h"

namespace orvo {

class PanelReader {
 public:
  // A panel that has not answered within the limit gets its last known answer. Below the 0.2 s for
  // which a scan waits for the tree.
  static constexpr std::chrono::milliseconds limit{120};

  struct Reading {
    std::vector<DockControls> docks;
    bool isFresh = false;  // not one of before, in place of an answer that did not come
  };
  using Answer = std::function<void(const Reading&)>;

  explicit PanelReader(sd_bus* session);

  // `answer` is called once, with what the panel says from now on. No docks without a panel or an
  // accessibility bus.
  void read(Answer answer);

  // While it watches, it reads whenever the panel may have put something elsewhere, and once at first.
  void watch(bool watches);

  // What watching found, the same as before or not.
  std::function<void(const std::vector<DockControls>& docks)> onLooked;

 private:
  using Clock = std::chrono::steady_clock;
  struct Waiting {
    Answer answer;
    Clock::time_point deadline;
    int reading;  // the first that began late enough
  };

  void startReading();
  void readTree(const PanelFacts& facts);
  void succeed(std::vector<DockControls> docks);
  void fail();
  void endReading(bool isFresh);
  void settleLate();
  void lookSoon(std::chrono::milliseconds pause);
  void look();
  void seen(const Reading& reading);

  PanelSettings settings_;
  AccessibilityBus bus_;
  PanelTree tree_{bus_};
  // At most one at a time: while a stopped panel keeps it waiting, nothing more is asked of it.
  bool isReading_ = false;
  int readings_ = 0;
  std::deque<Waiting> waiting_;  // in the order in which they become late
  Timer late_;
  std::vector<DockControls> lastKnown_;
  bool isWatching_ = false;
  bool isLooking_ = false;  // in the reading under way, however long it takes
  Timer look_;
};

}  // namespace orvo
