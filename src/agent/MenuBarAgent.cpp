#include "agent/MenuBarAgent.h"

#include <unistd.h>

#include <cstdint>
#include <utility>

#include <QDBusError>
#include <QDBusMessage>
#include <QVariantMap>

#include "agent/MenuBarService.h"
#include "agent/PanelReader.h"
#include "agent/StatusNotifierWatcher.h"
#include "platform/linux/AgentProtocol.h"

namespace orvo {

namespace {

constexpr const char* controlIdentifierPrefix = "com.apple.menuextra.";

}  // namespace

MenuBarAgent::MenuBarAgent(QDBusConnection bus, MenuBarService& service, StatusNotifierWatcher& watcher,
                           PanelReader& panel)
    : bus_(std::move(bus)), service_(service), watcher_(watcher), panel_(panel) {
  registerAgentTypes();
  connect(&service_, &MenuBarService::itemArrived, this, &MenuBarAgent::ItemAdded);
  connect(&watcher_, &StatusNotifierWatcher::nameHeld, this, &MenuBarAgent::announceHeld);
  bus_.registerObject(agent_protocol::path, this, QDBusConnection::ExportScriptableContents);
}

bool MenuBarAgent::claimName() { return bus_.registerService(agent_protocol::service); }

bool MenuBarAgent::isWatcherHeld() const { return watcher_.isNameHeld(); }

// Which system items a request allows makes no difference here: the panel's own controls always stay.
uint MenuBarAgent::Activate(const QList<int>& /*allowedSystemItems*/, const QStringList& allowedBundleIdentifiers) {
  if (!isWatcherHeld()) {
    sendErrorReply(agent_protocol::watcherNotHeldError, QStringLiteral("Another program watches over the tray."));
    return 0;
  }
  setDelayedReply(true);
  service_.activate(message().service(), allowedBundleIdentifiers, [bus = bus_, call = message()](std::uint32_t id) {
    bus.send(call.createReply(QVariant::fromValue(id)));
  });
  return 0;
}

void MenuBarAgent::Invalidate(uint assertion) {
  if (!service_.invalidate(assertion, message().service()))
    sendErrorReply(QDBusError::AccessDenied, QStringLiteral("The connection holds no such assertion."));
}

QList<TreeElement> MenuBarAgent::Tree() {
  setDelayedReply(true);
  panel_.read([this, call = message()](const std::vector<StatusControl>& controls) {
    bus_.send(call.createReply(QVariant::fromValue(tree(controls))));
  });
  return {};
}

QList<TreeElement> MenuBarAgent::tree(const std::vector<StatusControl>& controls) const {
  const std::int32_t host = ::getpid();
  QList<TreeElement> elements{{-1, host, {}, false, {}}};
  for (const TrayItem& item : service_.menuBar().shownItems())
    elements.append({0, item.processIdentifier, {}, false, {}});
  for (const StatusControl& control : controls)
    elements.append({0, host, controlIdentifierPrefix + QString::fromStdString(control.word), true, control.frame});
  return elements;
}

QList<ItemRecord> MenuBarAgent::Items() const {
  QList<ItemRecord> records;
  for (const TrayItem& item : service_.menuBar().items())
    records.append({QString::fromStdString(item.address()), static_cast<std::uint32_t>(item.processIdentifier),
                    QString::fromStdString(item.bundle)});
  return records;
}

void MenuBarAgent::announceHeld() {
  auto signal = QDBusMessage::createSignal(agent_protocol::path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                           QStringLiteral("PropertiesChanged"));
  signal << agent_protocol::interface << QVariantMap{{QStringLiteral("WatcherHeld"), true}} << QStringList();
  bus_.send(signal);
}

}  // namespace orvo
