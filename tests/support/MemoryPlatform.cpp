#include "support/MemoryPlatform.h"

#include "bridge/FrameworkEntry.h"

#include <cctype>
#include <cstring>
#include <filesystem>

namespace orvo {

namespace {

constexpr std::int32_t hostPid = 10;

std::string lower(std::string_view text) {
  std::string all(text);
  for (char& each : all) each = static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
  return all;
}

}  // namespace

int AsciiText::standardCompare(std::string_view left, std::string_view right) const {
  return strverscmp(lower(left).c_str(), lower(right).c_str());
}

bool AsciiText::caseInsensitiveContains(std::string_view text, std::string_view needle) const {
  return !needle.empty() && lower(text).find(lower(needle)) != std::string::npos;
}

std::string MemoryFileSystem::standardizing(const std::string& path) const {
  return std::filesystem::path(path).lexically_normal().string();
}

MemoryPlatform::MemoryPlatform() {
  setConcealmentFramework(&framework);
  workspace.launch(std::string(menuBarHostBundle), hostPid);
}

MemoryPlatform::~MemoryPlatform() { setConcealmentFramework(nullptr); }

void MemoryPlatform::showItems(const std::vector<std::string>& bundles) {
  std::vector children{element(hostPid)->withIdentifier("com.apple.menuextra.clock")->withFrame(clockFrame)};
  std::int32_t freePid = hostPid;
  for (const auto& running : workspace.running) freePid = std::max(freePid, running.processIdentifier + 1);
  for (const std::string& each : bundles) {
    if (workspace.runningApplications(each).empty()) workspace.launch(each, freePid++);
    children.push_back(element(workspace.runningApplications(each).front().processIdentifier));
  }
  accessibility.trees[hostPid] = element(hostPid)->withChildren(children);
}

void MemoryPlatform::settle() {
  while (scanExecutor.runOne() || mainQueue.runOne()) {
  }
}

}  // namespace orvo
