// Tells which processes own the application windows of the X screen, as windows come. Panels, notification
// bubbles and other furniture of the desktop are not told. Owned by DesktopWorkspace; main thread. Uses an X connection
// of its own, so that it works beside whatever windows Orvo itself has.
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include <xcb/xcb.h>

namespace orvo {

class ClientWindows : public QObject {
  Q_OBJECT

 public:
  // Says whether the process could be taken for the owner of a window.
  using Owner = std::function<bool(std::int32_t processIdentifier)>;

  explicit ClientWindows(Owner owner) : owner_(std::move(owner)) {}
  ClientWindows(const ClientWindows&) = delete;
  ClientWindows& operator=(const ClientWindows&) = delete;
  ~ClientWindows() override = default;

  // Reports the owners of all windows before it returns, and those of new ones from then on. Does
  // nothing where there is no X server.
  void begin();

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };

  xcb_atom_t atom(const char* name);
  bool serverTellsProcesses();
  void handleEvents();
  bool takeChange();
  void readWindows();
  std::vector<xcb_window_t> windowList();
  void reportOwners(const std::vector<xcb_window_t>& windows);
  bool isOfApplication(xcb_get_property_cookie_t cookie);
  std::optional<std::int32_t> claimedProcess(xcb_get_property_cookie_t cookie);
  std::optional<std::int32_t> connectedProcess(unsigned int cookie);
  void checkConnection();

  Owner owner_;
  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  std::unique_ptr<QSocketNotifier> notifier_;
  xcb_window_t root_ = XCB_NONE;
  xcb_atom_t clientList_ = XCB_NONE;
  xcb_atom_t windowProcess_ = XCB_NONE;
  xcb_atom_t windowType_ = XCB_NONE;
  std::set<xcb_atom_t> applicationTypes_;
  bool askServer_ = false;
  std::set<xcb_window_t> known_;
};

}  // namespace orvo
