// Speaks to orvo-agent for the framework library: asks whether it can conceal, and carries assertions
// to it. Owned by the library, with a bus connection and a thread of its own: the agent ends every
// assertion of a connection that goes away. Callable from any thread.
#pragma once

#include "platform/ConcealmentFramework.h"
#include "platform/linux/AgentProtocol.h"
#include "platform/linux/bus/FollowedProperty.h"

#include <QThread>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

namespace orvo {

struct ConcealmentConfiguration {
  QList<int> allowedSystemItems;
  QStringList allowedBundleIdentifiers;
};

// What became of one activation. Touched on the client's thread alone; others only hold it.
struct AssertionState {
  FrameworkClasses::CompletionHandler completion;  // empty once called
  QString agent;                                   // unique name of the agent that granted it
  std::optional<quint32> identifier;
  bool ended = false;
};

class AgentClient : public QObject {
 public:
  // The framework's numbers of errors.
  enum Error : int { watcherNotHeld = 1, agentUnavailable = 2, noAnswer = 3, ended = 4, refused = 5 };

  // How long watcherHeld() may wait, D-Bus starting the agent included.
  static constexpr std::chrono::milliseconds questionLimit{1000};
  // When an activation counts as failed. Beyond the patience of any caller that keeps its own time.
  static constexpr std::chrono::milliseconds activationLimit{25000};

  // The connection is the client's own and is closed with it.
  explicit AgentClient(QDBusConnection connection);
  AgentClient(const AgentClient&) = delete;
  AgentClient& operator=(const AgentClient&) = delete;
  ~AgentClient() override;

  // At once while the agent is known to hold the watcher; otherwise asks it, starting it if need be. Of an agent that
  // is only slow the best is hoped where there is an event loop: it says later what it does not hold.
  bool watcherHeld();

  // The completion is called exactly once, later, on the client's thread. What follows for the same
  // assertion is carried out after it.
  void activate(std::shared_ptr<AssertionState> assertion, ConcealmentConfiguration configuration);
  void invalidate(std::shared_ptr<AssertionState> assertion);

 private:
  void ensureThread();
  void send(const std::shared_ptr<AssertionState>& assertion, const ConcealmentConfiguration& configuration);
  void answered(AssertionState& assertion, const QDBusMessage& reply);
  void end(AssertionState& assertion);
  static void complete(AssertionState& assertion, const std::optional<FrameworkError>& error);

  QDBusConnection connection_;
  std::mutex mutex_;  // guards the thread's start
  QThread thread_;
  // Lives on the thread, which hears of every change.
  FollowedProperty held_{
      connection_,
      {agent_protocol::service, agent_protocol::path, agent_protocol::interface, agent_protocol::heldProperty},
      this};
};

}  // namespace orvo
