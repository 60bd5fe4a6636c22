// Decides which plug-ins of the panel are status controls: those beside the tray, such as the clock.
// Plain functions of what the panel and its settings say; main thread.
#pragma once

#include <string>
#include <vector>

#include "core/Rect.h"

namespace orvo {

// A window of the panel as Accessibility shows it: one place for each plug-in, hidden ones included.
struct Dock {
  Rect frame;
  std::vector<Rect> places;
};

struct PanelPlugin {
  std::string type;  // as the panel's settings name it: "clock", "systray", "separator" ...
  bool expands = false;

  bool operator==(const PanelPlugin&) const = default;
};

// A panel as its settings describe it, from the leading to the trailing end.
using PanelLayout = std::vector<PanelPlugin>;

struct StatusControl {
  std::string word;  // the plug-in's type; the same whatever the control shows
  Rect frame;

  bool operator==(const StatusControl&) const = default;
};

// Layouts and docks come in the panel's order of panels. Docks that no layout fits are passed over.
std::vector<StatusControl> statusControls(const std::vector<PanelLayout>& layouts, const std::vector<Dock>& docks);

}  // namespace orvo
