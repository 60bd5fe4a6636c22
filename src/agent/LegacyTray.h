// The icons of the older kind in the panel's tray: windows of other programs, each in a socket of the panel's
// (XEmbed). Hides one by unmapping it, which the socket takes for a wish to take up no room, with the window in
// the save-set of this connection: however this process ends, the X server maps it again. Owned by main; main
// thread. Waits for the X server alone, never for a program.
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "agent/rules/LegacyIcons.h"
#include "platform/linux/ReadWatch.h"
#include "platform/linux/Timer.h"
#include "platform/linux/x11/XConnection.h"

namespace orvo {

class LegacyTray {
 public:
  // Null where there is no X server. Finds nothing before follow().
  static std::unique_ptr<LegacyTray> open(sd_event* loop);

  // How long icons that have come back are asked to draw themselves.
  static constexpr std::chrono::milliseconds drawingTime{4000};

  // Called as it happens, from follow() on, without the icon's application; may be empty.
  std::function<void(const LegacyIcon&)> onDocked;

  // From now on the tray's icons are known. What an agent before this one changed of them is put right, and all
  // are drawn again.
  void follow();

  // The application of a process whose icons had none known.
  void identify(std::int32_t process, const std::string& bundle);

  // Hides what this does not show, and shows the rest.
  void apply(LegacyIcons::Shows shows);

  const std::vector<LegacyIcon>& icons() const { return icons_.icons(); }

 private:
  using Clock = std::chrono::steady_clock;
  struct Repaint {
    Clock::time_point due;
    std::chrono::milliseconds pause;  // before it
  };

  LegacyTray(std::unique_ptr<XConnection> connection, sd_event* loop);

  void dispatch();
  void findTray();
  xcb_window_t trayWindow(xcb_window_t owner) const;
  void watchSocket(xcb_window_t socket);
  void dock(xcb_window_t window, xcb_window_t socket);
  void undock(std::uint32_t LegacyIcon::*place, xcb_window_t window);
  void socketLost(xcb_window_t socket);
  void forgetAll();
  void handle(const xcb_generic_event_t& event);
  void mapped(xcb_window_t window);
  void managerCame(const xcb_client_message_event_t& message);
  void propertyChanged(const xcb_property_notify_event_t& event);

  void carryOut(const LegacyIcons::Order& order);
  void hide(const LegacyIcon& icon);
  void withdrawn(xcb_window_t window);
  void restore(xcb_window_t window, bool overridesRedirect);
  void repaintSoon(xcb_window_t window);
  void repaint();

  bool wantsToBeMapped(xcb_window_t window) const;
  bool takeMark(xcb_window_t window);
  void set(xcb_window_t window, std::uint32_t attribute, std::uint32_t value);

  std::unique_ptr<XConnection> connection_;
  xcb_atom_t selection_;
  xcb_atom_t manager_;
  xcb_atom_t embedding_;
  xcb_atom_t mark_;
  xcb_window_t owner_ = XCB_WINDOW_NONE;  // of the selection
  xcb_window_t tray_ = XCB_WINDOW_NONE;
  std::set<xcb_window_t> sockets_;
  LegacyIcons icons_;
  LegacyIcons::Shows shows_ = [](const std::string&) { return true; };
  std::chrono::milliseconds searchPause_{0};  // the next one
  std::map<xcb_window_t, Repaint> blank_;     // perhaps
  Timer search_;
  Timer repaint_;
  Timer more_;
  ReadWatch events_;
};

}  // namespace orvo
