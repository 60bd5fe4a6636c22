// Every tray item that has registered, in the order of registration, whether it shows or not. Owned by
// MenuBar; main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

// Where the StatusNotifierItem protocol puts an item that names no path.
inline constexpr std::string_view defaultItemPath = "/StatusNotifierItem";

struct TrayItem {
  std::string owner;  // unique bus name
  std::string path;
  std::int32_t processIdentifier = 0;  // 0 where the bus does not know
  std::set<std::string> names;         // the names it registered under and has not lost
  std::string bundle{};                // the owner's application as it was first known; empty for unknown

  // As panels are told it. The unique name stays right whichever of its names an item gives up.
  std::string address() const { return owner + path; }
};

// What a registration asks for, before the bus has said who owns the name.
struct Registration {
  std::string name;  // unique or well-known
  std::string path;
};

// Programs give a path alone, a name alone, or both in one text. Absent for what is none of them: panels
// come to grief over names and paths that D-Bus does not know.
std::optional<Registration> parseRegistration(std::string_view text, std::string_view sender);

class ItemRegistry {
 public:
  // Far more than programs have in good faith; every change costs as much as there are items.
  static constexpr std::size_t mostOfProcess = 32;
  static constexpr std::size_t most = 1000;
  static constexpr std::size_t mostNames = 8;  // of one item

  // False when the item was registered already, under whichever name, or there is no room for it.
  bool add(TrayItem item);

  // For items whose application was unknown.
  void identify(std::int32_t processIdentifier, const std::string& bundle);

  // Whether an item has registered under the name, or belongs to it.
  bool isNamed(const std::string& name) const;

  // Forgets the name; returns the items that went with it. The owner's unique name takes all of its items.
  std::vector<TrayItem> nameLost(const std::string& name);

  const std::vector<TrayItem>& items() const { return items_; }

 private:
  bool isFull(std::int32_t processIdentifier) const;

  std::vector<TrayItem> items_;
};

}  // namespace orvo
