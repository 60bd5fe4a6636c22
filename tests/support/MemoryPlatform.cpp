#include "support/MemoryPlatform.h"

#include "bridge/FrameworkEntry.h"

#include <algorithm>

namespace orvo {

namespace {

constexpr std::int32_t hostPid = 10;

}  // namespace

MemoryPlatform::MemoryPlatform() {
  setConcealmentFramework(&framework);
  workspace.launch("com.apple.MenuBarAgent", hostPid);
}

MemoryPlatform::~MemoryPlatform() { setConcealmentFramework(nullptr); }

void MemoryPlatform::showItems(const std::vector<std::string>& bundles) {
  std::vector children{element(hostPid)->withIdentifier("com.apple.menuextra.clock")->withFrame(clockFrame)};
  std::int32_t freePid = hostPid;
  for (const auto& running : workspace.running) freePid = std::max(freePid, running.processIdentifier + 1);
  for (const std::string& bundleIdentifier : bundles) {
    if (workspace.runningApplications(bundleIdentifier).empty()) workspace.launch(bundleIdentifier, freePid++);
    children.push_back(element(workspace.runningApplications(bundleIdentifier).front().processIdentifier));
  }
  accessibility.trees[hostPid] = element(hostPid)->withChildren(children);
}

void MemoryPlatform::settle() {
  while (scanExecutor.runOne() || mainQueue.runOne()) {
  }
}

}  // namespace orvo
