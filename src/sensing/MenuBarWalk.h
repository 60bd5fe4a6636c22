// One bounded walk through the menu bar host's accessibility tree. Made for one scan, on the scan's
// thread, and thrown away with it.
#pragma once

#include "platform/Accessibility.h"
#include "platform/Workspace.h"
#include "sensing/MenuBarSnapshot.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvo {

class MenuBarWalk {
 public:
  MenuBarWalk(const Workspace& workspace, std::int32_t hostProcess);

  void walk(AccessibilityElement& element, int depth, const std::optional<Rect>& inheritedFrame);

  // By bundle identifier; an application's last element stands for it.
  const std::map<std::string, DiscoveredApp>& apps() const { return apps_; }
  const std::vector<Rect>& systemFrames() const { return systemFrames_; }

 private:
  std::optional<DiscoveredApp> owner(AccessibilityElement& element) const;
  void collectSystemControl(AccessibilityElement& element, const std::optional<Rect>& frame);

  // Elements examined at most, so that a runaway tree cannot hold up the scan.
  static constexpr int visitBudget = 400;

  const Workspace& workspace_;
  const std::int32_t hostProcess_;
  int budget_ = visitBudget;
  std::map<std::string, DiscoveredApp> apps_;
  std::vector<Rect> systemFrames_;
};

}  // namespace orvo
