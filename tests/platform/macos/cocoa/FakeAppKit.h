// Recording stand-ins for the few classes of AppKit and ServiceManagement that the adapters use, over
// GNUstep's Foundation. Plain C++ for the tests; main thread only.
#pragma once

#include "platform/EventTap.h"
#include "platform/Workspace.h"

#include <string>
#include <vector>

namespace orvo::fake {

struct AppKit {
  // The messages that the adapters sent, in order, but for questions and the making of menus. "gone" is
  // the end of a status item.
  std::vector<std::string> calls;
  bool grantsItems = true;
  bool grantsButtons = true;
  // The item of the next popped-up menu that the person chooses, if any; what the last one showed.
  std::string choice;
  std::vector<std::string> poppedUp;
  std::vector<RunningApplication> running;
  long loginStatus = 0;
  // Of a change that fails.
  std::string loginError;
};

AppKit& appKit();
// Before each test.
void prepare();

// A person's mouse event on the status item, and Command with a key while a window's field has the focus.
void click(EventType type);
void press(const std::string& key);
// One line for an item: title, key, "off" for a disabled one; "[" and its title for a submenu.
std::vector<std::string> mainMenu();

// What the system tells. Names of notifications: Screens, Launch, Termination, Sleep, Wake.
void launch();
bool reopen();
bool terminatesAfterLastWindow();
void post(const char* name);
// Replaces the running applications, telling either what went or the whole list as it was.
void setRunning(const std::vector<RunningApplication>& running, bool tellsRemovalOnly);

}  // namespace orvo::fake
