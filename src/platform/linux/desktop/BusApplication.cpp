#include "platform/linux/desktop/BusApplication.h"

#include "platform/linux/Program.h"
#include "platform/linux/bus/SessionBus.h"

#include <QCoreApplication>

#include <chrono>
#include <string>

#include <utility>

namespace orvo {

namespace {

// An owner that is ending leaves the name free a moment later.
constexpr int attempts = 3;

// The bus itself answers.
constexpr std::chrono::milliseconds ownerLimit{1000};

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
  QString error = QStringLiteral("another program's");
  for (int attempt = 0; attempt < attempts; ++attempt) {
    acquired_ = bus_.registerService(name_);
    if (acquired_) return Outcome::acquired;
    if (isOwnedByOther()) break;
    error = session_bus::activateApplication(bus_, name_, {});
    if (!session_bus::meansNoOwner(error)) break;
  }
  bus_.unregisterObject(path_);
  return error.isEmpty() ? Outcome::handedOver : Outcome::refused;
}

// A copy runs a program of the same name, wherever that lies by now. One that has ended by now runs none.
bool BusApplication::isOwnedByOther() const {
  const auto program = [](qint64 process) {
    return std::string(baseName(executableOf("/proc/" + std::to_string(process))));
  };
  const auto owner = session_bus::processAnswer(
      bus_.call(session_bus::processQuestion(name_), QDBus::Block, static_cast<int>(ownerLimit.count())));
  const std::string owners = owner ? program(*owner) : "";
  return !owners.empty() && owners != program(QCoreApplication::applicationPid());
}

void BusApplication::Activate(const QVariantMap& /*platformData*/) { reopen_(); }

// Orvo opens no documents; whoever opens it with some wants the program.
void BusApplication::Open(const QStringList& /*uris*/, const QVariantMap& /*platformData*/) { reopen_(); }

void BusApplication::ActivateAction(const QString& /*name*/, const QVariantList& /*parameter*/,
                                    const QVariantMap& /*platformData*/) {}

}  // namespace orvo
