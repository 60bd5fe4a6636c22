#include "platform/linux/desktop/BusApplication.h"

#include "platform/linux/bus/SessionBus.h"

#include <utility>

namespace orvo {

namespace {

// An owner that is ending leaves the name free a moment later.
constexpr int attempts = 3;

}  // namespace

BusApplication::BusApplication(QDBusConnection bus, const std::string& identifier, std::function<bool()> isCopyRunning,
                               std::function<void()> reopen)
    : bus_(std::move(bus)),
      name_(QString::fromStdString(identifier)),
      path_(session_bus::applicationPath(name_)),
      isCopyRunning_(std::move(isCopyRunning)),
      reopen_(std::move(reopen)) {
  bus_.connect(QString(), "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local", "Disconnected", this,
               SIGNAL(busLost()));
}

BusApplication::~BusApplication() {
  if (!acquired_) return;
  bus_.unregisterService(name_);
  bus_.unregisterObject(path_);
}

BusApplication::Outcome BusApplication::acquireOrHandOver() {
  if (!bus_.isConnected()) return Outcome::noBus;
  // The object first: a request may follow the name at once.
  bus_.registerObject(path_, this, QDBusConnection::ExportAllSlots);
  QString error = QStringLiteral("another program's");
  for (int attempt = 0; attempt < attempts; ++attempt) {
    acquired_ = bus_.registerService(name_);
    if (acquired_) return Outcome::acquired;
    if (!isCopyRunning_()) continue;
    error = session_bus::activateApplication(bus_, name_, {});
    if (!session_bus::meansNoOwner(error)) break;
  }
  bus_.unregisterObject(path_);
  return error.isEmpty() ? Outcome::handedOver : Outcome::refused;
}

void BusApplication::Activate(const QVariantMap& /*platformData*/) { reopen_(); }

// Orvo opens no documents; whoever opens it with some wants the program.
void BusApplication::Open(const QStringList& /*uris*/, const QVariantMap& /*platformData*/) { reopen_(); }

void BusApplication::ActivateAction(const QString& /*name*/, const QVariantList& /*parameter*/,
                                    const QVariantMap& /*platformData*/) {}

}  // namespace orvo
