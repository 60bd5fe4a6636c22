// A whole platform in memory, over which the real bridge, scanner and relay run. The thread that makes it
// is the main thread; one at a time, since the bridge knows one framework. Whoever was handed `platform`
// goes first.
#pragma once

#include "platform/Platform.h"
#include "support/AsciiText.h"
#include "support/ManualExecutor.h"
#include "support/ManualMainQueue.h"
#include "support/MemoryAccessibility.h"
#include "support/MemoryApplication.h"
#include "support/MemoryApplicationIcons.h"
#include "support/MemoryBundle.h"
#include "support/MemoryEventTaps.h"
#include "support/MemoryFileSystem.h"
#include "support/MemoryFramework.h"
#include "support/MemoryHotKeys.h"
#include "support/MemoryLoginItem.h"
#include "support/MemoryPasteboard.h"
#include "support/MemoryProcessInfo.h"
#include "support/MemoryStatusBar.h"
#include "support/MemoryUserDefaults.h"
#include "support/MemoryWindows.h"
#include "support/MemoryWorkspace.h"

#include <string>
#include <vector>

namespace orvo {

class MemoryPlatform {
 public:
  // Where the clock of `showItems` stands.
  static constexpr Rect clockFrame{1800, 0, 60, 24};

  MemoryPlatform();
  MemoryPlatform(const MemoryPlatform&) = delete;
  MemoryPlatform& operator=(const MemoryPlatform&) = delete;
  ~MemoryPlatform();

  // From now on the menu bar shows a clock and the items of these applications, which are launched
  // if they do not run yet. Posts no notification.
  void showItems(const std::vector<std::string>& bundles);
  // Runs scans and posted tasks until none is left; the clock stands still.
  void settle();

  ManualMainQueue mainQueue;
  ManualExecutor scanExecutor;
  MemoryUserDefaults userDefaults;
  MemoryBundle bundle;
  MemoryProcessInfo processInfo;
  MemoryFileSystem fileSystem;
  MemoryWorkspace workspace;
  MemoryAccessibility accessibility;
  MemoryEventTaps eventTaps;
  MemoryHotKeys hotKeys;
  MemoryLoginItem loginItem;
  AsciiText localizedText;
  MemoryApplication application;
  MemoryStatusBar statusBar;
  MemoryWindows windows;
  MemoryPasteboard pasteboard;
  MemoryApplicationIcons applicationIcons;
  MemoryFramework framework;

  const Platform platform{mainQueue,   scanExecutor,  userDefaults, bundle,     processInfo,     fileSystem,
                          workspace,   accessibility, eventTaps,    hotKeys,    loginItem,       localizedText,
                          application, statusBar,     windows,      pasteboard, applicationIcons};
};

}  // namespace orvo
