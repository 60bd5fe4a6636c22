// The desktop's running applications and what it can open. A process counts as a running application
// from its first tray item or window until it exits; the agent and this process count as well. Owned
// by main.cpp; main thread, but for the two readers that Workspace allows everywhere.
#pragma once

#include "platform/Workspace.h"
#include "platform/linux/display/ClientWindows.h"
#include "platform/linux/session/ApplicationIdentities.h"
#include "platform/linux/session/ApplicationRegistry.h"
#include "platform/linux/session/TrayOwners.h"

#include <QDBusConnection>
#include <QObject>

#include <map>
#include <optional>
#include <string>

namespace orvo {

class DesktopWorkspace : public QObject, public Workspace {
  Q_OBJECT

 public:
  // `ownBundleIdentifier` is absent outside any bundle.
  DesktopWorkspace(ApplicationIdentities& identities, const std::optional<std::string>& ownBundleIdentifier,
                   const QDBusConnection& bus = QDBusConnection::sessionBus());

  std::vector<RunningApplication> runningApplications() const override;
  std::optional<RunningApplication> runningApplication(std::int32_t processIdentifier) const override;
  std::vector<RunningApplication> runningApplications(const std::string& bundleIdentifier) const override;
  std::optional<std::string> applicationPath(const std::string& bundleIdentifier) const override;
  void openURL(const std::string& url, std::function<void()> failed) override;

  std::vector<std::string> concealers() const override { return concealers_; }
  void endConcealments() override { trayOwners_.endOthers(); }
  bool areItemsManagedElsewhere() const override { return managedElsewhere_; }
  void takeOverItems(const TakenOver& done) override { trayOwners_.takeOver(done); }

  // The desktop is followed from the first call on: until then this process alone is known, and what
  // is found during that call, of files that are not slow, counts as launched long ago. Windows are followed where the
  // application object is there by then.
  NotificationCenter& notificationCenter() override;

 private:
  void follow();
  void setRequesters(const QList<quint32>& processes);
  void requesterKnown(quint32 process, const ApplicationIdentity& identity);
  void tellConcealers();
  void setManagedElsewhere(bool elsewhere);
  std::optional<RunningApplication> ownerOfBusName(const std::string& name) const;

  QDBusConnection bus_;
  NotificationCenter center_;
  std::map<quint32, std::string> requesters_;  // names by process, this one aside
  std::vector<std::string> concealers_;
  bool managedElsewhere_ = false;
  ApplicationIdentities& identities_;
  ApplicationRegistry registry_;
  TrayOwners trayOwners_;
  ClientWindows clientWindows_;
  bool following_ = false;
};

}  // namespace orvo
