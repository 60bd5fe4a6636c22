// Feeds trees of arbitrary rows, as they travel over the bus, to the reader of the agent's answer. A line is a row:
// parent, process, identifier ("-" for none), 1 for a frame, and the frame.
#include <sys/socket.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "platform/linux/AgentProtocol.h"
#include "platform/linux/session/AgentTree.h"

namespace {

// With nobody at its other end; messages are made by a bus.
orvo::BusHandle makeBus() {
  std::array<int, 2> ends{};
  sd_bus* bus = nullptr;
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0 || sd_bus_new(&bus) < 0 ||
      sd_bus_set_fd(bus, ends[0], ends[0]) < 0 || sd_bus_start(bus) < 0)
    std::abort();
  return orvo::BusHandle(bus);
}

orvo::BusMessage makeAnswer(std::istream& rows) {
  static const orvo::BusHandle bus = makeBus();
  const char* form = orvo::agent_protocol::treeForm + 1;
  sd_bus_message* answer = nullptr;
  if (sd_bus_message_new(bus.get(), &answer, SD_BUS_MESSAGE_METHOD_RETURN) < 0) std::abort();
  sd_bus_message_open_container(answer, 'a', form);
  for (std::string line; std::getline(rows, line);) {
    std::istringstream words(line);
    std::int32_t parent = -1;
    std::int32_t process = 0;
    std::string identifier;
    int hasFrame = 0;
    std::array<std::string, 4> frame;
    words >> parent >> process >> identifier >> hasFrame >> frame[0] >> frame[1] >> frame[2] >> frame[3];
    const auto number = [&](std::size_t index) { return std::strtod(frame.at(index).c_str(), nullptr); };
    const char* name = identifier == "-" ? "" : identifier.c_str();
    sd_bus_message_append(answer, form, parent, process, name, hasFrame, number(0), number(1), number(2), number(3));
  }
  sd_bus_message_close_container(answer);
  if (sd_bus_message_seal(answer, 1, 0) >= 0) sd_bus_message_rewind(answer, 1);
  return orvo::taken(answer);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream rows(std::string(data, data + size));
  const auto elements = orvo::AgentTree::decode(makeAnswer(rows).get());
  std::size_t children = 0;
  for (std::size_t index = 0; index < elements.size(); ++index) {
    for (const std::size_t child : elements[index].children)
      if (child <= index || child >= elements.size()) std::abort();
    children += elements[index].children.size();
  }
  if (!elements.empty() && children != elements.size() - 1) std::abort();
  for (const orvo::ControlPlace& control : orvo::AgentTree::controls(elements))
    if (control.identifier.empty() || !(std::fabs(control.frame.x) <= 32767)) std::abort();
  return 0;
}
