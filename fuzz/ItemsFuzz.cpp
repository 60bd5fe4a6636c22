// Feeds arbitrary bytes to what peers register and to what a guardian finds in its memory.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "agent/rules/ItemRegistry.h"
#include "agent/rules/KeptItems.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  if (const auto item = orvo::parseRegistration(text, ":1.5")) {
    // Told to panels as one text, it must be read again as the same.
    const auto again = orvo::parseRegistration(item->name + item->path, {});
    if (!again || again->name != item->name || again->path != item->path) std::abort();
    if (item->path.find("//") != std::string::npos || item->name.find_first_of(" \n/") != std::string::npos)
      std::abort();
    const std::string kept = orvo::keptItems({{":1.5", std::string(orvo::defaultItemPath), 5, {item->name}}});
    if (orvo::itemsToRestore(kept + text, {}).front() != item->name) std::abort();
  }
  for (const std::string& name : orvo::itemsToRestore(text, {text}))
    if (name.empty()) std::abort();
  return 0;
}
