#include "platform/linux/session/BundlePath.h"

#include <filesystem>
#include <string_view>
#include <system_error>

namespace orvo {

namespace fs = std::filesystem;

std::string bundlePathOfExecutable(const std::string& executable) {
  std::error_code error;
  const fs::path folder = fs::weakly_canonical(executable, error).parent_path();
  if (error || folder.filename() != "bin") return executable;
  const fs::path root = folder.parent_path();
  return fs::is_regular_file(root / "Info.json", error) ? root.string() : executable;
}

std::optional<std::string> bundlePathOfProcess(std::int32_t processIdentifier) {
  constexpr std::string_view deleted = " (deleted)";
  std::error_code error;
  std::string executable = fs::read_symlink("/proc/" + std::to_string(processIdentifier) + "/exe", error);
  if (error) return std::nullopt;
  if (executable.ends_with(deleted)) executable.resize(executable.size() - deleted.size());
  return bundlePathOfExecutable(executable);
}

}  // namespace orvo
