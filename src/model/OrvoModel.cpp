#include "model/OrvoModel.h"

#include "app/GlobalShortcut.h"
#include "platform/Accessibility.h"
#include "platform/Application.h"
#include "platform/Bundle.h"
#include "platform/UserDefaults.h"
#include "platform/Words.h"
#include "platform/Workspace.h"

#include <utility>

namespace orvo {

namespace {

constexpr MainQueue::Duration pollInterval{3000};
constexpr MainQueue::Duration pollTolerance{500};
constexpr MainQueue::Duration rescanInterval{15000};

constexpr const char* fallbackBundle = "local.quillet.menubar";

}  // namespace

std::shared_ptr<OrvoModel> OrvoModel::make(const Platform& platform) {
  return std::shared_ptr<OrvoModel>(new OrvoModel(platform));
}

OrvoModel::OrvoModel(const Platform& platform)
    : accessibilityGranted(willChange, platform.accessibility.isProcessTrusted()),
      preferences(willChange, OrvoPreferences::decode(platform.userDefaults.data(preferencesKey))),
      backendAvailable(QLMenuBarBackendAvailable()),
      ownBundle(platform.bundle.identifier().value_or(fallbackBundle)),
      nativeMenuBarReady(isInApplicationsFolder(platform.bundle, platform.fileSystem)),
      platform_(platform),
      scanner_(platform.accessibility, platform.workspace, platform.localizedText, platform.scanExecutor,
               platform.mainQueue),
      systemRelay_(SystemControlRelay::make(platform.eventTaps, platform.mainQueue)) {
  launchAtLogin = isLoginItemEnabled();
  storedPreferences_ = platform_.userDefaults.data(preferencesKey);
}

// The assertions are owned and end with their owner; the rest would only find the model gone.
OrvoModel::~OrvoModel() {
  releaseAssertions(std::nullopt);
  stopObserving();
  for (const MainQueue::Handle handle : {watchdog_, rehideTask_, permissionTimer_, rescan_})
    platform_.mainQueue.cancel(handle);
}

void OrvoModel::start() {
  if (!nativeMenuBarReady) message = platform_.words.installMessage;
  systemRelay_->onReveal = weakly([](OrvoModel& self) {
    self.reveal(false);
    // The relay may have lost its tap.
    self.platform_.mainQueue.post(self.weakly(&OrvoModel::updateSystemClickProtection));
  });
  registerShortcut();
  permissionTimer_ = platform_.mainQueue.repeat(pollInterval, pollTolerance, weakly(&OrvoModel::poll));
  observeSystem();
  refreshLater();
}

void OrvoModel::registerShortcut() {
  shortcut_ = std::make_unique<GlobalShortcut>(platform_.hotKeys);
  // The queue outlives every press, the model need not.
  shortcut_->onPress = [&queue = platform_.mainQueue, toggle = weakly(&OrvoModel::toggle)] { queue.post(toggle); };
  shortcutAvailable = shortcut_->isRegistered();
}

void OrvoModel::followShortcut() {
  if (shortcut_->isRegistered() != shortcutAvailable()) shortcutAvailable = shortcut_->isRegistered();
}

void OrvoModel::toggle() {
  if (isConcealing()) {
    reveal(true);
  } else {
    hideSelected();
  }
}

void OrvoModel::observeSystem() {
  NotificationCenter& workspace = platform_.workspace.notificationCenter();
  observe(workspace, Notification::applicationLaunched, &OrvoModel::applicationLaunched);
  observe(workspace, Notification::applicationTerminated, &OrvoModel::applicationTerminated);
  observe(workspace, Notification::willSleep, &OrvoModel::systemWillSleep);
  observe(workspace, Notification::didWake, &OrvoModel::systemDidWake);
  observe(workspace, Notification::menuBarHostTerminated, &OrvoModel::menuBarHostTerminated);
  observe(workspace, Notification::menuBarLayoutChanged, &OrvoModel::menuBarLayoutChanged);
  observe(workspace, Notification::concealersChanged, &OrvoModel::concealersChanged);
  observe(platform_.application.notificationCenter(), Notification::screenParametersChanged,
          &OrvoModel::screensChanged);
}

// A notification is handled once its sender has returned; one that was still under way when the
// observers went is dropped.
void OrvoModel::observe(NotificationCenter& center, Notification name, void (OrvoModel::*handler)()) {
  const auto handle = weakly([handler](OrvoModel& self) {
    if (!self.stopped_) (self.*handler)();
  });
  const auto post = [&queue = platform_.mainQueue, handle](Notification) { queue.post(handle); };
  observers_.emplace_back(&center, center.addObserver(name, post));
}

void OrvoModel::stop() {
  stopped_ = true;
  reveal(false);
  scanGeneration_ = freshIdentity();
  for (const MainQueue::Handle handle : {permissionTimer_, rescan_}) platform_.mainQueue.cancel(handle);
  systemRelay_->stop();
  stopObserving();
}

void OrvoModel::stopObserving() {
  for (const auto& [center, token] : std::exchange(observers_, {})) center->removeObserver(token);
}

void OrvoModel::applicationLaunched() {
  if (state() != BarState::visible) {
    reveal(false);
    message = "A new app opened. Icons are shown so its menu bar item can load.";
  }
  refresh();
}

void OrvoModel::applicationTerminated() {
  refresh([this] { hideAnew(); });
}

void OrvoModel::systemWillSleep() {
  reveal(false);
  invalidateSystemGeometry();
}

void OrvoModel::systemDidWake() {
  invalidateSystemGeometry();
  refresh();
}

// Nobody answers for a request that its host took along.
void OrvoModel::menuBarHostTerminated() {
  if (state() == BarState::applying) failed("Could not hide icons: The menu bar agent is not running.");
  if (state() == BarState::hidden) failed("The menu bar agent ended. All icons are visible.");
  invalidateSystemGeometry();
  refresh();
}

// Until the new frames are there the old ones guard what they can; a scan that is under way began too soon.
void OrvoModel::menuBarLayoutChanged() {
  scanGeneration_ = freshIdentity();
  refresh();
}

void OrvoModel::concealersChanged() {
  concealers = platform_.workspace.concealers();
  itemsManagedElsewhere = platform_.workspace.areItemsManagedElsewhere();
  if (onStateChanged) onStateChanged();
  refresh();
}

void OrvoModel::screensChanged() {
  reveal(false);
  invalidateSystemGeometry();
  refresh();
}

void OrvoModel::poll() {
  const bool trusted = followTrust();
  if (trusted && !systemRelay_->isInstalled()) systemRelay_->install();
  updateSystemClickProtection();
  launchAtLogin = isLoginItemEnabled();
  followShortcut();
  followPreferences();
  const bool scanIsOld = !lastScan_ || platform_.mainQueue.now() - *lastScan_ > rescanInterval;
  if (trusted && state() == BarState::visible && scanIsOld) refreshLater();
}

bool OrvoModel::followTrust() {
  const bool trusted = platform_.accessibility.isProcessTrusted();
  if (trusted == accessibilityGranted()) return trusted;
  accessibilityGranted = trusted;
  invalidateSystemGeometry();
  if (trusted) {
    refreshLater();
  } else {
    reveal(false);
  }
  return trusted;
}

void OrvoModel::refreshLater() {
  platform_.mainQueue.post(weakly([](OrvoModel& self) { self.refresh(); }));
}

void OrvoModel::invalidateSystemGeometry() {
  scanGeneration_ = freshIdentity();
  unguardedSince_.reset();
  systemRelay_->setSystemFrames({});
  systemClickProtection = false;
}

void OrvoModel::updateSystemClickProtection() {
  systemClickProtection = systemRelay_->isInstalled() && !systemRelay_->systemFrames().empty();
}

std::set<std::string> OrvoModel::runningBundles() const {
  std::set<std::string> bundles;
  for (const RunningApplication& application : platform_.workspace.runningApplications()) {
    if (application.bundleIdentifier) bundles.insert(*application.bundleIdentifier);
  }
  return bundles;
}

}  // namespace orvo
