// The icon list, the rules, and their storage.
#include "model/OrvoModel.h"

#include "core/VisibilityPlan.h"
#include "platform/Accessibility.h"
#include "platform/LocalizedText.h"
#include "platform/UserDefaults.h"

#include <algorithm>
#include <utility>

namespace orvo {

namespace {

constexpr MainQueue::Duration rescanPause{400};
// A panel that is restarted has its clock by then.
constexpr MainQueue::Duration guardPatience{2000};

// What `changed` made of `base`, done to `current`.
OrvoPreferences rebased(const OrvoPreferences& base, const OrvoPreferences& changed, OrvoPreferences current) {
  for (const auto& [bundle, rule] : changed.rules) {
    const auto former = base.rules.find(bundle);
    if (former == base.rules.end() || former->second != rule) current.rules[bundle] = rule;
  }
  std::erase_if(current.rules, [&](const auto& entry) {
    return base.rules.contains(entry.first) && !changed.rules.contains(entry.first);
  });
  if (changed.autoRehideSeconds != base.autoRehideSeconds) current.autoRehideSeconds = changed.autoRehideSeconds;
  return current;
}

}  // namespace

void OrvoModel::refresh(std::function<void()> done) {
  if (!beginScan()) {
    if (done) done();
    return;
  }
  // Held weakly: a scan may still run when the services that the model needs to its end are going.
  scanner_.scan(
      [model = weak_from_this(), epoch = scanGeneration_, done = std::move(done)](const MenuBarSnapshot& snapshot) {
        const auto self = model.lock();
        if (!self) return;
        if (self->scanGeneration_ != epoch) {
          self->isScanning = false;
          self->refresh(done);
          return;
        }
        self->apply(snapshot);
        if (done) done();
      });
}

bool OrvoModel::beginScan() {
  if (isScanning() || stopped_) return false;
  accessibilityGranted = platform_.accessibility.isProcessTrusted();
  if (!accessibilityGranted()) {
    reveal(false);
    invalidateSystemGeometry();
    return false;
  }
  isScanning = true;
  if (!systemRelay_->isInstalled()) systemRelay_->install();
  updateSystemClickProtection();
  return true;
}

void OrvoModel::apply(const MenuBarSnapshot& snapshot) {
  systemRelay_->setSystemFrames(snapshot.systemFrames);
  updateSystemClickProtection();
  apps = merged(snapshot.apps);
  isScanning = false;
  lastScan_ = platform_.mainQueue.now();
  expectGuard();
}

// A panel that is starting, or an agent that is slow, shows no control for a moment. Beyond that, icons stay
// hidden only where every click on a clock would bring them back.
void OrvoModel::expectGuard() {
  platform_.mainQueue.cancel(rescan_);
  if (!systemRelay_->systemFrames().empty()) {
    expectsControls_ = true;
    unguardedSince_.reset();
    if (std::exchange(hidesOnceGuarded_, false)) hideAnew();
    return;
  }
  if (!expectsControls_) return;
  if (!unguardedSince_) unguardedSince_ = platform_.mainQueue.now();
  if (platform_.mainQueue.now() - *unguardedSince_ < guardPatience) {
    rescan_ = platform_.mainQueue.runAfter(rescanPause, weakly(&OrvoModel::refreshLater));
    return;
  }
  unguardedSince_.reset();
  expectsControls_ = hidesOnceGuarded_ = false;
  if (state() != BarState::visible) failed("The system controls could not be found. All icons are visible.");
}

// While icons are concealed a scan misses their owners, so those that still run are carried over.
std::vector<DiscoveredApp> OrvoModel::merged(const std::vector<DiscoveredApp>& found) const {
  std::map<std::string, DiscoveredApp> byBundle;
  for (const DiscoveredApp& app : found) byBundle.emplace(app.id(), app);
  if (isConcealing()) {
    const std::set<std::string> running = runningBundles();
    for (const DiscoveredApp& app : apps()) {
      if (running.contains(app.bundleID)) byBundle.emplace(app.id(), app);
    }
  }
  std::vector<DiscoveredApp> list;
  for (auto& [bundle, app] : byBundle) {
    if (bundle != ownBundle && !VisibilityPlan::protectedBundles().contains(bundle)) list.push_back(std::move(app));
  }
  std::stable_sort(list.begin(), list.end(), [&](const DiscoveredApp& left, const DiscoveredApp& right) {
    return platform_.localizedText.standardCompare(left.name, right.name) < 0;
  });
  return list;
}

std::vector<DiscoveredApp> OrvoModel::filteredApps() const {
  if (searchText().empty()) return apps();
  std::vector<DiscoveredApp> found;
  std::copy_if(apps().begin(), apps().end(), std::back_inserter(found), [&](const DiscoveredApp& app) {
    return platform_.localizedText.caseInsensitiveContains(app.name, searchText()) ||
           platform_.localizedText.caseInsensitiveContains(app.bundleID, searchText());
  });
  return found;
}

std::size_t OrvoModel::selectedCount() const {
  const auto& rules = preferences().rules;
  return static_cast<std::size_t>(std::count_if(apps().begin(), apps().end(), [&](const DiscoveredApp& app) {
    const auto rule = rules.find(app.bundleID);
    return rule != rules.end() && rule->second == IconRule::hidden;
  }));
}

void OrvoModel::setRule(IconRule rule, const std::string& bundleID) {
  OrvoPreferences changed = preferences();
  changed.rules[bundleID] = rule;
  storePreferences(std::move(changed));
  hideAnew();
  tellStorageFailure();
}

void OrvoModel::setPreferences(OrvoPreferences value) {
  storePreferences(std::move(value));
  tellStorageFailure();
}

void OrvoModel::storePreferences(OrvoPreferences value) {
  if (const auto elsewhere = preferencesFromElsewhere()) value = rebased(preferences(), value, *elsewhere);
  publishPreferences(std::move(value));
  savePreferences();
}

void OrvoModel::publishPreferences(OrvoPreferences value) {
  const std::int64_t previousDelay = preferences().autoRehideSeconds;
  preferences = std::move(value);
  if (preferences().autoRehideSeconds != previousDelay) platform_.mainQueue.cancel(rehideTask_);
}

void OrvoModel::savePreferences() {
  const auto bytes = preferences().encode();
  if (!bytes) return;
  platform_.userDefaults.setData(preferencesKey, *bytes);
  storedPreferences_ = bytes;
}

// A hide request clears the message, so this comes after it.
void OrvoModel::tellStorageFailure() {
  const auto failure = platform_.userDefaults.storageFailure();
  if (failure && !storageFailureTold_) message = "Your choices could not be saved: " + *failure;
  storageFailureTold_ = failure.has_value();
}

std::optional<OrvoPreferences> OrvoModel::preferencesFromElsewhere() {
  auto bytes = platform_.userDefaults.data(preferencesKey);
  if (!bytes || bytes == storedPreferences_) return std::nullopt;
  storedPreferences_ = std::move(bytes);
  return OrvoPreferences::decode(storedPreferences_);
}

void OrvoModel::followPreferences() {
  const auto elsewhere = preferencesFromElsewhere();
  if (!elsewhere || *elsewhere == preferences()) return;
  const bool otherRules = elsewhere->rules != preferences().rules;
  publishPreferences(*elsewhere);
  if (otherRules) hideAnew();
}

}  // namespace orvo
