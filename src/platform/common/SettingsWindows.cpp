#include "platform/common/SettingsWindows.h"

#include <dlfcn.h>

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

// Never unloaded, as Qt asks of what uses it. Tried again on the next showing: a file that was missing may be there by
// then.
SettingsWindowEntry SettingsWindows::load() {
  void* const library = dlopen(module_.c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const symbol = library != nullptr ? dlsym(library, settingsWindowEntry) : nullptr;
  if (symbol == nullptr) std::fprintf(stderr, "Orvo: the settings window could not be loaded: %s\n", dlerror());
  return reinterpret_cast<SettingsWindowEntry>(symbol);
}

}  // namespace orvo
