#include "platform/linux/session/AgentAccessibility.h"

#include "platform/linux/AgentProtocol.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/session/AgentTree.h"

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
// Within it the agent answers whatever the panel does.
constexpr std::chrono::milliseconds treeLimit{200};

}  // namespace

AgentAccessibility::AgentAccessibility(const QDBusConnection& bus)
    : bus_(bus), enabled_(bus, {accessibilityService, accessibilityPath, statusInterface, enabledProperty}) {
  enabled_.follow();
  // Who is slow now has more time for the next answer.
  if (!enabled_.take(enabled_.ask(firstReadingLimit))) enabled_.fetch();
}

bool AgentAccessibility::isProcessTrusted(bool prompt) {
  const bool trusted = enabled_.value();
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

void AgentAccessibility::switchOn() {
  QDBusMessage message =
      session_bus::call(latin(accessibilityService), latin(accessibilityPath), session_bus::propertiesInterface, "Set");
  message << latin(statusInterface) << latin(enabledProperty) << QVariant::fromValue(QDBusVariant(true));
  session_bus::ask(bus_, message, session_bus::patience, &enabled_, [](const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ErrorMessage) return;
    std::fprintf(stderr, "Orvo: accessibility could not be switched on: %s\n", qPrintable(reply.errorMessage()));
  });
}

}  // namespace orvo
