#include "platform/linux/BundleInfo.h"

#include <system_error>

#include <nlohmann/json.hpp>

#include "platform/linux/RegularFile.h"

namespace orvo {

namespace fs = std::filesystem;

namespace {

constexpr const char* infoFile = "Info.json";

}  // namespace

fs::path bundleOf(const fs::path& program) {
  std::error_code error;
  const fs::path folder = program.parent_path();
  const bool isBundle = folder.filename() == "bin" && fs::is_regular_file(folder.parent_path() / infoFile, error);
  return isBundle ? folder.parent_path() : fs::path();
}

std::string bundlePathOfExecutable(const std::string& program) {
  std::error_code error;
  const fs::path bundle = bundleOf(fs::weakly_canonical(program, error));
  return bundle.empty() ? program : bundle.string();
}

nlohmann::json bundleInfo(const fs::path& bundle) {
  // Of values inside values: what is asked for lies at the first, and what lies deeper only costs memory.
  constexpr int deepest = 8;
  const auto isFlat = [](int depth, auto /*event*/, const auto& /*value*/) { return depth < deepest; };
  auto info = nlohmann::json::parse(contentOf(bundle / infoFile), isFlat, false);
  return info.is_object() ? info : nlohmann::json::object();
}

std::optional<std::string> bundleIdentifier(const nlohmann::json& info) {
  const auto found = info.find("CFBundleIdentifier");
  if (found == info.end() || !found->is_string()) return std::nullopt;
  auto identifier = found->get<std::string>();
  return identifier.empty() ? std::nullopt : std::optional(std::move(identifier));
}

}  // namespace orvo
