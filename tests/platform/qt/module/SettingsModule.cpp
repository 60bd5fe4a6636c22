#include "platform/Platform.h"
#include "platform/Window.h"

namespace {

class NamedWindow final : public orvo::Window {
 public:
  void center() override {}
  void makeKeyAndOrderFront() override {}
};

}  // namespace

// Refuses a window without a title, as a module may that finds something missing.
extern "C" __attribute__((visibility("default"))) orvo::Window* orvoMakeSettingsWindow(
    const orvo::WindowDescription& description, orvo::WindowContent& /*content*/, const orvo::Platform& /*platform*/) {
  return description.title.empty() ? nullptr : new NamedWindow;
}
