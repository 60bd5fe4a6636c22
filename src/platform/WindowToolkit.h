// What a system has to add to the toolkit that draws Orvo's windows. Main thread only.
#pragma once

#include "platform/Window.h"

#include <cstdint>

namespace orvo {

// Makes ready what must be there before the first window; further calls do nothing.
void prepareWindowToolkit();

// Gives a window what its description asks for and the toolkit leaves out; to be called before its frame is set,
// which depends on it, and whenever it has been shown. `nativeWindow` is the toolkit's handle of it. Answers how
// much of the content, in points, lies under the title bar.
double dressWindow(std::uintptr_t nativeWindow, const WindowDescription& description);

}  // namespace orvo
