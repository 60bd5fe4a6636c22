// Tells which file a command line really runs: the executable, or for an interpreter its script.
// Plain functions of their arguments; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvo {

// What follows the last slash.
std::string_view baseName(std::string_view path);

// The executable itself; for an interpreter the script or module that its arguments name, empty where
// they name none (a shell's "-c", an interactive session). `arguments` begins with the program's own name.
std::string programOf(const std::string& executable, const std::vector<std::string>& arguments);

// The same for the command of a desktop entry: looks behind "env" and its assignments.
std::string programOfCommand(std::vector<std::string> arguments);

}  // namespace orvo
