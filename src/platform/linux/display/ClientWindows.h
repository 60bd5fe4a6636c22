// Tells which processes own the application windows of the X screen, as windows come. Panels, notification
// bubbles and other furniture of the desktop are not told. Owned by DesktopWorkspace; main thread.
#pragma once

#include "platform/linux/display/XEvents.h"

#include <QTimer>

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <vector>

namespace orvo {

class ClientWindows {
 public:
  // Says whether the process could be taken for the owner of a window.
  using Owner = std::function<bool(std::int32_t processIdentifier)>;

  explicit ClientWindows(Owner owner);
  ClientWindows(const ClientWindows&) = delete;
  ClientWindows& operator=(const ClientWindows&) = delete;

  // Reports the owners of all windows before it returns, and those of new ones a moment after they came; after the
  // application object is made. Does nothing where there is no X server.
  void begin();

 private:
  bool isChange(const xcb_generic_event_t& event) const;
  void readWindows();
  void reportOwners(const std::vector<xcb_window_t>& windows);
  bool isOfApplication(xcb_get_property_cookie_t cookie) const;

  Owner owner_;
  std::unique_ptr<XEvents> events_;
  QTimer changes_;
  xcb_atom_t clientList_ = XCB_NONE;
  xcb_atom_t windowProcess_ = XCB_NONE;
  xcb_atom_t windowType_ = XCB_NONE;
  std::set<xcb_atom_t> applicationTypes_;
  bool askServer_ = false;
  std::set<xcb_window_t> known_;
};

}  // namespace orvo
