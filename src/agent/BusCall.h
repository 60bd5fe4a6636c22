// Calls and signals on a bus that never wait: the answer, or the error in its place, comes later from the event
// loop. Free functions over connections owned by the caller; main thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "platform/linux/BusHandles.h"

namespace orvo {

// Null where the address is none. Never waits: whether anybody is there shows later. File descriptors are not
// accepted: those that peers send along with calls would use up this process's.
BusHandle connectTo(const std::string& address);

struct BusObject {
  std::string service;
  std::string path;

  bool operator==(const BusObject&) const = default;
};

// Of the bus itself.
inline const BusObject busDriver{"org.freedesktop.DBus", "/org/freedesktop/DBus"};

// Whoever is stopped answers when it goes on.
inline constexpr std::chrono::milliseconds unlimited = std::chrono::milliseconds::max();

using BusHandler = std::function<void(sd_bus_message*)>;

// False, and no answer, where the connection is closed or D-Bus forbids a name.
bool send(sd_bus* bus, sd_bus_message* message, std::chrono::milliseconds limit, BusHandler answer);

// Null where D-Bus forbids a name. Never starts a service.
BusMessage methodCall(sd_bus* bus, const BusObject& object, const char* interface, const char* method);

// `types` and what follows are the arguments, as sd_bus_message_append() takes them.
template <typename... Arguments>
bool call(sd_bus* bus, const BusObject& object, const char* interface, const char* method,
          std::chrono::milliseconds limit, BusHandler answer, const char* types, Arguments... arguments) {
  const BusMessage message = methodCall(bus, object, interface, method);
  return message && sd_bus_message_append(message.get(), types, arguments...) >= 0 &&
         send(bus, message.get(), limit, std::move(answer));
}

void askProperty(sd_bus* bus, const BusObject& object, const char* interface, const char* property,
                 std::chrono::milliseconds limit, BusHandler answer);

// A method of the bus itself about a name, such as GetNameOwner.
bool askAboutName(sd_bus* bus, const char* method, const std::string& name, std::chrono::milliseconds limit,
                  BusHandler answer);

// For as long as the slot is kept.
BusSlot match(sd_bus* bus, const std::string& rule, BusHandler signal);

// Unique names; empty for nobody.
using OwnerHandler = std::function<void(const std::string& before, const std::string& now)>;
BusSlot watchName(sd_bus* bus, const std::string& name, OwnerHandler changed);

std::string uniqueName(sd_bus* bus);

// What comes next in a message, or the value of the property that comes next: empty, or 0, for an error or for
// something else.
bool isError(sd_bus_message* answer);
std::string readText(sd_bus_message* answer);
std::int32_t readNumber(sd_bus_message* answer);  // of 32 bits, with or without a sign
std::vector<std::string> readTexts(sd_bus_message* answer, std::size_t most = std::numeric_limits<std::size_t>::max());

}  // namespace orvo
