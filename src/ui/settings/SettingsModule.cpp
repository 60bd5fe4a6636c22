// The module's one exported function: the program loads it when the settings are first shown.
#include "platform/WindowToolkit.h"
#include "ui/settings/SettingsWindow.h"

extern "C" __attribute__((visibility("default"))) orvo::Window* orvoMakeSettingsWindow(
    const orvo::WindowDescription& description, orvo::WindowContent& content, const orvo::Platform& platform) {
  orvo::prepareWindowToolkit();
  auto& view = static_cast<orvo::OrvoView&>(content);
  return std::make_unique<orvo::SettingsWindow>(description, view, platform, orvo::makeDesktopAppearance()).release();
}
