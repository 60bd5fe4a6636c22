// Files below a folder that goes with its test.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace orvo {

namespace fs = std::filesystem;

struct TemporaryFolder {
  ~TemporaryFolder() { fs::remove_all(path); }
  const fs::path path = mkdtemp((fs::temp_directory_path() / "orvo-XXXXXX").string().data());
};

// Folders are made where they are missing.
inline void write(const fs::path& path, const std::string& content) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

inline std::string read(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace orvo
