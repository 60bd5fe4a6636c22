// How the person wants windows to look. Owned by the settings window that follows it; main thread
// only.
#pragma once

#include <functional>
#include <memory>
#include <optional>

namespace orvo {

struct AppearanceTraits {
  // Absent where the desktop states no preference.
  std::optional<bool> dark;
  bool reducesMotion = false;

  bool operator==(const AppearanceTraits&) const = default;
};

class Appearance {
 public:
  virtual ~Appearance() = default;

  virtual AppearanceTraits traits() const = 0;
  // One observer; called after each change, never inside a call of this class. Empty for none.
  virtual void setObserver(std::function<void()> observer) = 0;
};

// The desktop's own, from the system adapter that the build picks.
std::unique_ptr<Appearance> makeDesktopAppearance();

}  // namespace orvo
