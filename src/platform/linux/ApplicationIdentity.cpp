#include "platform/linux/ApplicationIdentity.h"

#include <algorithm>
#include <sstream>
#include <string_view>
#include <system_error>
#include <vector>

#include <glib.h>
#include <nlohmann/json.hpp>

#include "platform/linux/AgentProtocol.h"
#include "platform/linux/BundleInfo.h"
#include "platform/linux/DesktopEntries.h"
#include "platform/linux/Program.h"
#include "platform/linux/RegularFile.h"

namespace orvo {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view agentExecutable = "orvo-agent";

// In bytes, as of a file's name; each of a program's items and each answer about them carries it.
constexpr std::size_t longestIdentifier = 255;

struct Process {
  std::int32_t identifier;
  fs::path folder;         // its entry below /proc
  std::string executable;  // absolute
  std::string program;     // the script instead, where there is one
  std::string client;      // the application that it speaks for, where it is such a go-between
};

// What the kernel tells of a process at most: arguments and environment share a quarter of the stack.
constexpr std::size_t processLimit = std::size_t{2} * 1024 * 1024;

std::vector<std::string> readList(const fs::path& path) {
  const std::string content = contentOf(path, processLimit);
  std::vector<std::string> list;
  for (std::size_t begin = 0; begin < content.size();) {
    const std::size_t end = std::min(content.find('\0', begin), content.size());
    list.push_back(content.substr(begin, end - begin));
    begin = end + 1;
  }
  return list;
}

std::optional<Process> look(std::int32_t identifier, const fs::path& processes) {
  const fs::path folder = processes / std::to_string(identifier);
  std::string executable = executableOf(folder);
  if (executable.empty()) return std::nullopt;
  const auto arguments = readList(folder / "cmdline");
  std::string program = programOf(executable, arguments);
  program.erase(program.find_last_not_of('/') + 1);  // Python runs folders too
  if (program.empty()) program = executable;
  std::error_code error;
  if (program.front() != '/') program = fs::read_symlink(folder / "cwd", error) / program;
  std::string client = clientOf(executable, arguments);
  return Process{identifier, folder, std::move(executable), std::move(program), std::move(client)};
}

// File names may be any bytes; the bus and the stored choices carry UTF-8 only.
std::string validText(const std::string& bytes) {
  g_autofree char* text = g_utf8_make_valid(bytes.data(), static_cast<gssize>(bytes.size()));
  return text;
}

ApplicationIdentity describe(const std::string& name, const DesktopEntry* entry) {
  std::string identifier = validText(name.substr(0, longestIdentifier));
  if (entry == nullptr) return {std::move(identifier), {}, {}, {}};
  return {std::move(identifier), entry->name, entry->icon, {}};
}

std::optional<ApplicationIdentity> fromBundle(const Process& process, const DesktopEntries& entries) {
  if (baseName(process.executable) == agentExecutable) return describe(agent_protocol::hostBundleIdentifier, nullptr);
  const auto info = bundleInfo(bundleOf(process.executable));
  const auto identifier = bundleIdentifier(info);
  if (!identifier) return std::nullopt;
  auto identity = describe(*identifier, entries.withIdentifier(*identifier));
  const auto name = info.find("CFBundleName");
  if (!identity.localizedName && name != info.end() && name->is_string())
    identity.localizedName = name->get<std::string>();
  return identity;
}

// Children inherit the variables: they speak of this process only where its identifier stands beside.
const DesktopEntry* launchedEntry(const Process& process, const DesktopEntries& entries) {
  constexpr std::string_view fileVariable = "GIO_LAUNCHED_DESKTOP_FILE=";
  const std::string own = "GIO_LAUNCHED_DESKTOP_FILE_PID=" + std::to_string(process.identifier);
  const auto environment = readList(process.folder / "environ");
  if (std::find(environment.begin(), environment.end(), own) == environment.end()) return nullptr;
  const auto file = std::find_if(environment.begin(), environment.end(),
                                 [&](const std::string& variable) { return variable.starts_with(fileVariable); });
  return file == environment.end() ? nullptr : entries.withPath(file->substr(fileVariable.size()));
}

// "[Application]" and "name=" as Flatpak mounts it at the root of each sandbox.
std::string flatpakName(const Process& process) {
  constexpr std::string_view key = "name=";
  std::istringstream file(contentOf(process.folder / "root" / ".flatpak-info"));
  bool inApplication = false;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('[')) inApplication = line == "[Application]";
    if (inApplication && line.starts_with(key)) return line.substr(key.size());
  }
  return {};
}

std::string snapPackage(const std::string& program) {
  for (const std::string_view root : {"/snap/", "/var/lib/snapd/snap/"}) {
    const auto end = program.starts_with(root) ? program.find('/', root.size()) : std::string::npos;
    if (end != std::string::npos) return program.substr(root.size(), end - root.size());
  }
  return {};
}

std::optional<ApplicationIdentity> fromSandbox(const Process& process, const DesktopEntries& entries) {
  if (const std::string name = flatpakName(process); !name.empty()) return describe(name, entries.withIdentifier(name));
  if (!process.client.empty()) return describe(process.client, entries.withIdentifier(process.client));
  const std::string package = snapPackage(process.program);
  if (package.empty()) return std::nullopt;
  const DesktopEntry* entry = entries.ofSnap(package, process.program);
  return describe(entry != nullptr ? entry->identifier : package, entry);
}

const DesktopEntry* installedEntry(const Process& process, const DesktopEntries& entries) {
  const DesktopEntry* entry = entries.withWindowClass(std::string(baseName(process.program)));
  if (entry == nullptr) entry = entries.withProgram(process.program);
  return entry != nullptr ? entry : entries.withWrapperOf(process.program);
}

ApplicationIdentity identify(const Process& process, const DesktopEntries& entries) {
  if (auto identity = fromBundle(process, entries)) return *identity;
  if (const DesktopEntry* entry = launchedEntry(process, entries)) return describe(entry->identifier, entry);
  if (auto identity = fromSandbox(process, entries)) return *identity;
  if (const DesktopEntry* entry = installedEntry(process, entries)) return describe(entry->identifier, entry);
  return describe(std::string(baseName(process.program)), nullptr);
}

}  // namespace

std::optional<ApplicationIdentity> identifyProcess(std::int32_t processIdentifier, const fs::path& processes,
                                                   const DesktopEntries& entries) {
  const auto process = look(processIdentifier, processes);
  if (!process) return std::nullopt;
  ApplicationIdentity identity = identify(*process, entries);
  identity.bundlePath = bundlePathOfExecutable(process->executable);
  return identity;
}

std::string bundleOfExecutable(const fs::path& executable) {
  return bundleIdentifier(bundleInfo(bundleOf(executable))).value_or("");
}

}  // namespace orvo
