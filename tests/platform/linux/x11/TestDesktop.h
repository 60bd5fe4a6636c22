// A private desktop for a test: an X server, and on demand a window manager and the panel with a bus
// of their own. Everything it started ends with it.
#pragma once

#include "core/Rect.h"

#include <xcb/xcb.h>

#include <sys/types.h>

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace orvo {

class ManualMainQueue;

class TestDesktop {
 public:
  TestDesktop();
  ~TestDesktop();
  TestDesktop(const TestDesktop&) = delete;
  TestDesktop& operator=(const TestDesktop&) = delete;

  const std::string& display() const { return display_; }
  xcb_connection_t* connection() const { return connection_; }
  xcb_window_t root() const { return root_; }

  void startWindowManager();
  void signalWindowManager(int signal) const;
  // With the clock alone, at the right end of the lower edge; returns when it is on the screen.
  void startPanel();
  void stopPanel();
  void stopServer();
  Rect clockFrame();
  // The panel's windows on the screen, without its docks.
  int openPanelWindows();

 private:
  pid_t start(const std::vector<std::string>& command, const std::vector<std::string>& environment);
  std::vector<std::string> environment() const;
  void startServer();
  void startBus();
  void end(pid_t& process);

  std::string folder_;
  std::string display_;
  std::string bus_;
  pid_t server_ = 0;
  pid_t busProcess_ = 0;
  pid_t windowManager_ = 0;
  pid_t panel_ = 0;
  xcb_connection_t* connection_ = nullptr;
  xcb_window_t root_ = XCB_WINDOW_NONE;
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
  ~Dock();
  Dock(const Dock&) = delete;
  Dock& operator=(const Dock&) = delete;

  xcb_window_t window() const { return window_; }
  // The oldest button events first, those that came until now.
  const std::vector<Button>& buttons();
  void forget() { buttons_.clear(); }
  // Our covers, by their kind.
  int covers();

 private:
  int coversBelow(xcb_window_t window);

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
