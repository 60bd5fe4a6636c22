// Qt inside a program of AppKit's. The program is an NSApplication with Orvo's own delegate, and
// [NSApp run] is its loop; Qt's events and timers are sources of that same loop. So exec() is never
// called: under it Qt's delegate would answer the end of the session with "cancel" and quit later, which
// the system shows as an interrupted logout, and Qt would have to be there before the first window is
// wanted.
#include "platform/WindowToolkit.h"

#import <AppKit/AppKit.h>

#include <QGuiApplication>

namespace orvo {

namespace {

// Lives as long as the process, which ends inside [NSApp terminate:] without a way back.
void makeQtApplication() {
  static int count = 1;
  static char name[] = "orvo";
  static char* arguments[] = {name, nullptr};
  // No delegate, main menu or Dock icon of Qt's.
  QCoreApplication::setAttribute(Qt::AA_PluginApplication);
  qputenv("QT_MAC_DISABLE_FOREGROUND_APPLICATION_TRANSFORM", "1");
  new QGuiApplication(count, arguments);
  QGuiApplication::setQuitOnLastWindowClosed(false);
}

// The content takes the title bar's room; it keeps its size, and the window its upper edge.
void extendContent(NSWindow* window) {
  const NSRect frame = [window frame];
  NSRect content = [window contentRectForFrameRect:frame];
  [window setStyleMask:[window styleMask] | NSWindowStyleMaskFullSizeContentView];
  content.origin.y = frame.origin.y + frame.size.height - content.size.height;
  [window setFrame:[window frameRectForContentRect:content] display:YES];
}

}  // namespace

void prepareWindowToolkit() {
  if (QCoreApplication::instance() == nullptr) makeQtApplication();
}

// Off screen, as in tests, the handle is no view.
double dressWindow(std::uintptr_t nativeWindow, const WindowDescription& description) {
  if (QGuiApplication::platformName() != QLatin1String("cocoa")) return 0;
  @autoreleasepool {
    NSWindow* const window = [reinterpret_cast<NSView*>(nativeWindow) window];
    if ((description.styleMask & windowStyleFullSizeContentView) != 0) extendContent(window);
    [window setTitlebarAppearsTransparent:description.titlebarAppearsTransparent];
    [window setTitleVisibility:description.titleVisible ? NSWindowTitleVisible : NSWindowTitleHidden];
    return [window frame].size.height - [window contentLayoutRect].size.height;
  }
}

}  // namespace orvo
