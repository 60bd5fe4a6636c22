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
      mainQueue_(platform.mainQueue),
      userDefaults_(platform.userDefaults),
      workspace_(platform.workspace),
      defaultCenter_(platform.application.notificationCenter()),
      accessibility_(platform.accessibility),
      hotKeys_(platform.hotKeys),
      loginItem_(platform.loginItem),
      localizedText_(platform.localizedText),
      words_(platform.words),
      scanner_(platform.accessibility, platform.workspace, platform.localizedText, platform.scanExecutor,
               platform.mainQueue),
      systemRelay_(SystemControlRelay::make(platform.eventTaps, platform.mainQueue)) {
  launchAtLogin = isLoginItemEnabled();
  storedPreferences_ = userDefaults_.data(preferencesKey);
}

// The assertions are owned and end with their owner; the rest would only find the model gone.
OrvoModel::~OrvoModel() {
  releaseAssertions(std::nullopt);
  stopObserving();
  for (const MainQueue::Handle handle : {watchdog_, rehideTask_, permissionTimer_, rescan_}) mainQueue_.cancel(handle);
}

void OrvoModel::start() {
  if (!nativeMenuBarReady) message = words_.installMessage;
  systemRelay_->onReveal = [model = weak_from_this()] {
    const auto self = model.lock();
    if (!self) return;
    self->reveal(false);
    self->mainQueue_.post(self->weakly(&OrvoModel::updateSystemClickProtection));  // the relay may have lost its tap
  };
  registerShortcut();
  permissionTimer_ = mainQueue_.repeat(pollInterval, pollTolerance, weakly(&OrvoModel::poll));
  observeSystem();
  refreshLater();
}

void OrvoModel::registerShortcut() {
  shortcut_ = std::make_unique<GlobalShortcut>(hotKeys_);
  // The queue outlives every press, the model need not.
  shortcut_->onPress = [&queue = mainQueue_, toggle = weakly(&OrvoModel::toggle)] { queue.post(toggle); };
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
  const std::pair<Notification, Step> handlers[]{
      {Notification::applicationLaunched, &OrvoModel::applicationLaunched},
      {Notification::applicationTerminated, &OrvoModel::applicationTerminated},
      {Notification::willSleep, &OrvoModel::systemWillSleep},
      {Notification::didWake, &OrvoModel::systemDidWake},
      {Notification::menuBarHostTerminated, &OrvoModel::menuBarHostTerminated},
      {Notification::menuBarLayoutChanged, &OrvoModel::menuBarLayoutChanged},
      {Notification::concealersChanged, &OrvoModel::concealersChanged},
  };
  for (const auto& [name, step] : handlers) {
    workspaceObservers_.push_back(observe(workspace_.notificationCenter(), name, step));
  }
  displayObserver_ = observe(defaultCenter_, Notification::screenParametersChanged, &OrvoModel::screensChanged);
}

// A notification is handled once its sender has returned; one that was still under way when the
// observers went is dropped.
NotificationCenter::Token OrvoModel::observe(NotificationCenter& center, Notification name, Step step) {
  const auto handle = [model = weak_from_this(), step] {
    const auto self = model.lock();
    if (self && !self->stopped_) (self.get()->*step)();
  };
  return center.addObserver(name, [&queue = mainQueue_, handle](Notification) { queue.post(handle); });
}

void OrvoModel::stop() {
  stopped_ = true;
  reveal(false);
  mainQueue_.cancel(permissionTimer_);
  systemRelay_->stop();
  stopObserving();
}

void OrvoModel::stopObserving() {
  for (const auto token : workspaceObservers_) workspace_.notificationCenter().removeObserver(token);
  workspaceObservers_.clear();
  defaultCenter_.removeObserver(displayObserver_);
  displayObserver_ = NotificationCenter::Token::none;
}

void OrvoModel::applicationLaunched() {
  if (state() != BarState::visible) {
    reveal(false);
    message = "A new app opened. Icons are shown so its menu bar item can load.";
  }
  refresh();
}

void OrvoModel::applicationTerminated() {
  refresh([this] {
    if (state() != BarState::hidden) return;
    hidesOnceGuarded_ = unguardedSince_.has_value();
    if (!hidesOnceGuarded_) hideSelected();
  });
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
  concealers = workspace_.concealers();
  itemsManagedElsewhere = workspace_.areItemsManagedElsewhere();
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
  const bool scanIsOld = !lastScan_ || mainQueue_.now() - *lastScan_ > rescanInterval;
  if (trusted && state() == BarState::visible && scanIsOld) refreshLater();
}

bool OrvoModel::followTrust() {
  const bool trusted = accessibility_.isProcessTrusted();
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
  mainQueue_.post([model = weak_from_this()] {
    if (const auto self = model.lock()) self->refresh();
  });
}

void OrvoModel::invalidateSystemGeometry() {
  scanGeneration_ = freshIdentity();
  systemRelay_->setSystemFrames({});
  systemClickProtection = false;
}

void OrvoModel::updateSystemClickProtection() {
  systemClickProtection = systemRelay_->isInstalled() && !systemRelay_->systemFrames().empty();
}

MainQueue::Task OrvoModel::weakly(Step step) {
  return [model = weak_from_this(), step] {
    if (const auto self = model.lock()) (self.get()->*step)();
  };
}

std::set<std::string> OrvoModel::runningBundles() const {
  std::set<std::string> bundles;
  for (const RunningApplication& application : workspace_.runningApplications()) {
    if (application.bundleIdentifier) bundles.insert(*application.bundleIdentifier);
  }
  return bundles;
}

}  // namespace orvo
