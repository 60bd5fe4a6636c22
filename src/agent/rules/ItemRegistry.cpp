#include "agent/rules/ItemRegistry.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvo {

std::optional<Registration> parseRegistration(std::string_view text, std::string_view sender) {
  const auto slash = std::min(text.find('/'), text.size());
  const std::string_view name = slash == 0 ? sender : text.substr(0, slash);
  const std::string_view path = slash == text.size() ? defaultItemPath : text.substr(slash);
  if (text.empty() || name.empty()) return std::nullopt;
  return Registration{std::string(name), std::string(path)};
}

const TrayItem* ItemRegistry::add(const Registration& registration, const std::string& owner,
                                  std::int32_t processIdentifier) {
  const auto known = std::find_if(items_.begin(), items_.end(), [&](const TrayItem& item) {
    return item.owner == owner && item.path == registration.path;
  });
  if (known != items_.end()) {
    known->names.insert(registration.name);
    return nullptr;
  }
  items_.push_back({owner, registration.path, processIdentifier, {registration.name}});
  return &items_.back();
}

std::vector<TrayItem> ItemRegistry::nameLost(const std::string& name) {
  for (TrayItem& item : items_) item.names.erase(name);
  const auto gone = std::stable_partition(
      items_.begin(), items_.end(), [&](const TrayItem& item) { return item.owner != name && !item.names.empty(); });
  std::vector<TrayItem> lost(std::make_move_iterator(gone), std::make_move_iterator(items_.end()));
  items_.erase(gone, items_.end());
  return lost;
}

std::vector<TrayItem> ItemRegistry::clear() { return std::exchange(items_, {}); }

}  // namespace orvo
