// Decides which icons of the older kind are unmapped: windows that programs have put into the panel's tray, and
// that are hidden by unmapping them. Owned by LegacyTray; main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvo {

struct LegacyIcon {
  std::uint32_t window = 0;
  std::uint32_t socket = 0;        // the tray's window around it
  std::int32_t process = 0;        // 0 where the X server does not know
  std::string bundle{};            // of the process; empty for unknown, which is never hidden
  bool overridesRedirect = false;  // its parent is not asked before it is mapped
  bool isMapped = false;
  bool isWanted = true;
  bool isHeld = false;  // unmapped by us, and not seen mapped since
  int returns = 0;      // how often it was mapped against our will, since that last changed
};

class LegacyIcons {
 public:
  // Far more than programs have in good faith.
  static constexpr std::size_t mostOfProcess = 32;
  static constexpr std::size_t most = 500;
  // One that is mapped more often than this stays: two programs would keep each other busy for good.
  static constexpr int mostReturns = 20;

  struct Order {
    enum class Kind {
      hide,    // to be unmapped
      show,    // to be mapped
      settle,  // is mapped again: nothing of ours may stay with it
    } kind;
    LegacyIcon icon;
  };

  using Shows = std::function<bool(const std::string& bundle)>;

  // What is to be done about the new icon; absent for nothing, or no room for it.
  std::optional<Order> dock(LegacyIcon icon, const Shows& shows);
  // The application of a process whose icons had none known.
  std::vector<Order> identify(std::int32_t process, const std::string& bundle, const Shows& shows);
  // Into another socket; false for unknown.
  bool moved(std::uint32_t window, std::uint32_t socket);
  // What left, with the state it had: by its own window, or by its socket.
  std::vector<LegacyIcon> undock(std::uint32_t LegacyIcon::*place, std::uint32_t window);

  std::optional<Order> mapped(std::uint32_t window);
  void unmapped(std::uint32_t window);
  // Its program wants it hidden itself: nobody may map it now.
  std::optional<Order> withdrawn(std::uint32_t window);

  std::vector<Order> apply(const Shows& shows);

  const LegacyIcon* find(std::uint32_t window) const;  // null for unknown
  const std::vector<LegacyIcon>& icons() const { return icons_; }

 private:
  LegacyIcon* known(std::uint32_t window);
  static std::optional<Order> enforce(LegacyIcon& icon);

  std::vector<LegacyIcon> icons_;  // in the order of docking
};

}  // namespace orvo
