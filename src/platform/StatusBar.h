// Status items: what an application shows in the menu bar. Main thread only.
#pragma once

#include "core/Rect.h"
#include "platform/Menu.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace orvo {

inline constexpr double squareStatusItemLength = -2;

// Bits of the event mask that says when a button sends its action.
inline constexpr std::uint32_t leftMouseUpMask = 4;
inline constexpr std::uint32_t rightMouseUpMask = 16;

class StatusItemButton {
 public:
  virtual ~StatusItemButton() = default;

  // Sent on the events of `eventMask` only. While it runs, Application::currentEventType() tells
  // which one it was.
  virtual void setAction(std::function<void()> action, std::uint32_t eventMask) = 0;
  virtual void setAccessibilityLabel(const std::string& label) = 0;
  virtual void setAccessibilityIdentifier(const std::string& identifier) = 0;
  // A symbol by its platform name, such as "chevron.left".
  virtual void setImage(const std::string& symbolName, const std::string& accessibilityDescription) = 0;
  virtual void setToolTip(const std::string& text) = 0;
  // In the button's own coordinates.
  virtual Rect bounds() const = 0;
  // Shows the menu at a point of the button's own coordinates, with no item under the pointer. The
  // menu is not kept: later clicks send the action again.
  virtual void popUpMenu(const Menu& menu, Point point) = 0;
};

class StatusItem {
 public:
  virtual ~StatusItem() = default;

  virtual void setAutosaveName(const std::string& name) = 0;
  virtual void setBehavior(std::uint32_t behavior) = 0;
  virtual void setVisible(bool visible) = 0;
  // Absent when the system gave the item no button; owned by the item.
  virtual StatusItemButton* button() = 0;
};

class StatusBar {
 public:
  virtual ~StatusBar() = default;

  // May be absent. Destroying the item removes it from the bar.
  virtual std::unique_ptr<StatusItem> statusItem(double length) = 0;
};

}  // namespace orvo
