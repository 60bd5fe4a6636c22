// A bundle on disk: a folder with an "Info.json" beside the "bin" folder of its programs. Plain functions; any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace orvo {

// The folder of the bundle that the program lies in; empty for none.
std::filesystem::path bundleOf(const std::filesystem::path& program);

// The bundle that the program, or what it is a link to, lies in; else the program.
std::string bundlePathOfExecutable(const std::string& program);

// What Info.json says; an empty object for a file that says nothing.
nlohmann::json bundleInfo(const std::filesystem::path& bundle);

// The bundle's own identifier; absent for none, and for an empty one.
std::optional<std::string> bundleIdentifier(const nlohmann::json& info);

}  // namespace orvo
