// A private desktop for a test: an X server, and on demand a window manager. Both end with it.
#pragma once

#include "core/Rect.h"
#include "platform/linux/busSupport/TestSession.h"
#include "platform/linux/x11/XConnection.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvo {

class ManualMainQueue;

class TestDesktop {
 public:
  const std::string& display() const { return display_; }
  xcb_connection_t* connection() const { return x_->get(); }
  xcb_window_t root() const { return x_->root(); }

  void startWindowManager();
  void signalWindowManager(int signal) { kill(windowManager_->pid(), signal); }

 private:
  test::Program server_{"Xvfb", {"-displayfd", "1", "-screen", "0", "800x600x24", "-nolisten", "tcp"}};
  std::optional<test::Program> windowManager_;
  // The server picks a free one and tells its number.
  std::string display_ = ':' + server_.readLine().toStdString();
  std::unique_ptr<XConnection> x_ = XConnection::open(display_, "test");
};

// A dock window of a program of its own that notes the button events it gets.
class Dock {
 public:
  struct Button {
    unsigned number;
    bool down;
    Point location;

    bool operator==(const Button&) const = default;
  };

  // `parent` embeds it as a panel embeds a plug-in; else it is a dock on the root.
  Dock(const TestDesktop& desktop, Rect frame, xcb_window_t parent = XCB_WINDOW_NONE);
  xcb_window_t window() const { return window_; }
  // The oldest button events first, those that came until now.
  const std::vector<Button>& buttons();
  void forget() { buttons_.clear(); }
  // Our covers, by their kind.
  int covers() const { return coversBelow(window_); }

 private:
  int coversBelow(xcb_window_t window) const;

  std::unique_ptr<XConnection> x_;
  xcb_connection_t* connection_;
  xcb_window_t window_;
  std::vector<Button> buttons_;
};

// Runs the queue in real time until the condition holds; false after five seconds.
bool eventually(ManualMainQueue& queue, const std::function<bool()>& condition);
bool eventually(const std::function<bool()>& condition);
// Runs the queue in real time for about so long, as a person's holding of a button needs.
void holdFor(ManualMainQueue& queue, std::chrono::milliseconds time);

}  // namespace orvo
