// What the guardian knows of the tray once the agent is gone, as text that both can read, and what it
// makes of it. Plain functions; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "agent/rules/ItemRegistry.h"

namespace orvo {

// Only the items that somebody else can register: watchers take a path alone for one of the caller's
// own, so an item at a path of its own has to come back by itself.
std::string keptItems(const std::vector<TrayItem>& items);

// The names to register with a watcher that lists `listed`, in the order of their first coming. `kept`
// may be followed by the rest of an older, longer text.
std::vector<std::string> itemsToRestore(std::string_view kept, const std::vector<std::string>& listed);

}  // namespace orvo
