// The result of one scan of the menu bar. Plain values; any thread.
#pragma once

#include "core/Rect.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvo {

// One application that owns menu bar items.
struct DiscoveredApp {
  std::string bundleID;
  // Localized; the bundle identifier where the application reports no name.
  std::string name;
  std::int32_t pid = 0;

  // Tells one application from another.
  const std::string& id() const { return bundleID; }
};

struct MenuBarSnapshot {
  // One entry a bundle identifier, by name.
  std::vector<DiscoveredApp> apps;
  // System controls in the order the walk met them, duplicates included; global screen coordinates.
  std::vector<Rect> systemFrames;
};

}  // namespace orvo
