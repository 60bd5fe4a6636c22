#include "agent/rules/KeptItems.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

namespace orvo {

namespace {

std::set<std::string> namesIn(const std::vector<std::string>& listed) {
  std::set<std::string> names;
  for (const std::string& text : listed) {
    const auto item = parseRegistration(text, {});
    if (item && item->path == defaultItemPath) names.insert(item->name);
  }
  return names;
}

std::vector<std::string> words(const std::string& line) {
  std::istringstream stream(line);
  return {std::istream_iterator<std::string>(stream), {}};
}

}  // namespace

// A line for each item: its owner, then the names it registered under. The empty line at the end parts
// the text from what an older one left behind it.
std::string keptItems(const std::vector<TrayItem>& items) {
  std::string text;
  for (const TrayItem& item : items) {
    if (item.path != defaultItemPath) continue;
    text += item.owner;
    for (const std::string& name : item.names) text += ' ' + name;
    text += '\n';
  }
  return text.empty() ? text : text + '\n';
}

// By a name that the item uses itself: it may register at this very moment too, and panels take two
// names for two items.
std::vector<std::string> itemsToRestore(std::string_view kept, const std::vector<std::string>& listed) {
  std::vector<std::string> missing;
  const auto known = namesIn(listed);
  std::istringstream stream{std::string(kept)};
  for (std::string line; std::getline(stream, line) && !stream.eof() && !line.empty();) {
    const auto names = words(line);
    const auto isKnown = [&known](const std::string& name) { return known.contains(name); };
    if (!names.empty() && std::none_of(names.begin(), names.end(), isKnown)) missing.push_back(names.back());
  }
  return missing;
}

}  // namespace orvo
