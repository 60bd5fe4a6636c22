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

bool ItemRegistry::add(TrayItem item) {
  const auto known = std::find_if(items_.begin(), items_.end(), [&](const TrayItem& each) {
    return each.owner == item.owner && each.path == item.path;
  });
  if (known != items_.end()) {
    known->names.merge(item.names);
    return false;
  }
  items_.push_back(std::move(item));
  return true;
}

std::vector<TrayItem> ItemRegistry::nameLost(const std::string& name) {
  for (TrayItem& item : items_) item.names.erase(name);
  const auto gone = std::stable_partition(
      items_.begin(), items_.end(), [&](const TrayItem& item) { return item.owner != name && !item.names.empty(); });
  std::vector<TrayItem> lost(std::make_move_iterator(gone), std::make_move_iterator(items_.end()));
  items_.erase(gone, items_.end());
  return lost;
}

}  // namespace orvo
