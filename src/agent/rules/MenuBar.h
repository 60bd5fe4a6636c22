// Decides which tray items the panel shows: all that are registered, less those concealed. Every
// operation returns the difference to what the panel was told before, and nothing else, so that an icon
// never flickers. Owned by the agent's main; main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "agent/rules/Concealment.h"
#include "agent/rules/ItemRegistry.h"

namespace orvo {

// Both in the order of registration.
struct MenuBarChange {
  std::vector<TrayItem> arrived;  // registered, whether they show or not
  std::vector<TrayItem> left;
  std::vector<std::string> hidden;  // addresses to announce to the panel
  std::vector<std::string> shown;
};

class MenuBar {
 public:
  // Says which application a process belongs to, absent where that cannot be told. Asked only while a
  // request is in force.
  using Identify = std::function<std::optional<std::string>(std::int32_t processIdentifier)>;

  explicit MenuBar(Identify identify) : identify_(std::move(identify)) {}

  MenuBarChange add(const Registration& registration, const std::string& owner, std::int32_t processIdentifier);

  // A bus name has no owner any more: its items leave, and its requests end.
  MenuBarChange nameLost(const std::string& name);

  struct Activation {
    std::uint32_t assertion;
    MenuBarChange change;
  };
  Activation activate(const std::string& requester, std::set<std::string> allowedBundles);

  // Absent when the requester has no such request.
  std::optional<MenuBarChange> invalidate(std::uint32_t assertion, const std::string& requester);

  // The panel no longer listens to us: every item and request is forgotten. Nothing is announced to it.
  MenuBarChange reset();

  const std::vector<TrayItem>& items() const { return registry_.items(); }
  std::vector<TrayItem> shownItems() const;

 private:
  bool isAllowed(const TrayItem& item) const;
  void announce(MenuBarChange& change);

  Identify identify_;
  ItemRegistry registry_;
  Concealment concealment_;
  std::set<std::string> announced_;  // addresses that the panel knows
};

}  // namespace orvo
