#include "agent/rules/MenuBar.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvo {

std::optional<MenuBarChange> MenuBar::add(TrayItem item) {
  if (!registry_.add(std::move(item))) return std::nullopt;
  MenuBarChange change;
  announce(change);
  return change;
}

MenuBarChange MenuBar::identify(std::int32_t process, const std::string& bundle) {
  registry_.identify(process, bundle);
  MenuBarChange change;
  announce(change);
  return change;
}

MenuBarChange MenuBar::nameLost(const std::string& name) {
  MenuBarChange change;
  for (const TrayItem& item : registry_.nameLost(name)) {
    announced_.erase(item.address());
    change.left.push_back(item.address());
  }
  concealment_.requesterLost(name);
  announce(change);
  return change;
}

MenuBar::Activation MenuBar::activate(const std::string& requester, std::int32_t process,
                                      std::set<std::string> allowedBundles) {
  Activation activation{concealment_.activate(requester, process, std::move(allowedBundles)), {}};
  announce(activation.change);
  return activation;
}

std::optional<MenuBarChange> MenuBar::invalidate(std::uint32_t assertion, const std::string& requester) {
  if (!concealment_.invalidate(assertion, requester)) return std::nullopt;
  MenuBarChange change;
  announce(change);
  return change;
}

MenuBarChange MenuBar::endRequests(const std::string& requester) {
  concealment_.requesterLost(requester);
  MenuBarChange change;
  announce(change);
  return change;
}

std::vector<TrayItem> MenuBar::shownItems() const {
  std::vector<TrayItem> shown;
  std::copy_if(items().begin(), items().end(), std::back_inserter(shown),
               [this](const TrayItem& item) { return announced_.contains(item.address()); });
  return shown;
}

const TrayItem* MenuBar::find(const std::string& address) const {
  const auto found =
      std::find_if(items().begin(), items().end(), [&](const TrayItem& item) { return item.address() == address; });
  return found == items().end() ? nullptr : &*found;
}

void MenuBar::announce(MenuBarChange& change) {
  for (const TrayItem& item : items()) {
    const bool allowed = concealment_.shows(item.bundle);
    if (allowed && announced_.insert(item.address()).second) change.shown.push_back(item.address());
    if (!allowed && announced_.erase(item.address()) > 0) change.hidden.push_back(item.address());
  }
}

}  // namespace orvo
