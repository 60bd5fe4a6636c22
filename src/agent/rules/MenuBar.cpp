#include "agent/rules/MenuBar.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvo {

MenuBarChange MenuBar::add(const Registration& registration, const std::string& owner, std::int32_t processIdentifier) {
  MenuBarChange change;
  const TrayItem* item = registry_.add(registration, owner, processIdentifier);
  if (item == nullptr) return change;
  change.arrived.push_back(*item);
  if (isAllowed(*item)) {
    announced_.insert(item->address());
    change.shown.push_back(item->address());
  }
  return change;
}

MenuBarChange MenuBar::nameLost(const std::string& name) {
  MenuBarChange change;
  change.left = registry_.nameLost(name);
  for (const TrayItem& item : change.left)
    if (announced_.erase(item.address()) > 0) change.hidden.push_back(item.address());
  concealment_.requesterLost(name);
  announce(change);
  return change;
}

MenuBar::Activation MenuBar::activate(const std::string& requester, std::set<std::string> allowedBundles) {
  Activation activation{concealment_.activate(requester, std::move(allowedBundles)), {}};
  announce(activation.change);
  return activation;
}

std::optional<MenuBarChange> MenuBar::invalidate(std::uint32_t assertion, const std::string& requester) {
  if (!concealment_.invalidate(assertion, requester)) return std::nullopt;
  MenuBarChange change;
  announce(change);
  return change;
}

MenuBarChange MenuBar::reset() {
  concealment_.clear();
  announced_.clear();
  MenuBarChange change;
  change.left = registry_.clear();
  return change;
}

std::vector<TrayItem> MenuBar::shownItems() const {
  std::vector<TrayItem> shown;
  std::copy_if(items().begin(), items().end(), std::back_inserter(shown),
               [this](const TrayItem& item) { return announced_.contains(item.address()); });
  return shown;
}

bool MenuBar::isAllowed(const TrayItem& item) const {
  return !concealment_.isActive() || item.processIdentifier == 0 ||
         concealment_.shows(identify_(item.processIdentifier));
}

void MenuBar::announce(MenuBarChange& change) {
  for (const TrayItem& item : items()) {
    const bool allowed = isAllowed(item);
    if (allowed && announced_.insert(item.address()).second) change.shown.push_back(item.address());
    if (!allowed && announced_.erase(item.address()) > 0) change.hidden.push_back(item.address());
  }
}

}  // namespace orvo
