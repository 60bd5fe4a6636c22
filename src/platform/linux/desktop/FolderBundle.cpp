#include "platform/linux/desktop/FolderBundle.h"

#include "platform/linux/BundleInfo.h"

#include <filesystem>

namespace orvo {

namespace {

namespace fs = std::filesystem;

// What exec was given, made absolute without following links; where that is not this program (a bare
// name found on the search path, a made-up name) the file that really runs.
fs::path launchedProgram(const std::string& invocation) {
  std::error_code error;
  fs::path running = fs::read_symlink("/proc/self/exe", error);
  if (invocation.find('/') == std::string::npos) return running;
  const fs::path launched = fs::absolute(invocation, error).lexically_normal();
  return fs::equivalent(launched, running, error) ? launched : running;
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
  if (!bundle.empty()) info_ = bundleInfo(bundle);
}

std::optional<std::string> FolderBundle::identifier() const { return bundleIdentifier(info_); }

std::optional<std::string> FolderBundle::infoText(std::string_view key) const {
  const auto found = info_.find(key);
  if (found == info_.end() || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

}  // namespace orvo
