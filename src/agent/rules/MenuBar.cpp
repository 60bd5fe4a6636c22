#include "agent/rules/MenuBar.h"

#include <algorithm>
#include <utility>

namespace orvo {

std::optional<MenuBarChange> MenuBar::add(TrayItem item) {
  if (!registry_.add(std::move(item))) return std::nullopt;
  return announce();
}

MenuBarChange MenuBar::identify(std::int32_t process, const std::string& bundle) {
  registry_.identify(process, bundle);
  return announce();
}

MenuBarChange MenuBar::nameLost(const std::string& name) {
  std::vector<std::string> left;
  for (const TrayItem& item : registry_.nameLost(name)) {
    announced_.erase(item.address());
    left.push_back(item.address());
  }
  concealment_.requesterLost(name);
  return announce(std::move(left));
}

MenuBar::Activation MenuBar::activate(const std::string& requester, std::int32_t process,
                                      std::set<std::string> allowedBundles) {
  const std::uint32_t assertion = concealment_.activate(requester, process, std::move(allowedBundles));
  return {assertion, announce()};
}

std::optional<MenuBarChange> MenuBar::invalidate(std::uint32_t assertion, const std::string& requester) {
  if (!concealment_.invalidate(assertion, requester)) return std::nullopt;
  return announce();
}

MenuBarChange MenuBar::endRequests(const std::string& requester) {
  concealment_.requesterLost(requester);
  return announce();
}

const TrayItem* MenuBar::find(const std::string& address) const {
  const auto found =
      std::find_if(items().begin(), items().end(), [&](const TrayItem& item) { return item.address() == address; });
  return found == items().end() ? nullptr : &*found;
}

MenuBarChange MenuBar::announce(std::vector<std::string> left) {
  MenuBarChange change{{}, {}, std::move(left)};
  for (const TrayItem& item : items()) {
    const bool allowed = concealment_.shows(item.bundle);
    if (allowed && announced_.insert(item.address()).second) change.shown.push_back(item.address());
    if (!allowed && announced_.erase(item.address()) > 0) change.hidden.push_back(item.address());
  }
  return change;
}

}  // namespace orvo
