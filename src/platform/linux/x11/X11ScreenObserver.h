// Posts screenParametersChanged when the screens' places or sizes change. Owned by main.cpp; main
// thread only, changes are waited for on a thread of its own.
#pragma once

#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/x11/EventThread.h"
#include "platform/linux/x11/XConnection.h"

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace orvo {

// One change of configuration comes as several; they are over when none came for this long.
inline constexpr std::chrono::milliseconds screenSettleTime{100};

class X11ScreenObserver {
 public:
  // An empty `display` stands for DISPLAY. Without an X server nothing is ever posted; without RandR
  // only changes of the whole screen's size are.
  X11ScreenObserver(MainQueue& queue, NotificationCenter& center, const std::string& display = {});
  ~X11ScreenObserver();
  X11ScreenObserver(const X11ScreenObserver&) = delete;
  X11ScreenObserver& operator=(const X11ScreenObserver&) = delete;

 private:
  // x, y, width and height of each screen in use, and of the root.
  using Geometry = std::vector<std::array<int, 4>>;

  bool usesRandr();
  void handle(const xcb_generic_event_t& event);
  Geometry currentGeometry() const;
  void changeSeen();
  void settled();

  MainQueue& queue_;
  NotificationCenter& center_;
  std::unique_ptr<XConnection> connection_;
  bool randr_ = false;
  std::uint8_t randrEvent_ = 0;
  Geometry geometry_;
  MainQueue::Handle settle_ = MainQueue::Handle::none;
  std::shared_ptr<int> alive_;
  std::unique_ptr<EventThread> events_;
};

}  // namespace orvo
