#include "agent/rules/ItemRegistry.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace orvo {

namespace {

// In characters. D-Bus limits names to 255, and nothing else; a path is handed on to every panel.
constexpr std::size_t longestName = 255;
constexpr std::size_t longestRegistration = 1024;

bool isWordCharacter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || character == '_';
}

// As D-Bus defines object paths: elements that are not empty, of letters, digits and underscores.
bool isObjectPath(std::string_view path) {
  if (path == "/") return true;
  char before = '\0';
  for (const char character : path) {
    if (character == '/' ? before == '/' : !isWordCharacter(character)) return false;
    before = character;
  }
  return path.starts_with('/') && before != '/';
}

// Loosely: what is not of these is no name of anybody, and the bus does not even answer a question about it.
bool isBusName(std::string_view name) {
  return name.size() <= longestName && name.find('.') != std::string_view::npos &&
         std::all_of(name.begin(), name.end(), [](char character) {
           return isWordCharacter(character) || character == '.' || character == ':' || character == '-';
         });
}

}  // namespace

std::optional<Registration> parseRegistration(std::string_view text, std::string_view sender) {
  const auto slash = std::min(text.find('/'), text.size());
  const std::string_view name = slash == 0 ? sender : text.substr(0, slash);
  const std::string_view path = slash == text.size() ? defaultItemPath : text.substr(slash);
  if (text.size() > longestRegistration || !isBusName(name) || !isObjectPath(path)) return std::nullopt;
  return Registration{std::string(name), std::string(path)};
}

bool ItemRegistry::add(TrayItem item) {
  const auto known = std::find_if(items_.begin(), items_.end(), [&](const TrayItem& each) {
    return each.owner == item.owner && each.path == item.path;
  });
  if (known != items_.end()) {
    if (known->names.size() < mostNames) known->names.merge(item.names);
    return false;
  }
  if (isFull(item.processIdentifier)) return false;
  items_.push_back(std::move(item));
  return true;
}

void ItemRegistry::identify(std::int32_t processIdentifier, const std::string& bundle) {
  for (TrayItem& item : items_)
    if (item.processIdentifier == processIdentifier && item.bundle.empty()) item.bundle = bundle;
}

bool ItemRegistry::isNamed(const std::string& name) const {
  return std::any_of(items_.begin(), items_.end(),
                     [&](const TrayItem& item) { return item.owner == name || item.names.contains(name); });
}

bool ItemRegistry::isFull(std::int32_t processIdentifier) const {
  const auto ofProcess = std::count_if(items_.begin(), items_.end(), [processIdentifier](const TrayItem& each) {
    return each.processIdentifier == processIdentifier;
  });
  return items_.size() >= most || static_cast<std::size_t>(ofProcess) >= mostOfProcess;
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
