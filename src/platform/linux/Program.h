// Tells which file a command line really runs: the executable, or for an interpreter its script.
// Plain functions; any thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

// What follows the last slash.
std::string_view baseName(std::string_view path);

// Of a process, by its folder below /proc: absolute, as it was when it started; empty for one that is gone or may not
// be looked at, for zombies and for threads of the kernel.
std::string executableOf(const std::filesystem::path& process);
std::string executableOf(std::int32_t process);

// The executable itself; for an interpreter the script or module that its arguments name, for Electron the
// application's folder; empty where they name none (a shell's "-c", an interactive session). `arguments`
// begins with the program's own name.
std::string programOf(const std::string& executable, const std::vector<std::string>& arguments);

// The application for which a proxy of the bus speaks, by the name that it lets it own; empty for any
// other program.
std::string clientOf(const std::string& executable, const std::vector<std::string>& arguments);

// The same as programOf for the command of a desktop entry: looks behind "env" and its assignments.
std::string programOfCommand(std::vector<std::string> arguments);

}  // namespace orvo
