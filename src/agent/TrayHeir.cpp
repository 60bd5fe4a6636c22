#include "agent/TrayHeir.h"

#include <algorithm>
#include <utility>

#include "agent/StatusNotifierWatcher.h"
#include "agent/rules/ItemRegistry.h"

namespace orvo {

TrayHeir::TrayHeir(sd_bus* bus)
    : bus_(bus),
      owners_(watchName(bus, watcherName, [this](const std::string&, const std::string& owner) { follow(owner); })),
      signals_(match(bus, std::string("type='signal',path='") + watcherPath + "',interface='" + watcherName + '\'',
                     [this](sd_bus_message* signal) { heard(signal); })) {
  askAboutName(bus_, "GetNameOwner", watcherName, unlimited, [this](sd_bus_message* answer) {
    if (!isError(answer)) follow(readText(answer));
  });
}

// What the last one knew counts until another one tells.
void TrayHeir::follow(const std::string& owner) {
  owner_ = owner == uniqueName(bus_) ? "" : owner;
  if (owner_.empty()) return;
  askProperty(bus_, {owner_, watcherPath}, watcherName, "RegisteredStatusNotifierItems", unlimited,
              [this, owner](sd_bus_message* answer) {
                if (isError(answer) || owner != owner_) return;
                items_ = readTexts(answer, ItemRegistry::most);
                std::erase_if(items_, [](const std::string& item) { return !parseRegistration(item, {}); });
              });
}

std::vector<std::string> TrayHeir::inherit() {
  owners_.reset();
  signals_.reset();
  owner_.clear();
  return std::exchange(items_, {});
}

void TrayHeir::heard(sd_bus_message* signal) {
  if (sd_bus_message_get_sender(signal) != owner_) return;
  const std::string member = sd_bus_message_get_member(signal);
  const std::string item = readText(signal);
  if (member == "StatusNotifierItemUnregistered") std::erase(items_, item);
  const bool isRoom = items_.size() < ItemRegistry::most && parseRegistration(item, {});
  if (member == "StatusNotifierItemRegistered" && isRoom && std::ranges::find(items_, item) == items_.end())
    items_.push_back(item);
}

}  // namespace orvo
