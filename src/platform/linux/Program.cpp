#include "platform/linux/Program.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace orvo {

namespace {

// An interpreter, and its options that take the next argument for themselves, each between spaces.
struct Interpreter {
  std::string_view name;
  std::string_view options;
};

constexpr std::array<Interpreter, 21> interpreters = {{
    {"python", " -W -X --check-hash-based-pycs "},
    {"pypy", " -W -X --jit "},
    {"perl", " -I "},
    {"ruby", " -I -r -C -E "},
    {"sh", " -o +o "},
    {"bash", " -o +o -O +O --rcfile --init-file "},
    {"dash", " -o +o "},
    {"zsh", " -o +o "},
    {"ksh", " -o +o "},
    {"fish", " -C -d -f -o -D "},
    {"node", " -r --require --import --loader -C --conditions --env-file "},
    {"nodejs", " -r --require --import --loader -C --conditions --env-file "},
    {"gjs", " -I --include-path "},
    {"gjs-console", " -I --include-path "},
    {"lua", " -l "},
    {"php", " -d -z "},
    {"tclsh", " -encoding "},
    {"wish", " -encoding -name -display -geometry "},
    {"java", " -cp -classpath --class-path -p --module-path --add-modules -splash "},
    {"guile", " -L -C -l -x "},
    {"electron", " -r --require "},
}};

// "python3.11" and "tclsh8.6" carry their version in the name.
const Interpreter* interpreterNamed(std::string_view name) {
  const auto end = name.find_last_not_of("0123456789.-");
  if (end == std::string_view::npos) return nullptr;
  const auto* found = std::find_if(interpreters.begin(), interpreters.end(), [&](const Interpreter& interpreter) {
    return interpreter.name == name.substr(0, end + 1);
  });
  return found == interpreters.end() ? nullptr : found;
}

bool takesNext(const Interpreter& interpreter, const std::string& option) {
  return interpreter.options.find(' ' + option + ' ') != std::string_view::npos;
}

// Electron is given an archive or a folder, which bear the same few names in all applications.
std::string applicationFolder(std::string path) {
  constexpr std::array<std::string_view, 7> inner = {"app.asar", "app",  "resources", "main.js",
                                                     "index.js", "dist", "."};
  path.erase(path.find_last_not_of('/') + 1);
  while (path.find('/', 1) != std::string::npos && std::find(inner.begin(), inner.end(), baseName(path)) != inner.end())
    path.erase(path.rfind('/'));
  return path;
}

bool isAssignment(std::string_view argument) {
  const auto equals = argument.find('=');
  return equals != std::string_view::npos && equals > 0 &&
         argument.substr(0, equals).find('/') == std::string_view::npos;
}

}  // namespace

std::string_view baseName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

std::string executableOf(const std::filesystem::path& process) {
  constexpr std::string_view deleted = " (deleted)";
  std::error_code error;
  std::string executable = std::filesystem::read_symlink(process / "exe", error);
  if (executable.ends_with(deleted)) executable.resize(executable.size() - deleted.size());
  return executable;
}

std::string executableOf(std::int32_t process) {
  return executableOf(std::filesystem::path("/proc/" + std::to_string(process)));
}

std::string programOf(const std::string& executable, const std::vector<std::string>& arguments) {
  const Interpreter* interpreter = interpreterNamed(baseName(executable));
  if (interpreter == nullptr) return executable;
  for (std::size_t index = 1; index < arguments.size(); ++index) {
    const std::string& argument = arguments[index];
    if (argument == "-c" || argument == "-e") return {};
    if (takesNext(*interpreter, argument)) {
      ++index;
      continue;
    }
    if (argument == "-m") return index + 1 < arguments.size() ? arguments[index + 1] : std::string();
    if (!argument.empty() && argument.front() != '-' && argument.front() != '%')
      return interpreter->name == "electron" ? applicationFolder(argument) : argument;
  }
  return {};
}

std::string clientOf(const std::string& executable, const std::vector<std::string>& arguments) {
  constexpr std::string_view option = "--own=";
  if (baseName(executable) != "xdg-dbus-proxy") return {};
  const auto own = std::find_if(arguments.begin(), arguments.end(),
                                [&](const std::string& argument) { return argument.starts_with(option); });
  if (own == arguments.end()) return {};
  return own->substr(option.size(), own->ends_with(".*") ? own->size() - option.size() - 2 : std::string::npos);
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
