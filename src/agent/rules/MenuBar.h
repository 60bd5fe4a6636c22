// Decides which tray items the panel shows: all that are registered, less those concealed. Every
// operation returns the difference to what the panel was told before, and nothing else, so that an icon
// never flickers. Owned by the agent's main; main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "agent/rules/Concealment.h"
#include "agent/rules/ItemRegistry.h"

namespace orvo {

// Addresses, in the order of registration.
struct MenuBarChange {
  std::vector<std::string> hidden;
  std::vector<std::string> shown;
  std::vector<std::string> left{};  // with their programs, hidden or not; not among the others
};

class MenuBar {
 public:
  // Of the application that offers hiding; never concealed.
  void protect(std::string bundle) { concealment_.protect(std::move(bundle)); }

  // Absent when the item was there already, or there is no room for it.
  std::optional<MenuBarChange> add(TrayItem item);
  // The application of a process whose items had none known.
  MenuBarChange identify(std::int32_t process, const std::string& bundle);
  // Whether an item hangs on the name.
  bool isNamed(const std::string& name) const { return registry_.isNamed(name); }

  // A bus name has no owner any more: its items leave, and its requests end.
  MenuBarChange nameLost(const std::string& name);

  struct Activation {
    std::uint32_t assertion;  // 0 for none: the process has too many
    MenuBarChange change;
  };
  Activation activate(const std::string& requester, std::int32_t process, std::set<std::string> allowedBundles);

  // Absent when the requester has no such request.
  std::optional<MenuBarChange> invalidate(std::uint32_t assertion, const std::string& requester);

  // Ends whatever it has requested.
  MenuBarChange endRequests(const std::string& requester);

  std::set<std::string> requesters() const { return concealment_.requesters(); }
  bool isProtected(const std::string& bundle) const { return concealment_.isProtected(bundle); }
  bool shows(const std::string& bundle) const { return concealment_.shows(bundle); }

  const std::vector<TrayItem>& items() const { return registry_.items(); }
  bool isConcealing() const { return !concealment_.isEmpty(); }
  const TrayItem* find(const std::string& address) const;  // null for unknown

 private:
  MenuBarChange announce(std::vector<std::string> left = {});

  ItemRegistry registry_;
  Concealment concealment_;
  std::set<std::string> announced_;  // addresses that the panel knows
};

}  // namespace orvo
