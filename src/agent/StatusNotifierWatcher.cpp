#include "agent/StatusNotifierWatcher.h"

#include <cstdio>
#include <utility>

#include <QDBusConnectionInterface>
#include <QDBusMessage>

#include "agent/MenuBarService.h"

namespace orvo {

StatusNotifierWatcher::StatusNotifierWatcher(QDBusConnection bus, MenuBarService& service)
    : bus_(std::move(bus)), service_(service) {
  connect(&service_, &MenuBarService::itemShown, this, &StatusNotifierWatcher::StatusNotifierItemRegistered);
  connect(&service_, &MenuBarService::itemHidden, this, &StatusNotifierWatcher::StatusNotifierItemUnregistered);
  bus_.registerObject(watcherPath, this, QDBusConnection::ExportScriptableContents);
}

bool StatusNotifierWatcher::claimName() {
  connect(bus_.interface(), &QDBusConnectionInterface::serviceRegistered, this, [this](const QString& name) {
    if (name == watcherName) setHeld(true);
  });
  connect(bus_.interface(), &QDBusConnectionInterface::serviceUnregistered, this, [this](const QString& name) {
    if (name == watcherName) setHeld(false);
  });
  const QDBusConnectionInterface::RegisterServiceReply answer = bus_.interface()->registerService(
      watcherName, QDBusConnectionInterface::QueueService, QDBusConnectionInterface::DontAllowReplacement);
  if (answer == QDBusConnectionInterface::ServiceNotRegistered) return false;
  if (answer == QDBusConnectionInterface::ServiceRegistered) setHeld(true);
  if (!held_) std::fprintf(stderr, "orvo-agent: another program holds %s; waiting for it\n", watcherName);
  return true;
}

void StatusNotifierWatcher::setHeld(bool held) {
  if (held == held_) return;
  held_ = held;
  std::fprintf(stderr, held ? "orvo-agent: holds %s\n" : "orvo-agent: lost %s; every icon is visible\n", watcherName);
  if (!held) service_.reset();
  Q_EMIT nameHeldChanged(held);
}

QStringList StatusNotifierWatcher::shownItems() const {
  QStringList addresses;
  for (const TrayItem& item : service_.menuBar().shownItems()) addresses.append(QString::fromStdString(item.address()));
  return addresses;
}

void StatusNotifierWatcher::RegisterStatusNotifierItem(const QString& service) {
  setDelayedReply(true);
  service_.registerItem(service, message().service(),
                        [bus = bus_, answer = message().createReply()] { bus.send(answer); });
}

// The announcement reaches items that came before the panel; who the panel is makes no difference to us.
void StatusNotifierWatcher::RegisterStatusNotifierHost(const QString& /*service*/) {
  Q_EMIT StatusNotifierHostRegistered();
}

}  // namespace orvo
