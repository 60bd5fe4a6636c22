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
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvo {

class GlobalShortcut;

class OrvoModel : public std::enable_shared_from_this<OrvoModel> {
 public:
  static std::shared_ptr<OrvoModel> make(const Platform& platform);
  OrvoModel(const OrvoModel&) = delete;
  OrvoModel& operator=(const OrvoModel&) = delete;
  ~OrvoModel();

  // Called once, when onStateChanged is set.
  void start();
  // Reveals everything and tears down timer, relay and observers for good; harmless when called again. The
  // hot key stays registered until the model goes.
  void stop();

  // Whether the system lets icons be hidden, as far as it has told.
  bool canBeManaged() const;
  // True when a hide may be offered; also while hidden.
  bool canHide() const;
  void hideSelected();
  void reveal(bool scheduleRehide);
  // Whether icons are hidden, or about to be, by whomever.
  bool isConcealing() const;
  // Hides what is visible; reveals everything else, to hide again later.
  void toggle();

  // `done` runs on the main thread when the list is applied, the follow-up of a stale scan has
  // ended, or nothing was to be done; inside the call in the last case. It is dropped when the model
  // goes first.
  void refresh(std::function<void()> done = {});
  // Refreshes on a later turn of the main thread.
  void refreshLater();
  std::vector<DiscoveredApp> filteredApps() const;
  // Of the whole list, not the filtered one.
  std::size_t selectedCount() const;
  void setRule(IconRule rule, const std::string& bundleID);
  // Stores the value, with whatever another copy of Orvo stored meanwhile and this value does not change; a
  // changed delay cancels a pending re-hide.
  void setPreferences(OrvoPreferences value);

  void requestAccessibility();
  void setLoginItem(bool enabled);

  // Announced before every assignment of a published property.
  ObjectWillChange willChange;

  Published<std::vector<DiscoveredApp>, OrvoModel> apps{willChange, {}};
  Published<bool, OrvoModel> accessibilityGranted;
  Published<BarState, OrvoModel> state{willChange, BarState::visible};
  Published<bool, OrvoModel> isScanning{willChange, false};
  Published<std::optional<std::string>, OrvoModel> message{willChange, std::nullopt};
  Published<bool, OrvoModel> shortcutAvailable{willChange, false};
  Published<bool, OrvoModel> launchAtLogin{willChange, false};
  Published<bool, OrvoModel> systemClickProtection{willChange, false};
  Published<OrvoPreferences, OrvoModel> preferences;
  Published<std::string> searchText{willChange, {}};
  // Names of other programs that hide icons; the person's own reveal asks the system to end it.
  Published<std::vector<std::string>, OrvoModel> concealers{willChange, {}};
  Published<bool, OrvoModel> itemsManagedElsewhere{willChange, false};

  const bool backendAvailable;
  const std::string ownBundle;
  const bool nativeMenuBarReady;

  // Called by every reveal, when a hide request is issued and when it is confirmed.
  std::function<void()> onStateChanged;

 private:
  static constexpr const char* preferencesKey = "Quillet.Preferences.v1";

  // Names one hide request, one reveal or one scan epoch. A count is enough: nobody outside the model
  // can make one, and none is used twice.
  enum class Identity : std::uint64_t {};
  struct Assertion {
    Identity request;
    QLAssertionRef handle;
  };
  struct AnswerContext;

  explicit OrvoModel(const Platform& platform);

  Identity freshIdentity() { return static_cast<Identity>(++lastIdentity_); }
  // A task that takes the step if the model is still there.
  template <typename Step>
  MainQueue::Task weakly(Step step) {
    return [model = weak_from_this(), step] {
      if (const auto self = model.lock()) std::invoke(step, *self);
    };
  }
  std::set<std::string> runningBundles() const;

  // Lifecycle.
  void registerShortcut();
  void followShortcut();
  void observeSystem();
  void stopObserving();
  void observe(NotificationCenter& center, Notification name, void (OrvoModel::*handler)());
  void applicationLaunched();
  void applicationTerminated();
  void systemWillSleep();
  void systemDidWake();
  void menuBarHostTerminated();
  void menuBarLayoutChanged();
  void concealersChanged();
  void screensChanged();
  void poll();
  bool followTrust();
  void invalidateSystemGeometry();
  void updateSystemClickProtection();

  // Hiding.
  bool readyToHide();
  // Where icons are hidden and what there is to hide has changed: asks for it, once a control is known again.
  void hideAnew();
  void requestHiding(const std::set<std::string>& allowedBundles);
  QLAssertionRef createAssertion(const std::set<std::string>& allowedBundles, Identity request);
  void answered(Identity request, const std::optional<std::string>& failure);
  void confirmed(Identity request);
  void timedOut(Identity request);
  void failed(const std::string& why);
  void releaseAssertions(std::optional<Identity> except);

  // Icon list.
  // False when no scan may start now.
  bool beginScan();
  void apply(const MenuBarSnapshot& snapshot);
  void expectGuard();
  std::vector<DiscoveredApp> merged(const std::vector<DiscoveredApp>& found) const;
  // What another copy of Orvo has stored since this one last looked.
  std::optional<OrvoPreferences> preferencesFromElsewhere();
  void followPreferences();
  void publishPreferences(OrvoPreferences value);
  void storePreferences(OrvoPreferences value);
  void savePreferences();
  void tellStorageFailure();

  // Permissions.
  static bool isInApplicationsFolder(const Bundle& bundle, const FileSystem& fileSystem);
  bool isLoginItemEnabled() const;
  void settingsNotOpened();

  const Platform platform_;
  std::uint64_t lastIdentity_ = 0;
  // In the order in which they were obtained.
  std::vector<Assertion> assertions_;
  // The latest hide request or reveal; an answer or time-out that carries another is stale.
  Identity generation_ = freshIdentity();
  // The scan epoch; a scan that began in another is stale.
  Identity scanGeneration_ = freshIdentity();
  MainQueue::Handle watchdog_ = MainQueue::Handle::none;
  MainQueue::Handle rehideTask_ = MainQueue::Handle::none;
  MainQueue::Handle permissionTimer_ = MainQueue::Handle::none;
  MainQueue::Handle rescan_ = MainQueue::Handle::none;
  // Since when no control is known where there should be one; on the queue's clock.
  std::optional<MainQueue::Duration> unguardedSince_;
  // Until scans have found none for long, which reveals; the first may come before the panel.
  bool expectsControls_ = true;
  // While hidden: what there is to hide has changed meanwhile.
  bool hidesOnceGuarded_ = false;
  std::vector<std::pair<NotificationCenter*, NotificationCenter::Token>> observers_;
  std::unique_ptr<GlobalShortcut> shortcut_;
  // On the queue's clock; absent before a scan was applied.
  std::optional<MainQueue::Duration> lastScan_;
  // As last read or written; absent when there is none.
  std::optional<std::string> storedPreferences_;
  bool storageFailureTold_ = false;
  bool stopped_ = false;
  IconScanner scanner_;
  std::shared_ptr<SystemControlRelay> systemRelay_;
};

}  // namespace orvo
