#include "platform/linux/session/DesktopWorkspace.h"

#include "platform/linux/AgentProtocol.h"
#include "platform/linux/BundleInfo.h"
#include "platform/linux/DesktopEntries.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/session/OpenUrl.h"

#include <QCoreApplication>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

namespace orvo {

namespace {

std::string requesterName(const ApplicationIdentity& identity) {
  const std::string name = identity.localizedName.value_or(identity.bundleIdentifier);
  return name.empty() ? "Another program" : name;
}

}  // namespace

DesktopWorkspace::DesktopWorkspace(ApplicationIdentities& identities,
                                   const std::optional<std::string>& ownBundleIdentifier, const QDBusConnection& bus)
    : bus_(bus),
      identities_(identities),
      registry_(identities),
      trayOwners_(bus, {[this](std::int32_t process) { registry_.add(process, agent_protocol::hostBundleIdentifier); },
                        [this] { center_.post(Notification::menuBarHostTerminated); },
                        [this] { center_.post(Notification::menuBarLayoutChanged); },
                        [this](const QList<quint32>& processes) { setRequesters(processes); },
                        [this](bool managesItems) { setManagedElsewhere(!managesItems); },
                        [this](std::int32_t process, const std::string& bundle) { registry_.add(process, bundle); }}),
      clientWindows_([this](std::int32_t process) { return registry_.add(process); }) {
  identities_.onLate([this](std::int32_t process, const ApplicationIdentity& identity) {
    registry_.learn(process, identity);
    requesterKnown(static_cast<quint32>(process), identity);
  });
  registry_.add(static_cast<std::int32_t>(QCoreApplication::applicationPid()), ownBundleIdentifier.value_or(""));
}

std::vector<RunningApplication> DesktopWorkspace::runningApplications() const { return registry_.applications(); }

std::optional<RunningApplication> DesktopWorkspace::runningApplication(std::int32_t processIdentifier) const {
  return registry_.application(processIdentifier);
}

std::vector<RunningApplication> DesktopWorkspace::runningApplications(const std::string& bundleIdentifier) const {
  std::vector<RunningApplication> found;
  const auto owner = ownerOfBusName(bundleIdentifier);
  if (owner) found.push_back(*owner);
  for (const RunningApplication& known : registry_.applications()) {
    const bool listed = owner && owner->processIdentifier == known.processIdentifier;
    if (known.bundleIdentifier == bundleIdentifier && !listed) found.push_back(known);
  }
  return found;
}

// A running copy of a bundle owns its identifier on the bus; another program that has the name is none.
std::optional<RunningApplication> DesktopWorkspace::ownerOfBusName(const std::string& name) const {
  const auto process = session_bus::processOf(bus_, QString::fromStdString(name));
  const auto owner = process ? identities_.findNow(*process) : ApplicationIdentity();
  if (!process || owner.bundleIdentifier != name) return std::nullopt;
  return RunningApplication{name, *process, owner.localizedName, owner.bundlePath};
}

std::optional<std::string> DesktopWorkspace::applicationPath(const std::string& bundleIdentifier) const {
  DesktopEntries entries(DesktopEntries::standardFolders());
  entries.refresh();
  const DesktopEntry* entry = entries.withIdentifier(bundleIdentifier);
  if (entry == nullptr || entry->program.empty()) return std::nullopt;
  const QString program = QStandardPaths::findExecutable(QString::fromStdString(entry->program));
  if (program.isEmpty()) return std::nullopt;
  return bundlePathOfExecutable(program.toStdString());
}

void DesktopWorkspace::openURL(const std::string& url, std::function<void()> failed) { openUrl(bus_, url, failed); }

NotificationCenter& DesktopWorkspace::notificationCenter() {
  if (!std::exchange(following_, true)) follow();
  return center_;
}

// Each is looked at once: they may come and go all the time.
void DesktopWorkspace::setRequesters(const QList<quint32>& processes) {
  std::erase_if(requesters_, [&](const auto& known) { return !processes.contains(known.first); });
  for (const quint32 process : processes) {
    if (process == QCoreApplication::applicationPid() || requesters_.contains(process)) continue;
    requesters_[process] = requesterName({});
    identities_.find(static_cast<std::int32_t>(process),
                     [=, this](const ApplicationIdentity& identity) { requesterKnown(process, identity); });
  }
  tellConcealers();
}

void DesktopWorkspace::requesterKnown(quint32 process, const ApplicationIdentity& identity) {
  if (!requesters_.contains(process)) return;
  requesters_[process] = requesterName(identity);
  tellConcealers();
}

void DesktopWorkspace::tellConcealers() {
  const std::vector<std::string> before = std::exchange(concealers_, {});
  for (const auto& [process, name] : requesters_) concealers_.push_back(name);
  if (concealers_ != before) center_.post(Notification::concealersChanged);
}

void DesktopWorkspace::setManagedElsewhere(bool elsewhere) {
  if (std::exchange(managedElsewhere_, elsewhere) != elsewhere) center_.post(Notification::concealersChanged);
}

void DesktopWorkspace::follow() {
  identities_.begin();
  trayOwners_.begin();
  clientWindows_.begin();
  connect(&registry_, &ApplicationRegistry::changed, this, [this](Notification what) { center_.post(what); });
}

}  // namespace orvo
