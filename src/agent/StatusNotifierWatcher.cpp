#include "agent/StatusNotifierWatcher.h"

#include <chrono>
#include <cstdio>
#include <utility>

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QTimer>
#include <QVariantMap>

#include "agent/MenuBarService.h"
#include "agent/TrayHeir.h"

namespace orvo {

namespace {

// An Ayatana program that has its answer before a panel is there makes an icon of the older kind besides.
constexpr std::chrono::seconds unrest{2};
constexpr std::chrono::milliseconds answerPause{300};

}  // namespace

StatusNotifierWatcher::StatusNotifierWatcher(QDBusConnection bus, MenuBarService& service)
    : bus_(std::move(bus)), service_(service) {
  connect(&service_, &MenuBarService::itemShown, this, &StatusNotifierWatcher::StatusNotifierItemRegistered);
  connect(&service_, &MenuBarService::itemHidden, this, &StatusNotifierWatcher::StatusNotifierItemUnregistered);
  bus_.registerObject(watcherPath, this, QDBusConnection::ExportScriptableContents);
}

StatusNotifierWatcher::~StatusNotifierWatcher() = default;

bool StatusNotifierWatcher::claimName() {
  connect(bus_.interface(), &QDBusConnectionInterface::serviceRegistered, this, [this](const QString& name) {
    if (name == watcherName) takeName();
  });
  const QDBusConnectionInterface::RegisterServiceReply answer = bus_.interface()->registerService(
      watcherName, QDBusConnectionInterface::QueueService, QDBusConnectionInterface::DontAllowReplacement);
  if (answer == QDBusConnectionInterface::ServiceNotRegistered) return false;
  if (answer == QDBusConnectionInterface::ServiceRegistered) takeName();
  if (held_) return true;
  std::fprintf(stderr, "orvo-agent: another program holds %s; waiting for it\n", watcherName);
  heir_ = std::make_unique<TrayHeir>(bus_);
  return true;
}

// Nobody can take the name away again: it allows no replacement.
void StatusNotifierWatcher::takeName() {
  if (std::exchange(held_, true)) return;
  std::fprintf(stderr, "orvo-agent: holds %s\n", watcherName);
  Q_EMIT nameHeld();
  if (heir_) inherit();
}

void StatusNotifierWatcher::inherit() {
  unrest_.setRemainingTime(unrest);
  for (const QString& item : heir_->items().mid(0, ItemRegistry::most)) service_.registerItem(item, {}, [] {});
  heir_.release()->deleteLater();
}

QStringList StatusNotifierWatcher::toldItems() const {
  QStringList addresses;
  for (const std::string& address : service_.toldItems()) addresses.append(QString::fromStdString(address));
  service_.toldItemsRead();
  return addresses;
}

void StatusNotifierWatcher::announceList() {
  auto signal = QDBusMessage::createSignal(watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                           QStringLiteral("PropertiesChanged"));
  signal << watcherName << QVariantMap{{QStringLiteral("RegisteredStatusNotifierItems"), toldItems()}} << QStringList();
  bus_.send(signal);
}

void StatusNotifierWatcher::RegisterStatusNotifierItem(const QString& service) {
  setDelayedReply(true);
  const auto pause = unrest_.hasExpired() ? std::chrono::milliseconds(0) : answerPause;
  service_.registerItem(service, message().service(), [this, pause, answer = message().createReply()] {
    if (pause.count() == 0) return void(bus_.send(answer));
    QTimer::singleShot(pause, this, [this, answer] { bus_.send(answer); });
  });
}

// The announcement reaches items that came before the panel; who the panel is makes no difference to us.
void StatusNotifierWatcher::RegisterStatusNotifierHost(const QString& /*service*/) {
  Q_EMIT StatusNotifierHostRegistered();
}

}  // namespace orvo
