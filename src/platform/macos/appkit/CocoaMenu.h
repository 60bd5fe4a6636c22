// Makes AppKit's menus of Orvo's. For Objective-C++ only; main thread only.
#pragma once

#include "platform/Menu.h"
#include "platform/macos/foundation/Retained.h"

#import <AppKit/AppKit.h>

namespace orvo {

// The menu keeps whatever its items call.
Retained<NSMenu*> cocoaMenu(const Menu& menu);

}  // namespace orvo
