// A file system of symbolic links alone: each entry of `links` leads a path, or what lies below it, to
// another.
#pragma once

#include "platform/FileSystem.h"

#include <filesystem>
#include <map>

namespace orvo {

class MemoryFileSystem : public FileSystem {
 public:
  std::string home = "/home/user";
  std::map<std::string, std::string> links;

  std::string homeDirectoryForCurrentUser() const override { return home; }
  std::string resolvingSymbolicLinks(const std::string& path) const override {
    for (const auto& [from, to] : links) {
      if (path == from || path.starts_with(from + "/")) return to + path.substr(from.size());
    }
    return path;
  }
  std::string standardizing(const std::string& path) const override {
    std::string standard = std::filesystem::path(path).lexically_normal().string();
    if (standard.size() > 1 && standard.ends_with('/')) standard.pop_back();
    return standard;
  }
};

}  // namespace orvo
