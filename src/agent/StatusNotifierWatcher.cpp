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
    if (name == watcherName) takeName();
  });
  const QDBusConnectionInterface::RegisterServiceReply answer = bus_.interface()->registerService(
      watcherName, QDBusConnectionInterface::QueueService, QDBusConnectionInterface::DontAllowReplacement);
  if (answer == QDBusConnectionInterface::ServiceNotRegistered) return false;
  if (answer == QDBusConnectionInterface::ServiceRegistered) takeName();
  if (!held_) std::fprintf(stderr, "orvo-agent: another program holds %s; waiting for it\n", watcherName);
  return true;
}

// Nobody can take the name away again: it allows no replacement.
void StatusNotifierWatcher::takeName() {
  if (std::exchange(held_, true)) return;
  std::fprintf(stderr, "orvo-agent: holds %s\n", watcherName);
  Q_EMIT nameHeld();
}

QStringList StatusNotifierWatcher::toldItems() const {
  QStringList addresses;
  for (const std::string& address : service_.toldItems()) addresses.append(QString::fromStdString(address));
  service_.toldItemsRead();
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
