// Accessibility on a Linux desktop: trusted while the session has accessibility switched on, and the
// tree that the agent keeps of the menu bar. Owned by main.cpp; made and destroyed on the main thread,
// whose event loop keeps the trust current.
#pragma once

#include "platform/Accessibility.h"
#include "platform/linux/ControlPlaces.h"
#include "platform/linux/bus/FollowedProperty.h"
#include "platform/linux/session/AgentConnection.h"

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace orvo {

class AgentAccessibility final : public Accessibility {
 public:
  // How long the first reading may take, the start of the accessibility bus included.
  static constexpr std::chrono::milliseconds firstReadingLimit{1000};

  explicit AgentAccessibility(const QDBusConnection& bus = QDBusConnection::sessionBus());

  // No bus call: changes are announced.
  bool isProcessTrusted() const override { return enabled_.value(); }
  bool isProcessTrusted(bool prompt) override;
  AccessibilityElementRef applicationElement(std::int32_t processIdentifier) override;

  // Follows the trees that are handed out.
  const ControlPlaces& controlPlaces() const { return places_; }

 private:
  void switchOn();
  std::optional<std::vector<ControlPlace>> controlsNow() const;

  QDBusConnection bus_;
  FollowedProperty enabled_;
  std::shared_ptr<AgentConnection> agent_ = std::make_shared<AgentConnection>();
  ControlPlaces places_{[this] { return controlsNow(); }};
};

}  // namespace orvo
