#include "agent/rules/LegacyIcons.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvo {

std::optional<LegacyIcons::Order> LegacyIcons::dock(LegacyIcon icon, const Shows& shows) {
  const auto ofProcess =
      std::count_if(icons_.begin(), icons_.end(), [&](const LegacyIcon& each) { return each.process == icon.process; });
  const bool isFull = icons_.size() >= most || static_cast<std::size_t>(ofProcess) >= mostOfProcess;
  if (isFull || find(icon.window) != nullptr) return std::nullopt;
  icon.isWanted = shows(icon.bundle);
  icons_.push_back(std::move(icon));
  return enforce(icons_.back());
}

std::vector<LegacyIcons::Order> LegacyIcons::identify(std::int32_t process, const std::string& bundle,
                                                      const Shows& shows) {
  for (LegacyIcon& icon : icons_)
    if (icon.process == process && icon.bundle.empty()) icon.bundle = bundle;
  return apply(shows);
}

bool LegacyIcons::moved(std::uint32_t window, std::uint32_t socket) {
  LegacyIcon* const icon = known(window);
  if (icon != nullptr) icon->socket = socket;
  return icon != nullptr;
}

std::vector<LegacyIcon> LegacyIcons::undock(std::uint32_t LegacyIcon::*place, std::uint32_t window) {
  const auto gone = std::stable_partition(icons_.begin(), icons_.end(),
                                          [=](const LegacyIcon& icon) { return icon.*place != window; });
  std::vector<LegacyIcon> left(std::make_move_iterator(gone), std::make_move_iterator(icons_.end()));
  icons_.erase(gone, icons_.end());
  return left;
}

std::optional<LegacyIcons::Order> LegacyIcons::mapped(std::uint32_t window) {
  LegacyIcon* const icon = known(window);
  if (icon == nullptr) return std::nullopt;
  icon->isMapped = true;
  if (!icon->isWanted && ++icon->returns <= mostReturns) {
    icon->isHeld = false;
    return enforce(*icon);
  }
  if (!std::exchange(icon->isHeld, false)) return std::nullopt;
  return Order{Order::Kind::settle, *icon};
}

void LegacyIcons::unmapped(std::uint32_t window) {
  if (LegacyIcon* const icon = known(window)) icon->isMapped = false;
}

std::optional<LegacyIcons::Order> LegacyIcons::withdrawn(std::uint32_t window) {
  LegacyIcon* const icon = known(window);
  if (icon == nullptr || !std::exchange(icon->isHeld, false)) return std::nullopt;
  return Order{Order::Kind::settle, *icon};
}

std::vector<LegacyIcons::Order> LegacyIcons::apply(const Shows& shows) {
  std::vector<Order> orders;
  for (LegacyIcon& icon : icons_) {
    const bool wanted = shows(icon.bundle);
    if (std::exchange(icon.isWanted, wanted) == wanted) continue;
    icon.returns = 0;
    if (auto order = enforce(icon)) orders.push_back(std::move(*order));
  }
  return orders;
}

// What its program has unmapped itself is let be: at our end the X server would map it.
std::optional<LegacyIcons::Order> LegacyIcons::enforce(LegacyIcon& icon) {
  if (icon.isWanted) return icon.isHeld ? std::optional(Order{Order::Kind::show, icon}) : std::nullopt;
  if (icon.isHeld || !icon.isMapped) return std::nullopt;
  icon.isHeld = true;
  return Order{Order::Kind::hide, icon};
}

const LegacyIcon* LegacyIcons::find(std::uint32_t window) const {
  const auto found =
      std::find_if(icons_.begin(), icons_.end(), [=](const LegacyIcon& icon) { return icon.window == window; });
  return found == icons_.end() ? nullptr : &*found;
}

LegacyIcon* LegacyIcons::known(std::uint32_t window) {
  return const_cast<LegacyIcon*>(std::as_const(*this).find(window));
}

}  // namespace orvo
