// Counts the icons that the panel really shows, once it has come to rest after news. Where it shows fewer
// than it was told, it is told the whole list again, which troubles no icon; then to make its views anew. Owned by
// main; main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "agent/AccessibilityBus.h"
#include "platform/linux/Timer.h"

namespace orvo {

class MenuBarService;

class TrayCensus {
 public:
  TrayCensus(sd_bus* session, MenuBarService& service, std::function<void()> listDoubted);

 private:
  void begin();
  void count(const std::string& accessibilityAddress);
  void descend(const Accessible& accessible);
  void compare();
  void askStatuses();
  void judge(std::size_t expected);

  sd_bus* session_;
  MenuBarService& service_;
  std::function<void()> listDoubted_;
  AccessibilityBus bus_;
  Timer rest_;
  bool isCounting_ = false;
  unsigned counts_ = 0;               // begun
  int misses_ = 0;                    // counts without a result since the last news
  std::set<std::int32_t> processes_;  // of the panels' trays
  std::optional<std::size_t> shown_;  // by the tray that shows least
  // The count is taken from where one panel keeps its icons: nobody is troubled for one that has never been right.
  bool isBelieved_ = false;
  bool isListTold_ = false;  // since the last time that it was right
  bool isRenewed_ = false;   // the same
};

}  // namespace orvo
