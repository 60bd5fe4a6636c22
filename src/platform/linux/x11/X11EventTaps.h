// The session event tap for X11: mouse presses inside the regions of interest, caught by covers over
// the panel. Owned by main.cpp; main thread only, its waiting is done by a thread of its own.
//
// There is one tap at a time. It sees nothing without regions, and in regions outside any dock
// window: those clicks pass. Where the tree tells of controls, a region follows its panel's window,
// and a press in it is shown where the region was told to be; a posted press goes to where its control is by
// then, and to nobody when that has gone. A press that the callback lets through, and a posted press, reach the
// session together with their release when the physical button is up, since a press given while the
// button is held would never arrive; a posted release is contained in that. A click older than
// clickLimit reaches nobody. A tap whose connection to the server has ended is told as disabled by user input: any
// client may end it. Touches count as far as the server turns them into button events.
#pragma once

#include "platform/EventTap.h"
#include "platform/linux/ControlPlaces.h"
#include "platform/MainQueue.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvo {

struct GuardedRegion;
class HeldPress;
class TapThread;
class X11Event;

class X11EventTaps : public EventTaps {
 public:
  // `trusted` tells whether this process may tap at all.
  X11EventTaps(MainQueue& queue, std::function<bool()> trusted, const ControlPlaces& places);
  // Events that were posted still reach the session, unless their button is held or nobody knows where
  // their control is.
  ~X11EventTaps() override;

  std::unique_ptr<EventTapPort> create(EventTapLocation location, EventTapPlacement placement, EventTapOptions options,
                                       std::uint64_t mask, EventTapCallback callback, void* userInfo) override;
  // Takes events of this class only. An enabled tap is shown the event on the next turn of the main
  // queue, or never if it is gone by then.
  void post(EventTapLocation location, const Event& event) override;

 private:
  class Port;
  struct Tap;

  bool hasThread() const;
  bool startThread();
  void update();
  std::vector<GuardedRegion> guarded(const std::vector<Rect>& frames) const;
  void answer(const std::shared_ptr<HeldPress>& press);
  void release(const HeldPress& press, Point location);
  void disable(EventType reason);
  bool passes(X11Event& event);
  void showPosted();
  void givePosted();
  void give(const X11Event& event);
  void invalidate();
  void onMain(std::function<void()> task);

  MainQueue& queue_;
  std::function<bool()> trusted_;
  const ControlPlaces& places_;
  std::shared_ptr<Tap> tap_;  // absent when there is none or it is invalid
  std::deque<X11Event> posted_;
  std::shared_ptr<int> alive_;  // outlives the thread, whose tasks ask whether it is gone
  std::unique_ptr<TapThread> thread_;
};

}  // namespace orvo
