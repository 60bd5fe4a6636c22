#include "platform/linux/desktop/LinuxFileSystem.h"

#include <QDir>

#include <filesystem>

namespace orvo {

std::string LinuxFileSystem::homeDirectoryForCurrentUser() const { return QDir::homePath().toStdString(); }

std::string LinuxFileSystem::resolvingSymbolicLinks(const std::string& path) const {
  std::error_code error;
  const auto resolved = std::filesystem::weakly_canonical(path, error);
  return error ? path : resolved.string();
}

std::string LinuxFileSystem::standardizing(const std::string& path) const {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(path, error);
  std::string text = (error ? std::filesystem::path(path) : absolute).lexically_normal().string();
  // "//" is a root of its own to the library, not to the system.
  while (text.starts_with("//")) text.erase(0, 1);
  while (text.size() > 1 && text.ends_with('/')) text.pop_back();
  return text;
}

}  // namespace orvo
