#include "agent/PanelQueue.h"

#include <cstddef>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "agent/StatusNotifierWatcher.h"
#include "platform/linux/Program.h"

namespace orvo {

namespace {

bool runs(std::int32_t process, const char* program) { return baseName(executableOf(process)) == program; }

}  // namespace

bool isPlugin(std::int32_t process) { return runs(process, "wrapper-2.0"); }

// The panel may have its tray inside, too.
void PanelQueue::ask(std::function<void(const Panels&)> found) {
  askAboutName(bus_, "ListQueuedOwners", watcherName, unlimited,
               [this, found = std::move(found)](sd_bus_message* answer) {
                 const std::vector<std::string> names = readTexts(answer);
                 const std::set<std::string> queue(names.begin(), names.end());
                 std::erase_if(known_, [&](const auto& known) { return !queue.contains(known.first); });
                 const auto open = std::make_shared<std::size_t>(1);
                 const auto answered = [this, open, found] {
                   if (--*open > 0) return;
                   Panels panels = known_;
                   std::erase_if(panels, [](const auto& known) { return known.second == 0; });
                   found(panels);
                 };
                 for (const std::string& name : queue) {
                   if (known_.contains(name)) continue;
                   ++*open;
                   askAboutName(bus_, "GetConnectionUnixProcessID", name, unlimited,
                                [this, name, answered](sd_bus_message* process) {
                                  const std::int32_t number = readNumber(process);
                                  known_[name] = isPlugin(number) || runs(number, "xfce4-panel") ? number : 0;
                                  answered();
                                });
                 }
                 answered();
               });
}

}  // namespace orvo
