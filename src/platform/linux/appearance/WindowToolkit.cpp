#include "platform/WindowToolkit.h"

namespace orvo {

// Orvo itself is a Qt program here, and window managers draw the title bar.
void prepareWindowToolkit() {}
double dressWindow(std::uintptr_t /*nativeWindow*/, const WindowDescription& /*description*/) { return 0; }

}  // namespace orvo
