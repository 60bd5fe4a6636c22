// Menus as plain values, handed to the adapter that shows them.
#pragma once

#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace orvo {

// Goes to the first responder of the key window, by selector name such as "copy:".
struct FirstResponderAction {
  std::string selector;
};

using MenuAction = std::variant<std::monostate, std::function<void()>, FirstResponderAction>;

struct MenuItem;

struct Menu {
  std::string title{};
  // True lets the platform decide which items are enabled.
  bool autoenablesItems = true;
  std::vector<MenuItem> items;
};

struct MenuItem {
  std::string title{};
  MenuAction action{};
  std::string keyEquivalent{};  // pressed with Command; empty for none
  bool enabled = true;
  bool separator = false;
  std::vector<Menu> submenu{};  // at most one
};

// Whether a person may choose the item, for menus that are drawn where no first responder is.
inline bool isChoosable(const Menu& menu, const MenuItem& item) {
  const auto* action = std::get_if<std::function<void()>>(&item.action);
  return action != nullptr && *action && (menu.autoenablesItems || item.enabled);
}

}  // namespace orvo
