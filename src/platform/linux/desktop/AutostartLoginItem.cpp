#include "platform/linux/desktop/AutostartLoginItem.h"

#include "platform/linux/RegularFile.h"
#include "platform/linux/desktop/AtomicFile.h"
#include "platform/linux/desktop/ConfigFolder.h"

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <sstream>
#include <string_view>
#include <utility>

namespace orvo {

namespace {

using Entry = std::map<std::string, std::string>;

constexpr std::size_t greatestEntry = 1U << 20U;  // bytes

struct SettingsPage {
  const char* desktop;  // as in XDG_CURRENT_DESKTOP
  const char* command;
};

constexpr std::array settingsPages{
    SettingsPage{"XFCE", "xfce4-session-settings"},
    SettingsPage{"KDE", "systemsettings kcm_autostart"},
    SettingsPage{"KDE", "systemsettings5 kcm_autostart"},
    SettingsPage{"GNOME", "gnome-session-properties"},
    SettingsPage{"GNOME", "gnome-tweaks"},
    SettingsPage{"MATE", "mate-session-properties"},
    SettingsPage{"X-Cinnamon", "cinnamon-settings startup"},
    SettingsPage{"LXQt", "lxqt-config-session"},
};

// The keys of the entry's main group; of equal keys the first counts.
Entry readEntry(const std::string& path) {
  Entry entry;
  std::error_code error;
  std::istringstream stream(readRegularFile(path, greatestEntry, error).value_or(""));
  bool inside = false;
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with('[')) inside = line.starts_with("[Desktop Entry]");
    const auto equals = line.find('=');
    if (!inside || line.starts_with('#') || equals == std::string::npos) continue;
    const auto keyEnd = line.find_last_not_of(" \t", equals - 1);
    const auto valueStart = line.find_first_not_of(" \t", equals + 1);
    if (equals == 0 || keyEnd == std::string::npos) continue;
    entry.emplace(line.substr(0, keyEnd + 1), valueStart == std::string::npos ? "" : line.substr(valueStart));
  }
  return entry;
}

bool has(const Entry& entry, const char* key, const std::string& value) {
  const auto found = entry.find(key);
  return found != entry.end() && found->second == value;
}

// Each desktop has a switch of its own.
bool isHidden(const Entry& entry) { return has(entry, "Hidden", "true"); }
bool isDisabled(const Entry& entry) { return has(entry, "X-GNOME-Autostart-enabled", "false"); }

// A quoted argument of an Exec key: escaped once as an argument and once more as a text value.
std::string quotedArgument(const std::string& argument) {
  std::string text = "\"";
  for (const char character : argument) {
    if (std::string_view(R"("`$)").find(character) != std::string_view::npos) text += R"(\\)";
    if (character == '\\') text += R"(\\\)";
    if (character == '%') text += '%';
    text += character;
  }
  return text + '"';
}

std::string withoutLinks(const std::string& path) {
  std::error_code error;
  const auto resolved = std::filesystem::weakly_canonical(path, error);
  return error ? path : resolved.string();
}

bool starts(const Entry& entry, const std::vector<std::string>& programs) {
  return std::ranges::any_of(programs,
                             [&](const std::string& each) { return has(entry, "Exec", quotedArgument(each)); });
}

// Switches stay as the former entry had them.
std::string newEntry(const std::string& program, const Entry& former) {
  return "[Desktop Entry]\nType=Application\nName=Orvo\nComment=Hides and shows menu bar icons\nExec=" +
         quotedArgument(program) + "\nTerminal=false\nHidden=" + (isHidden(former) ? "true" : "false") +
         "\nX-GNOME-Autostart-enabled=" + (isDisabled(former) ? "false" : "true") + '\n';
}

QStringList settingsCommand() {
  const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(':');
  QStringList other;
  for (const auto& page : settingsPages) {
    QStringList command = QString(page.command).split(' ');
    if (QStandardPaths::findExecutable(command.first()).isEmpty()) continue;
    if (desktops.contains(page.desktop)) return command;
    if (other.isEmpty()) other = command;
  }
  return other;
}

}  // namespace

AutostartLoginItem::AutostartLoginItem(const std::string& folder, const std::string& identifier,
                                       const std::string& program)
    : file_(folder + '/' + identifier + ".desktop"), programs_{withoutLinks(program), program} {}

std::optional<std::string> AutostartLoginItem::setRegistered(bool registered) {
  if (!registered) {
    if (std::remove(file_.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR) return std::nullopt;
    return std::strerror(errno);
  }
  const Entry former = readEntry(file_);
  if (starts(former, programs_)) return std::nullopt;
  return replaceFile(file_, newEntry(programs_.front(), former));
}

LoginItemStatus AutostartLoginItem::status() const {
  const Entry entry = readEntry(file_);
  if (entry.empty()) return LoginItemStatus::notRegistered;
  if (isHidden(entry) || isDisabled(entry)) return LoginItemStatus::requiresApproval;
  return starts(entry, programs_) ? LoginItemStatus::enabled : LoginItemStatus::notFound;
}

void AutostartLoginItem::openSystemSettingsLoginItems() {
  QStringList command = settingsCommand();
  if (command.isEmpty()) {
    std::fputs("Orvo: this desktop has no page for programs started at login.\n", stderr);
    return;
  }
  const QString program = command.takeFirst();
  QProcess::startDetached(program, command);
}

std::string AutostartLoginItem::standardFolder() { return configFolder() + "/autostart"; }

}  // namespace orvo
