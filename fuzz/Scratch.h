// A folder in memory for one fuzzer, which reads what a program under test would find there. Left to the
// system when the fuzzer ends.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace orvo {

inline const std::filesystem::path& scratch() {
  static const std::filesystem::path folder = [] {
    std::string name = "/dev/shm/orvo-fuzz-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) std::abort();
    static const std::string made = name;
    std::atexit([] { std::filesystem::remove_all(made); });
    return std::filesystem::path(made);
  }();
  return folder;
}

inline void write(const std::filesystem::path& path, std::string_view content) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

}  // namespace orvo
