#include "platform/qt/SettingsWindows.h"

#include <QLibrary>

#include <cstdio>
#include <utility>

namespace orvo {

SettingsWindows::SettingsWindows(std::string module) : module_(std::move(module)) {}

std::unique_ptr<Window> SettingsWindows::make(const WindowDescription& description, WindowContent& content) {
  if (entry_ == nullptr) entry_ = load();
  if (entry_ == nullptr) return nullptr;
  std::unique_ptr<Window> window(entry_(description, content, *platform_));
  if (!window) std::fputs("Orvo: the settings window could not be made.\n", stderr);
  return window;
}

// Tried again on the next showing: a file that was missing may be there by then.
SettingsWindowEntry SettingsWindows::load() {
  QLibrary library(QString::fromStdString(module_));
  library.setLoadHints(QLibrary::PreventUnloadHint);
  const auto entry = reinterpret_cast<SettingsWindowEntry>(library.resolve(settingsWindowEntry));
  if (entry == nullptr) {
    std::fprintf(stderr, "Orvo: the settings window could not be loaded: %s\n", qPrintable(library.errorString()));
  }
  return entry;
}

}  // namespace orvo
