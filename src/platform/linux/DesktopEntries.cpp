#include "platform/linux/DesktopEntries.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

#include <glib.h>

#include "platform/linux/Program.h"
#include "platform/linux/RegularFile.h"

namespace orvo {

namespace fs = std::filesystem;

namespace {

// Folder times tick coarsely: a folder changed less than this before it was read may change again
// without its time telling. One from the future tells: the next change has the time of then.
constexpr std::chrono::milliseconds folderTimeStep{20};

// Where entries are on every system, whatever the environment of this process says: a service that was
// started before the session's variables were set has to see the same ones.
constexpr std::array usualDataFolders = {"/usr/local/share", "/usr/share", "/var/lib/flatpak/exports/share",
                                         "/var/lib/snapd/desktop"};

// Of a text that is kept, in bytes; no application has a longer name, icon or command in good faith.
constexpr std::size_t longest = 512;

std::optional<std::string> take(char* text) {
  g_autofree char* owned = text;
  if (owned == nullptr || *owned == '\0' || std::strlen(owned) > longest) return std::nullopt;
  return std::string(owned);
}

std::optional<std::string> text(GKeyFile* file, const char* key) {
  return take(g_key_file_get_string(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr));
}

bool flag(GKeyFile* file, const char* key) {
  return g_key_file_get_boolean(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr) != FALSE;
}

std::string programOfExec(const std::string& exec) {
  g_auto(GStrv) list = nullptr;
  if (g_shell_parse_argv(exec.c_str(), nullptr, &list, nullptr) == FALSE) return {};
  std::vector<std::string> arguments;
  for (char** argument = list; *argument != nullptr; ++argument) arguments.emplace_back(*argument);
  return programOfCommand(std::move(arguments));
}

std::optional<DesktopEntry> entryOf(std::string identifier, const fs::path& path, const std::string& content) {
  g_autoptr(GKeyFile) file = g_key_file_new();
  if (g_key_file_load_from_data(file, content.data(), content.size(), G_KEY_FILE_NONE, nullptr) == FALSE)
    return std::nullopt;
  if (text(file, "Type") != "Application" || flag(file, "Hidden")) return std::nullopt;
  DesktopEntry entry;
  entry.identifier = std::move(identifier);
  entry.path = path;
  entry.name = take(g_key_file_get_locale_string(file, G_KEY_FILE_DESKTOP_GROUP, "Name", nullptr, nullptr));
  entry.icon = take(g_key_file_get_locale_string(file, G_KEY_FILE_DESKTOP_GROUP, "Icon", nullptr, nullptr));
  entry.windowClass = text(file, "StartupWMClass").value_or("");
  entry.program = programOfExec(text(file, "Exec").value_or(""));
  entry.listed = !flag(file, "NoDisplay");
  return entry;
}

std::string identifierOf(const fs::path& root, const fs::path& file) {
  std::string identifier = fs::path(file).replace_extension().lexically_relative(root);
  std::replace(identifier.begin(), identifier.end(), '/', '-');
  return identifier;
}

// Several entries may start one program: the one named after it is the application itself.
bool isNamedAfter(std::string_view identifier, std::string_view name) {
  const auto begin = identifier.size() - std::min(identifier.size(), name.size());
  return g_ascii_strncasecmp(identifier.data() + begin, name.data(), name.size()) == 0 &&
         (begin == 0 || identifier[begin - 1] == '.');
}

int likeness(const DesktopEntry& entry, std::string_view name) {
  return 1 + (isNamedAfter(entry.identifier, name) ? 2 : 0) + (entry.listed ? 1 : 0);
}

// Where packages keep what is not to be started by hand, each in a folder named after itself.
constexpr std::array<std::string_view, 4> packageRoots = {"/usr/lib/", "/usr/libexec/", "/usr/share/", "/opt/"};

bool isScript(const std::string& program) {
  g_autofree char* path = g_find_program_in_path(program.c_str());
  return path != nullptr && contentOf(path).starts_with("#!");
}

bool isSameFile(const std::string& left, const std::string& right) {
  std::error_code error;
  return left == right || fs::equivalent(left, right, error);
}

}  // namespace

DesktopEntries::DesktopEntries(std::vector<fs::path> folders) : folders_(std::move(folders)) {}

std::vector<fs::path> DesktopEntries::standardFolders() {
  std::vector<fs::path> folders{g_get_user_data_dir()};
  for (const char* const* folder = g_get_system_data_dirs(); *folder != nullptr; ++folder)
    folders.emplace_back(*folder);
  folders.push_back(fs::path(g_get_home_dir()) / ".local/share/flatpak/exports/share");
  for (const char* folder : usualDataFolders) folders.emplace_back(folder);
  for (fs::path& folder : folders) folder /= "applications";
  return folders;
}

void DesktopEntries::refresh() {
  if (!isCurrent()) read();
}

bool DesktopEntries::isCurrent() const {
  if (stamps_.empty()) return folders_.empty();
  return std::all_of(stamps_.begin(), stamps_.end(), [](const auto& stamp) {
    std::error_code error;
    return fs::last_write_time(stamp.first, error) == stamp.second;
  });
}

void DesktopEntries::read() {
  stamps_.clear();
  visited_.clear();
  entries_.clear();
  for (const fs::path& folder : folders_) {
    seen_ = 0;
    room_ = mostBytes;
    readFolder(folder, folder, 0);
  }
}

void DesktopEntries::readFolder(const fs::path& root, const fs::path& folder, int depth) {
  std::error_code error;
  const Stamp changed = fs::last_write_time(folder, error);
  const bool settled = error || std::chrono::abs(Stamp::clock::now() - changed) > folderTimeStep;
  if (!stamps_.emplace(folder, settled ? changed : Stamp::max()).second) return;
  std::error_code missing;
  if (!visited_.insert(fs::canonical(folder, missing)).second && !missing) return;
  for (fs::directory_iterator file(folder, error), end; !error && file != end && ++seen_ < mostFiles;
       file.increment(error)) {
    std::error_code unreadable;
    if (file->is_directory(unreadable)) {
      if (depth < deepest) readFolder(root, file->path(), depth + 1);
    } else if (file->path().extension() == ".desktop") {
      std::string identifier = identifierOf(root, file->path());
      if (entries_.contains(identifier)) continue;
      const std::string content = contentOf(file->path(), std::min(documentLimit, room_));
      room_ -= content.size();
      entries_.emplace(identifier, entryOf(identifier, file->path(), content));
    }
  }
}

const DesktopEntry* DesktopEntries::best(const std::function<int(const DesktopEntry&)>& score) const {
  const DesktopEntry* found = nullptr;
  int highest = 0;
  for (const auto& [identifier, entry] : entries_) {
    const int value = entry ? score(*entry) : 0;
    if (value <= highest) continue;
    highest = value;
    found = &*entry;
  }
  return found;
}

const DesktopEntry* DesktopEntries::withIdentifier(const std::string& identifier) const {
  const auto found = entries_.find(identifier);
  return found != entries_.end() && found->second ? &*found->second : nullptr;
}

const DesktopEntry* DesktopEntries::withPath(const std::string& path) const {
  return best([&](const DesktopEntry& entry) { return entry.path == path ? 1 : 0; });
}

const DesktopEntry* DesktopEntries::withWindowClass(const std::string& windowClass) const {
  return best(
      [&](const DesktopEntry& entry) { return entry.windowClass == windowClass ? likeness(entry, windowClass) : 0; });
}

const DesktopEntry* DesktopEntries::withProgram(const std::string& program) const {
  const std::string_view name = baseName(program);
  return best([&](const DesktopEntry& entry) {
    if (entry.program.empty() || baseName(entry.program) != name) return 0;
    if (entry.program.front() == '/' && !isSameFile(entry.program, program)) return 0;
    return likeness(entry, name);
  });
}

const DesktopEntry* DesktopEntries::withWrapperOf(const std::string& program) const {
  const auto* root = std::find_if(packageRoots.begin(), packageRoots.end(),
                                  [&](std::string_view each) { return program.starts_with(each); });
  if (root == packageRoots.end()) return nullptr;
  const fs::path folder = fs::path(program).parent_path().lexically_relative(*root);
  return best([&](const DesktopEntry& entry) {
    const std::string_view name = baseName(entry.program);
    const bool isOfPackage = !name.empty() && std::find(folder.begin(), folder.end(), name) != folder.end();
    return isOfPackage && isScript(entry.program) ? likeness(entry, name) : 0;
  });
}

const DesktopEntry* DesktopEntries::ofSnap(const std::string& package, const std::string& program) const {
  const DesktopEntry* exact = withIdentifier(package + "_" + std::string(baseName(program)));
  if (exact != nullptr) return exact;
  return best([&](const DesktopEntry& entry) {
    return entry.identifier.starts_with(package + "_") ? likeness(entry, package + "_" + package) : 0;
  });
}

}  // namespace orvo
