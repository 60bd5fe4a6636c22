// Picks the adapters of macOS, wires them and starts Orvo.
#include "app/OrvoMain.h"
#include "bridge/FrameworkEntry.h"
#include "platform/Words.h"
#include "platform/common/SettingsWindows.h"
#include "platform/common/ThreadExecutor.h"
#include "platform/macos/appkit/CocoaApplication.h"
#include "platform/macos/appkit/CocoaIcons.h"
#include "platform/macos/appkit/CocoaPasteboard.h"
#include "platform/macos/appkit/CocoaStatusBar.h"
#include "platform/macos/appkit/CocoaWorkspace.h"
#include "platform/macos/appkit/SystemLoginItem.h"
#include "platform/macos/dispatch/DispatchMainQueue.h"
#include "platform/macos/dispatch/TerminationSignals.h"
#include "platform/macos/foundation/FoundationBundle.h"
#include "platform/macos/foundation/FoundationFileSystem.h"
#include "platform/macos/foundation/FoundationProcessInfo.h"
#include "platform/macos/foundation/FoundationText.h"
#include "platform/macos/foundation/FoundationUserDefaults.h"
#include "platform/macos/foundation/PooledExecutor.h"
#include "platform/macos/foundation/SystemFramework.h"
#include "platform/macos/quartz/AxAccessibility.h"
#include "platform/macos/quartz/CarbonHotKeys.h"
#include "platform/macos/quartz/QuartzEventTaps.h"

#include <iostream>
#include <memory>

namespace {

using namespace orvo;

// What comes before the decision how to run; the application object is none of it.
struct EarlyAdapters {
  FoundationProcessInfo processInfo;
  FoundationBundle bundle;
  SystemFramework framework;
  AxAccessibility accessibility;
  CocoaWorkspace workspace;
};

// What the running application needs besides. Members are in the order in which they need each other.
struct Adapters {
  explicit Adapters(EarlyAdapters& adapters) : early(adapters) { windows.setPlatform(platform); }

  EarlyAdapters& early;
  DispatchMainQueue mainQueue;
  CocoaApplication application;
  TerminationSignals signals{[this] { application.terminate(); }};
  FoundationUserDefaults userDefaults;
  FoundationFileSystem fileSystem;
  QuartzEventTaps eventTaps;
  CarbonHotKeys hotKeys;
  SystemLoginItem loginItem;
  FoundationText localizedText;
  CocoaStatusBar statusBar;
  SettingsWindows windows{early.bundle.path() + "/Contents/PlugIns/orvo-settings.dylib"};
  CocoaPasteboard pasteboard;
  CocoaIcons applicationIcons{mainQueue};
  // After what a scan asks, so that its thread ends first.
  ThreadExecutor scanThread;
  PooledExecutor scanExecutor{scanThread};
  Platform platform{mainQueue,       scanExecutor,        userDefaults, early.bundle, early.processInfo, fileSystem,
                    early.workspace, early.accessibility, eventTaps,    hotKeys,      loginItem,         localizedText,
                    application,     statusBar,           windows,      pasteboard,   applicationIcons,  macWords};
};

}  // namespace

int main() {
  EarlyAdapters early;
  setConcealmentFramework(&early.framework, macWords);
  std::unique_ptr<Adapters> adapters;
  OrvoMain::main({early.bundle, early.processInfo, early.accessibility, early.workspace, macWords}, std::cout,
                 [&]() -> const Platform* {
                   adapters = std::make_unique<Adapters>(early);
                   return &adapters->platform;
                 });
  return 0;
}
