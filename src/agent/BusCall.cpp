#include "agent/BusCall.h"

#include <memory>
#include <utility>

namespace orvo {

namespace {

int deliver(sd_bus_message* message, void* handler, sd_bus_error* /*error*/) {
  (*static_cast<BusHandler*>(handler))(message);
  return 0;
}

// The slot owns the handler from now on.
BusSlot owning(sd_bus_slot* slot, std::unique_ptr<BusHandler> handler) {
  sd_bus_slot_set_destroy_callback(slot, [](void* owned) { delete static_cast<BusHandler*>(owned); });
  [[maybe_unused]] const BusHandler* owned = handler.release();
  return BusSlot(slot);
}

// The type of what comes next, behind the variant where it is in one; 0 for nothing.
char typeOfNext(sd_bus_message* answer) {
  char type = 0;
  const char* contents = nullptr;
  if (isError(answer) || sd_bus_message_peek_type(answer, &type, &contents) <= 0) return 0;
  if (type != SD_BUS_TYPE_VARIANT) return type;
  const bool isOpen = sd_bus_message_enter_container(answer, type, contents) > 0;
  return isOpen && sd_bus_message_peek_type(answer, &type, nullptr) > 0 ? type : '\0';
}

}  // namespace

// Trusted, for there is no access control among the programs of one person.
BusHandle connectTo(const std::string& address) {
  sd_bus* made = nullptr;
  if (sd_bus_new(&made) < 0) return nullptr;
  BusHandle bus(made);
  const bool isStarted = sd_bus_set_address(made, address.c_str()) >= 0 && sd_bus_set_bus_client(made, 1) >= 0 &&
                         sd_bus_set_trusted(made, 1) >= 0 && sd_bus_negotiate_fds(made, 0) >= 0 &&
                         sd_bus_start(made) >= 0;
  return isStarted ? std::move(bus) : nullptr;
}

bool send(sd_bus* bus, sd_bus_message* message, std::chrono::milliseconds limit, BusHandler answer) {
  auto handler = std::make_unique<BusHandler>(std::move(answer));
  const auto microseconds = limit == unlimited ? std::numeric_limits<std::uint64_t>::max()
                                               : static_cast<std::uint64_t>(std::chrono::microseconds(limit).count());
  sd_bus_slot* slot = nullptr;
  if (sd_bus_call_async(bus, &slot, message, &deliver, handler.get(), microseconds) < 0) return false;
  return sd_bus_slot_set_floating(owning(slot, std::move(handler)).get(), 1) >= 0;
}

BusMessage methodCall(sd_bus* bus, const BusObject& object, const char* interface, const char* method) {
  sd_bus_message* message = nullptr;
  if (sd_bus_message_new_method_call(bus, &message, object.service.c_str(), object.path.c_str(), interface, method) < 0)
    return {};
  sd_bus_message_set_auto_start(message, 0);
  return taken(message);
}

void askProperty(sd_bus* bus, const BusObject& object, const char* interface, const char* property,
                 std::chrono::milliseconds limit, BusHandler answer) {
  call(bus, object, "org.freedesktop.DBus.Properties", "Get", limit, std::move(answer), "ss", interface, property);
}

bool askAboutName(sd_bus* bus, const char* method, const std::string& name, std::chrono::milliseconds limit,
                  BusHandler answer) {
  return call(bus, busDriver, "org.freedesktop.DBus", method, limit, std::move(answer), "s", name.c_str());
}

// A bus that refuses costs the signal and nothing else.
BusSlot match(sd_bus* bus, const std::string& rule, BusHandler signal) {
  auto handler = std::make_unique<BusHandler>(std::move(signal));
  const auto installed = [](sd_bus_message*, void*, sd_bus_error*) { return 0; };
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_match_async(bus, &slot, rule.c_str(), &deliver, installed, handler.get()) < 0) return {};
  return owning(slot, std::move(handler));
}

BusSlot watchName(sd_bus* bus, const std::string& name, OwnerHandler changed) {
  return match(bus,
               "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
               "member='NameOwnerChanged',arg0='" +
                   name + '\'',
               [changed = std::move(changed)](sd_bus_message* signal) {
                 readText(signal);
                 const std::string before = readText(signal);
                 changed(before, readText(signal));
               });
}

std::string uniqueName(sd_bus* bus) {
  const char* name = nullptr;
  return sd_bus_get_unique_name(bus, &name) < 0 ? "" : name;
}

bool isError(sd_bus_message* answer) { return sd_bus_message_is_method_error(answer, nullptr) > 0; }

std::string readText(sd_bus_message* answer) {
  const char* text = nullptr;
  const bool isText =
      typeOfNext(answer) == SD_BUS_TYPE_STRING && sd_bus_message_read_basic(answer, SD_BUS_TYPE_STRING, &text) > 0;
  return isText ? text : "";
}

std::int32_t readNumber(sd_bus_message* answer) {
  std::int32_t number = 0;
  const char type = typeOfNext(answer);
  if (type == SD_BUS_TYPE_INT32 || type == SD_BUS_TYPE_UINT32) sd_bus_message_read_basic(answer, type, &number);
  return number;
}

std::vector<std::string> readTexts(sd_bus_message* answer, std::size_t most) {
  std::vector<std::string> texts;
  if (typeOfNext(answer) != SD_BUS_TYPE_ARRAY || sd_bus_message_enter_container(answer, SD_BUS_TYPE_ARRAY, "s") <= 0)
    return texts;
  const char* text = nullptr;
  while (texts.size() < most && sd_bus_message_read_basic(answer, SD_BUS_TYPE_STRING, &text) > 0)
    texts.emplace_back(text);
  return texts;
}

}  // namespace orvo
