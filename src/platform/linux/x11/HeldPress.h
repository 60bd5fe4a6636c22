// A button press that the tap holds back until the main thread has decided. Shared by the tap's
// thread and the main thread; exactly one of them gets to settle it.
#pragma once

#include "platform/EventTap.h"

#include <atomic>
#include <chrono>

namespace orvo {

class HeldPress {
 public:
  using Moment = std::chrono::steady_clock::time_point;

  HeldPress(EventType type, Point location, Moment moment) : type_(type), location_(location), moment_(moment) {}

  EventType type() const { return type_; }
  Point location() const { return location_; }  // root coordinates
  Moment moment() const { return moment_; }     // when the person pressed

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
  Point location_;
  Moment moment_;
  std::atomic<State> state_ = State::waiting;
};

}  // namespace orvo
