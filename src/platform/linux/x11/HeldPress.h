// A button press that the tap holds back until the main thread has decided. Shared by the tap's
// thread and the main thread; exactly one of them gets to settle it.
#pragma once

#include "platform/EventTap.h"

#include <atomic>

namespace orvo {

class HeldPress {
 public:
  HeldPress(EventType type, Point location) : type_(type), location_(location) {}

  EventType type() const { return type_; }
  Point location() const { return location_; }  // root coordinates

  // Main thread: true when the callback may be asked. From then on its answer counts, however long
  // it takes.
  bool beginAsking() { return settle(); }
  // Tap's thread: true when the callback has not been asked, and now never will be.
  bool expire() { return settle(); }

 private:
  bool settle() { return !settled_.exchange(true); }

  EventType type_;
  Point location_;
  std::atomic<bool> settled_ = false;
};

}  // namespace orvo
