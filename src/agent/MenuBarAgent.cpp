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

// Far more than can run at once.
constexpr int mostBundles = 10'000;

}  // namespace

MenuBarAgent::MenuBarAgent(QDBusConnection bus, MenuBarService& service, StatusNotifierWatcher& watcher,
                           PanelReader& panel)
    : bus_(std::move(bus)), service_(service), watcher_(watcher), panel_(panel) {
  registerAgentTypes();
  connect(&service_, &MenuBarService::itemArrived, this, &MenuBarAgent::ItemAdded);
  connect(&watcher_, &StatusNotifierWatcher::nameHeld, this, &MenuBarAgent::announceHeld);
  // Icons that go move what stands beside them, and only while some are gone does it matter where that is.
  connect(&service_, &MenuBarService::changed, this, [this] { panel_.watch(service_.menuBar().isConcealing()); });
  connect(&panel_, &PanelReader::looked, this, [this](const std::vector<DockControls>& docks) {
    const bool isNew = std::exchange(seen_, docks) != docks;
    if (isNew || docks != told_) Q_EMIT TreeChanged();
  });
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
  if (allowedBundleIdentifiers.size() > mostBundles) {
    sendErrorReply(QDBusError::LimitsExceeded, QStringLiteral("Too many applications."));
    return 0;
  }
  setDelayedReply(true);
  service_.activate(message().service(), allowedBundleIdentifiers, [bus = bus_, call = message()](std::uint32_t id) {
    bus.send(id != 0 ? call.createReply(QVariant::fromValue(id))
                     : call.createErrorReply(QDBusError::LimitsExceeded, QStringLiteral("Too many requests.")));
  });
  return 0;
}

void MenuBarAgent::Invalidate(uint assertion) {
  if (!service_.invalidate(assertion, message().service()))
    sendErrorReply(QDBusError::AccessDenied, QStringLiteral("The connection holds no such assertion."));
}

QList<TreeElement> MenuBarAgent::Tree() {
  setDelayedReply(true);
  panel_.read([this, call = message()](const PanelReader::Reading& panel) {
    told_ = panel.docks;
    bus_.send(call.createReply(QVariant::fromValue(tree(panel))));
  });
  return {};
}

// Controls come first: whoever looks at so many elements and no more finds them all.
QList<TreeElement> MenuBarAgent::tree(const PanelReader::Reading& panel) const {
  const std::int32_t host = ::getpid();
  QList<TreeElement> elements{{-1, host, panel.isFresh ? "" : agent_protocol::outOfDate, false, {}}};
  for (const DockControls& dock : panel.docks) {
    const auto parent = static_cast<std::int32_t>(elements.size());
    elements.append({0, host, {}, true, dock.frame});
    for (const StatusControl& control : dock.controls) {
      const QString identifier = agent_protocol::controlPrefix + QString::fromStdString(control.name);
      const auto whole = static_cast<std::int32_t>(elements.size());
      elements.append({parent, host, identifier, true, control.frame});
      const auto cut = pieces(control.frame);
      if (cut.size() < 2) continue;
      for (const Rect& piece : cut) elements.append({whole, host, identifier, true, piece});
    }
  }
  for (const TrayItem& item : service_.menuBar().shownItems())
    elements.append({0, item.processIdentifier, {}, false, {}});
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
