#include "platform/linux/session/AgentConnection.h"

#include "platform/linux/AgentProtocol.h"

#include <cstdint>
#include <limits>

namespace orvo {

namespace {

int keep(sd_bus_message* message, void* answer, sd_bus_error* /*error*/) {
  *static_cast<BusMessage*>(answer) = kept(message);
  return 0;
}

}  // namespace

BusMessage AgentConnection::ask(const char* method, std::chrono::milliseconds limit) {
  const auto deadline = Clock::now() + limit;
  const std::unique_lock lock(mutex_, deadline);
  return lock && isOpen() ? send(method, deadline) : nullptr;
}

// sd-bus connects without waiting.
bool AgentConnection::isOpen() {
  if (bus_ && sd_bus_is_open(bus_.get()) > 0) return true;
  sd_bus* bus = nullptr;
  sd_bus_open_user(&bus);
  bus_.reset(bus);
  return bus != nullptr;
}

// By hand, since sd_bus_call() knows no limit while it connects.
BusMessage AgentConnection::send(const char* method, Clock::time_point deadline) {
  sd_bus_message* question = nullptr;
  if (sd_bus_message_new_method_call(bus_.get(), &question, agent_protocol::service, agent_protocol::path,
                                     agent_protocol::interface, method) < 0)
    return nullptr;
  const BusMessage owned = taken(question);
  sd_bus_message_set_auto_start(question, 0);
  BusMessage answer;
  sd_bus_slot* slot = nullptr;
  sd_bus_call_async(bus_.get(), &slot, question, &keep, &answer, std::numeric_limits<std::uint64_t>::max());
  const BusSlot pending(slot);
  while (pending && !answer) {
    const int done = sd_bus_process(bus_.get(), nullptr);
    const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - Clock::now());
    if (done < 0 || left.count() <= 0) break;
    if (done == 0) sd_bus_wait(bus_.get(), static_cast<std::uint64_t>(left.count()));
  }
  return answer;
}

}  // namespace orvo
