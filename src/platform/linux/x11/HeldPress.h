// A button press that the tap holds back until the main thread has decided. Shared by the tap's
// thread and the main thread; exactly one of them gets to settle it.
#pragma once

#include "platform/EventTap.h"
#include "platform/linux/x11/GuardedRegion.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <utility>

namespace orvo {

class HeldPress {
 public:
  using Moment = std::chrono::steady_clock::time_point;

  // Where a press was: on the screen, within the regions as their owner knows them, and on its control.
  struct Place {
    Point screen;
    Point location;
    std::optional<ControlPoint> control = {};
  };

  HeldPress(EventType type, Place place, Moment moment) : type_(type), place_(std::move(place)), moment_(moment) {}

  EventType type() const { return type_; }
  const Place& place() const { return place_; }
  Moment moment() const { return moment_; }  // when the person pressed

  // Main thread: true when the callback may be asked. From then on its answer counts, however long
  // it takes.
  bool beginAsking() { return settle(State::asked); }
  // Tap's thread: true when the callback has not been asked, and now never will be.
  bool expire() { return settle(State::expired); }
  bool wasAsked() const { return state_ == State::asked; }

 private:
  enum class State { waiting, asked, expired };

  bool settle(State state) {
    State expected = State::waiting;
    return state_.compare_exchange_strong(expected, state);
  }

  EventType type_;
  Place place_;
  Moment moment_;
  std::atomic<State> state_ = State::waiting;
};

}  // namespace orvo
