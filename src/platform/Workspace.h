// Running applications and the places that the desktop can open.
#pragma once

#include "platform/NotificationCenter.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

struct RunningApplication {
  std::optional<std::string> bundleIdentifier;
  std::int32_t processIdentifier = 0;
  std::optional<std::string> localizedName;
  std::optional<std::string> bundlePath;

  bool operator==(const RunningApplication&) const = default;
};

// The process that hosts the menu bar items. Its end is told as menuBarHostTerminated.
inline constexpr std::string_view menuBarHostBundle = "com.apple.MenuBarAgent";

class Workspace {
 public:
  virtual ~Workspace() = default;

  // Callable from any thread; a snapshot in the system's own order, this process included.
  virtual std::vector<RunningApplication> runningApplications() const = 0;
  virtual std::optional<RunningApplication> runningApplication(std::int32_t processIdentifier) const = 0;

  // The rest is for the main thread.

  // Applications with exactly this identifier, possibly none. Asks the system afresh, so that it
  // is right before the event loop has run.
  virtual std::vector<RunningApplication> runningApplications(const std::string& bundleIdentifier) const = 0;

  // Where the desktop's registry of applications has this identifier.
  virtual std::optional<std::string> applicationPath(const std::string& bundleIdentifier) const = 0;

  // Opening the bundle of a running copy asks that copy to reopen. `failed`, which may be empty, is called on a
  // later turn of the main thread when nothing could be opened, as far as the system tells.
  virtual void openURL(const std::string& url, std::function<void()> failed) = 0;

  // Names of the programs, this one aside, that have menu bar items hidden now. Empty where the system does not tell.
  virtual std::vector<std::string> concealers() const { return {}; }
  // Asks the system to end what they have hidden; concealersChanged tells when it has.
  virtual void endConcealments() {}

  // Whether a panel that came first manages the menu bar items, so that their host cannot hide them;
  // concealersChanged tells of it.
  virtual bool areItemsManagedElsewhere() const { return false; }
  // Asks the host to manage them. `done` is called on a later turn of the main thread, with what hinders or nothing;
  // never where the system has no such panel.
  using TakenOver = std::function<void(const std::optional<std::string>& hindrance)>;
  virtual void takeOverItems(const TakenOver& /*done*/) {}

  // Posts applicationLaunched, applicationTerminated, willSleep, didWake, menuBarHostTerminated,
  // menuBarLayoutChanged and concealersChanged.
  virtual NotificationCenter& notificationCenter() = 0;
};

// The URL of a local path, percent-encoded; `directory` appends a slash.
std::string fileURL(const std::string& path, bool directory);

}  // namespace orvo
