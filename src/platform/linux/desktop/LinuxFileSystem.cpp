#include "platform/linux/desktop/LinuxFileSystem.h"

#include <QDir>

#include <filesystem>
#include <string_view>

namespace orvo {

namespace {

// What the system's package manager installed for everybody lies in an Applications folder, as if this were a link.
constexpr std::string_view packages = "/usr/lib/orvo/";
constexpr std::string_view applications = "/Applications/";

}  // namespace

std::string LinuxFileSystem::homeDirectoryForCurrentUser() const {
  const QDir home(QDir::homePath());
  return (home.exists() ? home.canonicalPath() : home.path()).toStdString();
}

std::string LinuxFileSystem::resolving(const std::string& path) const {
  std::error_code error;
  const auto resolved = std::filesystem::weakly_canonical(path, error);
  std::string text = error ? path : resolved.string();
  if (text.starts_with(packages)) text.replace(0, packages.size(), applications);
  const auto absolute = std::filesystem::absolute(text, error);
  text = (error ? std::filesystem::path(text) : absolute).lexically_normal().string();
  // "//" is a root of its own to the library, not to the system.
  while (text.starts_with("//")) text.erase(0, 1);
  while (text.size() > 1 && text.ends_with('/')) text.pop_back();
  return text;
}

}  // namespace orvo
