// Makes the settings window with a module that is loaded when the first window is asked for, so that
// a program whose settings are never opened never pays for them. Owned by main.cpp; main thread only.
#pragma once

#include "platform/Window.h"

#include <string>

namespace orvo {

struct Platform;

// The module's one exported function, by this name and type. The caller owns the window; null when
// none could be made. The content and the platform outlive the window.
inline constexpr const char* settingsWindowEntry = "orvoMakeSettingsWindow";
using SettingsWindowEntry = Window* (*)(const WindowDescription&, WindowContent&, const Platform&);

class SettingsWindows final : public Windows {
 public:
  // `module` is the path of the shared library.
  explicit SettingsWindows(std::string module);

  // What the module is handed; set once, before the first window.
  void setPlatform(const Platform& platform) { platform_ = &platform; }

  std::unique_ptr<Window> make(const WindowDescription& description, WindowContent& content) override;

 private:
  SettingsWindowEntry load();

  const std::string module_;
  const Platform* platform_ = nullptr;
  SettingsWindowEntry entry_ = nullptr;
};

}  // namespace orvo
