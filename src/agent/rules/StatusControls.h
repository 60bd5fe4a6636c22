// Decides which plug-ins of the panel are status controls, such as the clock. Plain functions of what the
// panel and its settings say; main thread.
#pragma once

#include <string>
#include <vector>

#include "core/Rect.h"

namespace orvo {

// A window of the panel as Accessibility shows it: one place for each plug-in, hidden ones included.
struct Dock {
  Rect frame;                // on the screen
  std::vector<Rect> places;  // in the window, which may slide out of sight meanwhile
};

struct PanelPlugin {
  std::string type;  // as the panel's settings name it: "clock", "systray", "separator" ...
  int number = 0;    // told from others of the type by it, for as long as the panel has it

  bool operator==(const PanelPlugin&) const = default;
};

// A panel as its settings describe it, from the leading to the trailing end.
using PanelLayout = std::vector<PanelPlugin>;

struct StatusControl {
  std::string name;  // the plug-in's type and number; the same whatever the control shows
  Rect frame;        // on the screen

  bool operator==(const StatusControl&) const = default;
};

struct DockControls {
  Rect frame;  // of the dock
  std::vector<StatusControl> controls;

  bool operator==(const DockControls&) const = default;
};

// All docks, in the panel's order of its windows. Layouts come in the panel's order of panels; a dock that
// none fits has no controls.
std::vector<DockControls> statusControls(const std::vector<PanelLayout>& layouts, const std::vector<Dock>& docks);

// The frame, cut across into pieces of one height where it is taller than what a menu bar's walk takes for
// a control.
std::vector<Rect> pieces(const Rect& frame);

}  // namespace orvo
