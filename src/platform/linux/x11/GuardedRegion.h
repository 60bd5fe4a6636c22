// What the tap guards: a region as its owner knows it, and the control that stands there. Plain values;
// any thread.
#pragma once

#include "platform/linux/ControlPlaces.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvo {

struct GuardedRegion {
  Rect frame;
  // Absent where the tree does not tell: the region is then where it says on the screen, and nowhere else.
  std::optional<ControlPlace> control;
};

// A point of a control, wherever that is: from its top left corner.
struct ControlPoint {
  std::string identifier;
  Point offset;
  std::uint32_t window = 0;  // of the panel's, the deepest that held the control; moves with it
};

}  // namespace orvo
