#include "agent/IconRestorer.h"

#include <chrono>
#include <utility>

#include "agent/StatusNotifierWatcher.h"
#include "agent/rules/KeptItems.h"

namespace orvo {

namespace {

// A waiting panel has the name at once; an agent that is started again needs a moment.
constexpr std::chrono::seconds limit{3};

}  // namespace

IconRestorer::IconRestorer(sd_bus* bus, pid_t agent, std::string kept, std::function<void()> finished)
    : bus_(bus),
      kept_(std::move(kept)),
      finished_(std::move(finished)),
      late_(sd_bus_get_event(bus), finished_),
      owner_(watchName(bus, watcherName, [this](const std::string&, const std::string& owner) {
        if (!owner.empty()) askWatcher();
      })) {
  late_.start(limit);
  // The agent's end may be known here before the bus has noticed it.
  askAboutName(bus_, "GetConnectionUnixProcessID", watcherName, limit, [this, agent](sd_bus_message* answer) {
    if (!isError(answer) && readNumber(answer) != agent) askWatcher();
  });
}

// A panel that is stopped or busy is waited for.
void IconRestorer::askWatcher() {
  late_.stop();
  askProperty(bus_, {watcherName, watcherPath}, watcherName, "RegisteredStatusNotifierItems", unlimited,
              [this](sd_bus_message* answer) { isError(answer) ? late_.start(limit) : registerMissing(answer); });
}

void IconRestorer::registerMissing(sd_bus_message* answer) {
  const auto missing = itemsToRestore(kept_, readTexts(answer));
  if (missing.empty()) finished_();
  open_ += missing.size();
  for (const std::string& name : missing) {
    call(
        bus_, {watcherName, watcherPath}, watcherName, "RegisterStatusNotifierItem", unlimited,
        [this](sd_bus_message*) {
          if (--open_ == 0) finished_();
        },
        "s", name.c_str());
  }
}

}  // namespace orvo
