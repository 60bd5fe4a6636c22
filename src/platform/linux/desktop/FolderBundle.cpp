#include "platform/linux/desktop/FolderBundle.h"

#include "platform/linux/RegularFile.h"

#include <nlohmann/json.hpp>

#include <filesystem>

namespace orvo {

namespace {

namespace fs = std::filesystem;

constexpr const char* infoFile = "Info.json";
constexpr std::size_t greatestInfo = 1U << 20U;  // bytes

// What exec was given, made absolute without following links; where that is not this program (a bare
// name found on the search path, a made-up name) the file that really runs.
fs::path launchedProgram(const std::string& invocation) {
  std::error_code error;
  fs::path running = fs::read_symlink("/proc/self/exe", error);
  if (invocation.find('/') == std::string::npos) return running;
  const fs::path launched = fs::absolute(invocation, error).lexically_normal();
  return fs::equivalent(launched, running, error) ? launched : running;
}

fs::path bundleOf(const fs::path& program) {
  std::error_code error;
  const fs::path folder = program.parent_path();
  if (folder.filename() != "bin" || !fs::is_regular_file(folder.parent_path() / infoFile, error)) return {};
  return folder.parent_path();
}

InfoValue infoValueOf(const nlohmann::json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number()) return value.get<double>();
  return std::monostate{};
}

}  // namespace

FolderBundle::FolderBundle(const std::string& invocation) {
  fs::path program = launchedProgram(invocation);
  // A link on the search path may lead to the program inside its bundle.
  std::error_code error;
  if (const fs::path resolved = fs::canonical(program, error);
      bundleOf(program).empty() && !bundleOf(resolved).empty()) {
    program = resolved;
  }
  const fs::path bundle = bundleOf(program);
  program_ = program.string();
  path_ = bundle.empty() ? program.parent_path().string() : bundle.string();
  if (!bundle.empty()) readInfo(bundle / infoFile);
}

void FolderBundle::readInfo(const std::string& file) {
  std::error_code error;
  const auto document = nlohmann::json::parse(readRegularFile(file, greatestInfo, error).value_or(""), nullptr, false);
  if (!document.is_object()) return;
  for (const auto& [key, value] : document.items()) info_.emplace(key, infoValueOf(value));
}

std::optional<std::string> FolderBundle::identifier() const {
  const auto value = infoValue("CFBundleIdentifier");
  const auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
  return text != nullptr ? std::optional(*text) : std::nullopt;
}

std::optional<InfoValue> FolderBundle::infoValue(std::string_view key) const {
  const auto found = info_.find(key);
  return found != info_.end() ? std::optional(found->second) : std::nullopt;
}

}  // namespace orvo
