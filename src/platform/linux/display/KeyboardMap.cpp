#include "platform/linux/display/KeyboardMap.h"

#include <algorithm>

namespace orvo {

KeyboardMap::KeyboardMap(const XConnection& connection) {
  auto* x = connection.get();
  const auto* setup = xcb_get_setup(x);
  const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
  const auto keysCookie = xcb_get_keyboard_mapping(x, setup->min_keycode, count);
  const auto modifiersCookie = xcb_get_modifier_mapping(x);
  const auto keys = owned(xcb_get_keyboard_mapping_reply(x, keysCookie, nullptr));
  const auto modifiers = owned(xcb_get_modifier_mapping_reply(x, modifiersCookie, nullptr));
  if (!keys || !modifiers) return;

  firstKey_ = setup->min_keycode;
  columns_ = keys->keysyms_per_keycode;
  const auto* symbols = xcb_get_keyboard_mapping_keysyms(keys.get());
  symbols_.assign(symbols, symbols + xcb_get_keyboard_mapping_keysyms_length(keys.get()));
  keysPerModifier_ = modifiers->keycodes_per_modifier;
  const auto* modifierKeys = xcb_get_modifier_mapping_keycodes(modifiers.get());
  modifierKeys_.assign(modifierKeys, modifierKeys + xcb_get_modifier_mapping_keycodes_length(modifiers.get()));
}

std::vector<xcb_keycode_t> KeyboardMap::keysFor(xcb_keysym_t symbol) const {
  for (const std::size_t columns : {std::min<std::size_t>(columns_, 1), columns_}) {
    std::vector<xcb_keycode_t> keys;
    for (std::size_t index = 0; columns_ > 0 && index < symbols_.size() / columns_; ++index) {
      const auto key = static_cast<xcb_keycode_t>(firstKey_ + index);
      if (has(key, symbol, columns)) keys.push_back(key);
    }
    if (!keys.empty()) return keys;
  }
  return {};
}

std::uint16_t KeyboardMap::modifierFor(std::initializer_list<xcb_keysym_t> symbols) const {
  unsigned mask = 0;
  for (std::size_t index = 0; index < modifierKeys_.size(); ++index) {
    const auto key = modifierKeys_[index];
    const auto named = [&](xcb_keysym_t symbol) { return has(key, symbol, columns_); };
    if (key >= firstKey_ && std::ranges::any_of(symbols, named)) mask |= 1U << (index / keysPerModifier_);
  }
  // A key of another name may be Lock besides.
  constexpr unsigned shiftLockControl = 7;
  if ((mask & ~shiftLockControl) != 0) mask &= ~shiftLockControl;
  return static_cast<std::uint16_t>(mask & -mask);
}

bool KeyboardMap::has(xcb_keycode_t key, xcb_keysym_t symbol, std::size_t columns) const {
  const auto first = (static_cast<std::size_t>(key) - firstKey_) * columns_;
  if (first + columns > symbols_.size()) return false;
  const auto begin = symbols_.begin() + static_cast<std::ptrdiff_t>(first);
  return std::find(begin, begin + static_cast<std::ptrdiff_t>(columns), symbol) !=
         begin + static_cast<std::ptrdiff_t>(columns);
}

}  // namespace orvo
