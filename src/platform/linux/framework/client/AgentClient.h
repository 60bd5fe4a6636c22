// Speaks to orvo-agent for the framework library: asks whether it can conceal, and carries assertions
// to it. Owned by the library, with a bus connection and a thread of its own: the agent ends every
// assertion of a connection that goes away. Callable from any thread.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>
#include <QThread>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace orvo {

struct ConcealmentConfiguration {
  QList<int> allowedSystemItems;
  QStringList allowedBundleIdentifiers;
};

enum class ConcealmentErrorCode : int {
  watcherNotHeld = 1,
  agentUnavailable = 2,
  noAnswer = 3,
  ended = 4,
  refused = 5
};

struct ConcealmentError {
  ConcealmentErrorCode code;
  QString text;
};

// What became of one activation. Touched on the client's thread alone; others only hold it.
struct Concealment {
  using Completion = std::function<void(const std::optional<ConcealmentError>&)>;

  Completion completion;  // empty once called
  QString agent;          // unique name of the agent that granted it
  std::optional<quint32> identifier;
  bool ended = false;
};

class AgentClient : public QObject {
  Q_OBJECT

 public:
  // How long watcherHeld() may wait, D-Bus starting the agent included.
  static constexpr std::chrono::milliseconds questionLimit{1000};
  // When an activation counts as failed. Beyond the patience of any caller that keeps its own time.
  static constexpr std::chrono::milliseconds activationLimit{25000};

  // The connection is the client's own and is closed with it.
  explicit AgentClient(QDBusConnection connection, std::chrono::milliseconds limit = activationLimit);
  AgentClient(const AgentClient&) = delete;
  AgentClient& operator=(const AgentClient&) = delete;
  ~AgentClient() override;

  // At once while the agent is known to hold the watcher; otherwise asks it, starting it if need be.
  bool watcherHeld();

  // The completion is called exactly once, later, on the client's thread. What follows for the same
  // concealment is carried out after it.
  void activate(std::shared_ptr<Concealment> concealment, ConcealmentConfiguration configuration);
  void invalidate(std::shared_ptr<Concealment> concealment);

 private:
  Q_SLOT void propertiesChanged(const QString& interface, const QVariantMap& changed, const QStringList& invalidated);

  void ensureThread();
  void watchAgent();
  void fetchWatcherHeld();
  void send(const std::shared_ptr<Concealment>& concealment, const ConcealmentConfiguration& configuration);
  void answered(const std::shared_ptr<Concealment>& concealment, const QDBusMessage& reply);
  void end(Concealment& concealment);
  static void complete(Concealment& concealment, const std::optional<ConcealmentError>& error);

  const std::chrono::milliseconds limit_;
  QDBusConnection connection_;
  std::mutex mutex_;  // guards the thread's start
  QThread thread_;
  std::atomic<bool> heldForSure_ = false;  // written by thread_ only, which hears of every change
};

}  // namespace orvo
