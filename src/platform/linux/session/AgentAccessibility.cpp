#include "platform/linux/session/AgentAccessibility.h"

#include "platform/linux/AgentProtocol.h"
#include "platform/linux/session/AgentTree.h"
#include "platform/linux/session/SessionBus.h"

#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <cstdio>
#include <memory>
#include <utility>

namespace orvo {

using session_bus::latin;

namespace {

constexpr const char* accessibilityService = "org.a11y.Bus";
constexpr const char* accessibilityPath = "/org/a11y/bus";
constexpr const char* statusInterface = "org.a11y.Status";
constexpr const char* enabledProperty = "IsEnabled";
constexpr std::chrono::milliseconds patience{25000};
// Within it the agent answers whatever the panel does.
constexpr std::chrono::milliseconds treeLimit{200};

QDBusMessage statusCall(const char* method) {
  QDBusMessage message = session_bus::call(latin(accessibilityService), latin(accessibilityPath),
                                           session_bus::propertiesInterface, method);
  message << latin(statusInterface) << latin(enabledProperty);
  return message;
}

}  // namespace

AgentAccessibility::AgentAccessibility(QDBusConnection bus) : bus_(std::move(bus)) {
  watch();
  const QDBusMessage reply = bus_.call(statusCall("Get"), QDBus::Block, static_cast<int>(firstReadingLimit.count()));
  if (take(reply)) return;
  std::fprintf(stderr, "Orvo: the accessibility bus does not answer: %s\n", qPrintable(reply.errorMessage()));
}

bool AgentAccessibility::isProcessTrusted(bool prompt) {
  const bool trusted = trusted_;
  if (prompt && !trusted) switchOn();
  return trusted;
}

AccessibilityElementRef AgentAccessibility::applicationElement(std::int32_t processIdentifier) {
  const auto note = [this](const std::vector<AgentTree::Element>& elements) {
    places_.note(AgentTree::controls(elements));
  };
  return rootElement(std::make_shared<AgentTree>(agent_, processIdentifier, note));
}

std::optional<std::vector<ControlPlace>> AgentAccessibility::controlsNow() const {
  const auto elements = AgentTree::ask(*agent_, treeLimit);
  if (elements.empty() || elements.front().identifier == agent_protocol::outOfDate) return std::nullopt;
  return AgentTree::controls(elements);
}

void AgentAccessibility::watch() {
  const QString service = latin(accessibilityService);
  bus_.connect(service, latin(accessibilityPath), latin(session_bus::propertiesInterface),
               QStringLiteral("PropertiesChanged"), this, SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
  auto* watcher = new QDBusServiceWatcher(service, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
  connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& newOwner) {
            trusted_ = false;
            if (!newOwner.isEmpty()) read();
          });
}

void AgentAccessibility::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                           const QStringList& invalidated) {
  if (interface != latin(statusInterface)) return;
  const auto enabled = changed.find(latin(enabledProperty));
  if (enabled != changed.end()) trusted_ = enabled->toBool();
  if (invalidated.contains(latin(enabledProperty))) read();
}

void AgentAccessibility::read() {
  session_bus::ask(bus_, statusCall("Get"), patience, this, [this](const QDBusMessage& reply) { take(reply); });
}

bool AgentAccessibility::take(const QDBusMessage& reply) {
  const bool answered = reply.type() == QDBusMessage::ReplyMessage && reply.signature() == QLatin1String("v");
  trusted_ = answered && reply.arguments().constFirst().value<QDBusVariant>().variant().toBool();
  return answered;
}

void AgentAccessibility::switchOn() {
  QDBusMessage message = statusCall("Set");
  message << QVariant::fromValue(QDBusVariant(true));
  session_bus::ask(bus_, message, patience, this, [](const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ErrorMessage) return;
    std::fprintf(stderr, "Orvo: accessibility could not be switched on: %s\n", qPrintable(reply.errorMessage()));
  });
}

}  // namespace orvo
