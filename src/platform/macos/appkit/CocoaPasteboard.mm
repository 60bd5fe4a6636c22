#include "platform/macos/appkit/CocoaPasteboard.h"

#include "platform/macos/foundation/NsText.h"

#import <AppKit/AppKit.h>

namespace orvo {

void CocoaPasteboard::clearContents() {
  @autoreleasepool {
    [[NSPasteboard generalPasteboard] clearContents];
  }
}

void CocoaPasteboard::setString(const std::string& text) {
  @autoreleasepool {
    [[NSPasteboard generalPasteboard] setString:nsText(text) forType:NSPasteboardTypeString];
  }
}

}  // namespace orvo
