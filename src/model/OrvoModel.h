// The one application model: owns the person's choices, the icon list, the bar's state, the
// concealment assertions, the scanner, the relay, the shortcut, the poll and the observers. Owned by
// AppDelegate; main thread only. Made by `make`, since tasks that outlive it hold it weakly.
#pragma once

#include "bridge/MenuBarBackend.h"
#include "core/OrvoPreferences.h"
#include "model/BarState.h"
#include "model/Published.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/Platform.h"
#include "sensing/IconScanner.h"
#include "sensing/MenuBarSnapshot.h"
#include "sensing/SystemControlRelay.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvo {

class GlobalShortcut;

class OrvoModel : public std::enable_shared_from_this<OrvoModel> {
 public:
  static std::shared_ptr<OrvoModel> make(const Platform& platform);
  ~OrvoModel();

  // Called once, when onStateChanged is set.
  void start();
  // Reveals everything and tears down timer, relay and observers; harmless when called again. The
  // hot key stays registered until the model goes.
  void stop();

  // True when a hide may be offered; also while hidden.
  bool canHide() const;
  void hideSelected();
  void reveal(bool scheduleRehide);

  // `done` runs on the main thread when the list is applied, the follow-up of a stale scan has
  // ended, or nothing was to be done; inside the call in the last case.
  void refresh(std::function<void()> done = {});
  std::vector<DiscoveredApp> filteredApps() const;
  // Of the whole list, not the filtered one.
  std::size_t selectedCount() const;
  void setRule(IconRule rule, const std::string& bundleID);
  // Stores the value; a changed delay cancels a pending re-hide.
  void setPreferences(OrvoPreferences value);

  void requestAccessibility();
  void setLoginItem(bool enabled);

  // Announced before every assignment of a published property.
  ObjectWillChange willChange;

  // Published; assigned by the model alone, but for searchText.
  Published<std::vector<DiscoveredApp>> apps{willChange, {}};
  Published<bool> accessibilityGranted;
  Published<BarState> state{willChange, BarState::visible};
  Published<bool> isScanning{willChange, false};
  Published<std::optional<std::string>> message{willChange, std::nullopt};
  Published<bool> shortcutAvailable{willChange, false};
  Published<bool> launchAtLogin{willChange, false};
  Published<bool> systemClickProtection{willChange, false};
  Published<OrvoPreferences> preferences;
  Published<std::string> searchText{willChange, {}};

  const bool backendAvailable;
  const std::string ownBundle;
  const bool nativeMenuBarReady;

  // Called by every reveal, when a hide request is issued and when it is confirmed.
  std::function<void()> onStateChanged;
};

}  // namespace orvo
