// The desktop-wide settings that an XSETTINGS manager (xfsettingsd and its kin) publishes on the X
// server. Owned by DesktopAppearance, made after the application object; main thread only.
#pragma once

#include "platform/linux/display/XEvents.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace orvo {

// Integers and texts by setting name; settings of other kinds are left out.
using XSettingsValues = std::map<std::string, std::variant<std::int32_t, std::string>>;

// Bytes that break off or contradict themselves yield what was read before the fault.
XSettingsValues parseXSettings(std::string_view bytes);

class XSettings {
 public:
  // `changed` is called from the event loop after the values are replaced. Without an X server the
  // values stay empty.
  explicit XSettings(std::function<void()> changed);

  const XSettingsValues& values() const { return values_; }

 private:
  void findManager();
  void read();
  void handle(const xcb_generic_event_t& event);

  std::function<void()> changed_;
  XEvents events_;
  xcb_atom_t selection_ = XCB_ATOM_NONE;
  xcb_atom_t property_ = XCB_ATOM_NONE;
  xcb_atom_t managerMessage_ = XCB_ATOM_NONE;
  xcb_window_t manager_ = XCB_WINDOW_NONE;
  XSettingsValues values_;
};

}  // namespace orvo
