// Owners of what sd-bus and sd-event count references of. Plain values; the thread of what they hold.
#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <memory>

namespace orvo {

template <auto release>
struct Releasing {
  template <typename Type>
  void operator()(Type* object) const {
    release(object);
  }
};

using EventLoop = std::unique_ptr<sd_event, Releasing<sd_event_unref>>;
using EventSource = std::unique_ptr<sd_event_source, Releasing<sd_event_source_disable_unref>>;
using BusHandle = std::unique_ptr<sd_bus, Releasing<sd_bus_close_unref>>;
using BusSlot = std::unique_ptr<sd_bus_slot, Releasing<sd_bus_slot_unref>>;  // goes before its bus
using BusMessage = std::shared_ptr<sd_bus_message>;

// Of its caller's own; null where the system has no room for it.
inline EventLoop newLoop() {
  sd_event* loop = nullptr;
  sd_event_new(&loop);
  return EventLoop(loop);
}

// Takes the reference over.
inline BusMessage taken(sd_bus_message* message) { return {message, sd_bus_message_unref}; }

// Adds one.
inline BusMessage kept(sd_bus_message* message) { return taken(sd_bus_message_ref(message)); }

}  // namespace orvo
