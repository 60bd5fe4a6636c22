// What the hot key needs of the keyboard's current map: where a key is and which modifier bit a
// modifier key sets. Read afresh after each change; a plain value.
#pragma once

#include "platform/linux/x11/XConnection.h"

#include <initializer_list>
#include <vector>

namespace orvo {

class KeyboardMap {
 public:
  // Empty when the server does not answer.
  explicit KeyboardMap(const XConnection& connection);

  // The keys whose unshifted symbol in the first layout this is, or else, for maps without that
  // symbol there, in any layout.
  std::vector<xcb_keycode_t> keysFor(xcb_keysym_t symbol) const;
  // One modifier bit that keys with one of the symbols set, none of Shift, Lock and Control where there is another;
  // zero for none.
  std::uint16_t modifierFor(std::initializer_list<xcb_keysym_t> symbols) const;

 private:
  bool has(xcb_keycode_t key, xcb_keysym_t symbol, std::size_t columns) const;

  std::size_t columns_ = 0;
  xcb_keycode_t firstKey_ = 0;
  std::vector<xcb_keysym_t> symbols_;  // columns_ for each key
  std::size_t keysPerModifier_ = 0;
  std::vector<xcb_keycode_t> modifierKeys_;  // keysPerModifier_ for each of the eight modifiers
};

}  // namespace orvo
