// Says which application a process belongs to. A function of the process and the installed desktop
// files alone, so that the agent and Orvo always agree. Any thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace orvo {

class DesktopEntries;

struct ApplicationIdentity {
  // The desktop file's id without its ending, else the base name of the executable or script.
  std::string bundleIdentifier;
  // The desktop file's name in the person's language.
  std::optional<std::string> localizedName;
  // As the desktop file has it: an icon theme name or an absolute path.
  std::optional<std::string> iconName;
  // Absolute path of the bundle that the executable lies in, else of the executable.
  std::string bundlePath;
};

// The identifier of the bundle that the program is in; empty for none.
std::string bundleOfExecutable(const std::filesystem::path& executable);

// From a folder of processes such as /proc, whose files and those of the process may be slow. Absent when the process
// is gone or may not be looked at.
std::optional<ApplicationIdentity> identifyProcess(std::int32_t processIdentifier,
                                                   const std::filesystem::path& processes,
                                                   const DesktopEntries& entries);

}  // namespace orvo
