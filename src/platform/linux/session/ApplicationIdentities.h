// Which applications processes belong to, as ApplicationLookup finds it out, for a program that runs in Qt's event
// loop. Owned by main.cpp; main thread.
#pragma once

#include "platform/linux/ApplicationLookup.h"
#include "platform/linux/BusHandles.h"

#include <QSocketNotifier>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace orvo {

class ApplicationIdentities {
 public:
  // How long whoever asks may wait: many times what a disk takes for what it was asked before.
  static constexpr std::chrono::milliseconds limit{100};

  ApplicationIdentities();

  // From now on there is an event loop, in which what is late can come.
  void begin();

  // `found` is called before this returns; while anything is late, nobody waits and it is called in the event loop.
  void find(std::int32_t process, ApplicationLookup::Found found);

  // Waits for it, whatever else is late. Without an identifier for unknown, and for what is not known by then.
  ApplicationIdentity findNow(std::int32_t process);

  void onLate(std::function<void(std::int32_t process, const ApplicationIdentity& identity)> action) {
    lookup_.onLate = std::move(action);
  }

 private:
  void serve();

  EventLoop loop_;
  ApplicationLookup lookup_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace orvo
