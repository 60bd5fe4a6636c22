// Recording stand-ins for the few classes of AppKit and ServiceManagement that the adapters use, over
// GNUstep's Foundation. Plain C++ for the tests; main thread only.
#pragma once

#include "platform/EventTap.h"
#include "platform/Workspace.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvo::fake {

struct AppKit {
  // What the adapters asked for, in order.
  std::vector<std::string> calls;

  bool grantsItems = true;
  bool grantsButtons = true;
  // The item of a popped-up menu that the person chooses; empty to close the menu.
  std::string choice;
  // The popped-up menu, one line for an item: title, key, "off" for a disabled one.
  std::vector<std::string> poppedUp;

  std::vector<RunningApplication> running;
  long loginStatus = 0;
  // Of a change that fails.
  std::string loginError;
};

AppKit& appKit();

// A person's release of a mouse button over the status item.
void click(EventType type);
// Command and a key, with the settings window's field in focus.
void press(const std::string& key);
std::vector<std::string> mainMenu();

// What the system tells.
void launch();
bool reopen();
bool terminatesAfterLastWindow();
void postWorkspace(const char* name);
void postScreenChange();
// Replaces the running applications, telling either what went or the whole list as it was.
void setRunning(std::vector<RunningApplication> running, bool tellsRemovalOnly);

void forgetDefaults();
// Sets a default to a text, which is of another kind than Orvo's.
void setDefaultText(const char* key, const char* text);

}  // namespace orvo::fake
