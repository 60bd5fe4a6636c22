#include "sensing/IconScanner.h"

#include "platform/Accessibility.h"
#include "platform/LocalizedText.h"
#include "platform/MainQueue.h"
#include "platform/SerialExecutor.h"
#include "platform/Workspace.h"
#include "sensing/MenuBarWalk.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace orvo {
namespace {

// Seconds; bounds one request to the host, which may hang.
constexpr float rootMessagingTimeout = 0.2F;

std::optional<std::int32_t> hostProcess(const Workspace& workspace) {
  const std::vector<RunningApplication> running = workspace.runningApplications();
  const auto host = std::find_if(running.begin(), running.end(), [](const RunningApplication& application) {
    return application.bundleIdentifier && *application.bundleIdentifier == menuBarHostBundle;
  });
  if (host == running.end()) return std::nullopt;
  return host->processIdentifier;
}

std::vector<DiscoveredApp> sortedByName(const MenuBarWalk& menuBar, const LocalizedText& text) {
  std::vector<DiscoveredApp> apps;
  apps.reserve(menuBar.apps().size());
  for (const auto& [bundle, app] : menuBar.apps()) apps.push_back(app);
  std::stable_sort(apps.begin(), apps.end(), [&text](const DiscoveredApp& left, const DiscoveredApp& right) {
    return text.standardCompare(left.name, right.name) < 0;
  });
  return apps;
}

MenuBarSnapshot takeSnapshot(Accessibility& accessibility, const Workspace& workspace, const LocalizedText& text) {
  if (!accessibility.isProcessTrusted()) return {};
  const std::optional<std::int32_t> host = hostProcess(workspace);
  if (!host) return {};
  const AccessibilityElementRef root = accessibility.applicationElement(*host);
  root->setMessagingTimeout(rootMessagingTimeout);
  MenuBarWalk menuBar(workspace, *host);
  menuBar.walk(*root, 0, std::nullopt);
  return {sortedByName(menuBar, text), menuBar.systemFrames()};
}

}  // namespace

IconScanner::IconScanner(Accessibility& accessibility, const Workspace& workspace, const LocalizedText& text,
                         SerialExecutor& executor, MainQueue& queue)
    : accessibility_(accessibility), workspace_(workspace), text_(text), executor_(executor), queue_(queue) {}

void IconScanner::scan(std::function<void(MenuBarSnapshot)> done) const {
  // The answer travels by moves, so that whatever `done` holds is let go on the main thread.
  auto task = [&accessibility = accessibility_, &workspace = workspace_, &text = text_, &queue = queue_,
               done = std::move(done)]() mutable {
    queue.post([done = std::move(done), snapshot = takeSnapshot(accessibility, workspace, text)]() mutable {
      done(std::move(snapshot));
    });
  };
  executor_.post(std::move(task));
}

}  // namespace orvo
