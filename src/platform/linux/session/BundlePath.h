// Where an application lies: the folder of its bundle, else its executable. Plain functions; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvo {

// A bundle is a folder with an "Info.json" beside the "bin" folder of its executables.
std::string bundlePathOfExecutable(const std::string& executable);

// Absent when the process is gone or belongs to somebody else.
std::optional<std::string> bundlePathOfProcess(std::int32_t processIdentifier);

}  // namespace orvo
