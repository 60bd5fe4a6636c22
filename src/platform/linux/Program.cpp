#include "platform/linux/Program.h"

#include <algorithm>
#include <array>

namespace orvo {

namespace {

constexpr std::array<std::string_view, 20> interpreters = {
    "python", "pypy",   "perl", "ruby",        "sh",  "bash", "dash",  "zsh",  "ksh",  "fish",
    "node",   "nodejs", "gjs",  "gjs-console", "lua", "php",  "tclsh", "wish", "java", "guile"};

// "python3.11" and "tclsh8.6" carry their version in the name.
bool isInterpreter(std::string_view name) {
  const auto end = name.find_last_not_of("0123456789.-");
  return end != std::string_view::npos &&
         std::find(interpreters.begin(), interpreters.end(), name.substr(0, end + 1)) != interpreters.end();
}

bool isAssignment(std::string_view argument) {
  const auto equals = argument.find('=');
  return equals != std::string_view::npos && equals > 0 &&
         argument.substr(0, equals).find('/') == std::string_view::npos;
}

}  // namespace

std::string_view baseName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

std::string programOf(const std::string& executable, const std::vector<std::string>& arguments) {
  if (!isInterpreter(baseName(executable))) return executable;
  for (std::size_t index = 1; index < arguments.size(); ++index) {
    const std::string& argument = arguments[index];
    if (argument == "-c" || argument == "-e") return {};
    if (argument == "-m") return index + 1 < arguments.size() ? arguments[index + 1] : std::string();
    if (!argument.empty() && argument.front() != '-' && argument.front() != '%') return argument;
  }
  return {};
}

std::string programOfCommand(std::vector<std::string> arguments) {
  if (!arguments.empty() && baseName(arguments.front()) == "env") {
    const auto command = std::find_if(arguments.begin() + 1, arguments.end(), [](const std::string& argument) {
      return !isAssignment(argument) && !argument.starts_with('-');
    });
    arguments.erase(arguments.begin(), command);
  }
  return arguments.empty() ? std::string() : programOf(arguments.front(), arguments);
}

}  // namespace orvo
