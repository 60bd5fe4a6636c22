#include "platform/linux/desktop/BusApplication.h"

#include "platform/linux/Program.h"
#include "platform/linux/bus/SessionBus.h"

#include <QCoreApplication>

#include <string>
#include <utility>

namespace orvo {

namespace {

// An owner that is ending leaves the name free a moment later.
constexpr int attempts = 3;

}  // namespace

BusApplication::BusApplication(QDBusConnection bus, const std::string& identifier, std::function<void()> reopen)
    : bus_(std::move(bus)),
      name_(QString::fromStdString(identifier)),
      path_(session_bus::applicationPath(name_)),
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
  Outcome outcome = Outcome::refused;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    acquired_ = bus_.registerService(name_);
    if (acquired_) return Outcome::acquired;
    if (isOwnedByOther()) break;
    const QString error = session_bus::activateApplication(bus_, name_, {});
    if (error.isEmpty()) outcome = Outcome::handedOver;
    if (!session_bus::meansNoOwner(error)) break;
  }
  bus_.unregisterObject(path_);
  return outcome;
}

// A copy runs a program of the same name, wherever that lies by now. One that has ended by now runs none.
bool BusApplication::isOwnedByOther() const {
  const auto owner = session_bus::processOf(bus_, name_);
  const std::string program = owner ? executableOf(*owner) : "";
  const std::string own = executableOf(static_cast<std::int32_t>(QCoreApplication::applicationPid()));
  return !program.empty() && baseName(program) != baseName(own);
}

void BusApplication::Activate(const QVariantMap& /*platformData*/) { reopen_(); }

// Orvo opens no documents; whoever opens it with some wants the program.
void BusApplication::Open(const QStringList& /*uris*/, const QVariantMap& /*platformData*/) { reopen_(); }

void BusApplication::ActivateAction(const QString& /*name*/, const QVariantList& /*parameter*/,
                                    const QVariantMap& /*platformData*/) {}

}  // namespace orvo
