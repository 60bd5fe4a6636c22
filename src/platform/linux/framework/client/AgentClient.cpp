#include "platform/linux/framework/client/AgentClient.h"

#include "platform/linux/bus/SessionBus.h"

#include <QCoreApplication>
#include <QTimer>

#include <climits>
#include <utility>

namespace orvo {

using session_bus::latin;

namespace {

FrameworkError error(AgentClient::Error code, const std::string& text) { return {"MenuBarClientCore", code, text}; }

FrameworkError failure(const QDBusMessage& reply) {
  if (reply.errorName() == latin(agent_protocol::watcherNotHeldError))
    return error(AgentClient::watcherNotHeld, "Another program manages the status icons.");
  const auto type = QDBusError(reply).type();
  if (type == QDBusError::ServiceUnknown || type == QDBusError::NoReply || type == QDBusError::Disconnected)
    return error(AgentClient::agentUnavailable, "The menu bar agent is not running.");
  const QString text = reply.errorMessage();
  return error(AgentClient::refused, text.isEmpty() ? "The menu bar agent refused." : text.toStdString());
}

}  // namespace

AgentClient::AgentClient(QDBusConnection connection) : connection_(std::move(connection)) {
  thread_.setObjectName(QStringLiteral("MenuBarClient"));
  moveToThread(&thread_);
}

AgentClient::~AgentClient() {
  thread_.quit();
  thread_.wait();
  QDBusConnection::disconnectFromBus(connection_.name());
}

bool AgentClient::watcherHeld() {
  if (held_.value()) return true;
  // Without an application there is no event loop to hear changes with: then each question is asked.
  const bool hears = QCoreApplication::instance() != nullptr;
  if (hears) ensureThread();
  const QDBusMessage answer = held_.ask(questionLimit);
  return FollowedProperty::valueOf(answer).value_or(hears && QDBusError(answer).type() == QDBusError::NoReply);
}

void AgentClient::activate(std::shared_ptr<AssertionState> assertion, ConcealmentConfiguration configuration) {
  ensureThread();
  QMetaObject::invokeMethod(
      this,
      [this, assertion = std::move(assertion), configuration = std::move(configuration)] {
        send(assertion, configuration);
      },
      Qt::QueuedConnection);
}

void AgentClient::invalidate(std::shared_ptr<AssertionState> assertion) {
  QMetaObject::invokeMethod(
      this, [this, assertion = std::move(assertion)] { end(*assertion); }, Qt::QueuedConnection);
}

void AgentClient::ensureThread() {
  const std::lock_guard lock(mutex_);
  if (thread_.isRunning()) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        held_.follow();
        held_.fetch();
      },
      Qt::QueuedConnection);
  thread_.start();
}

void AgentClient::send(const std::shared_ptr<AssertionState>& assertion,
                       const ConcealmentConfiguration& configuration) {
  QDBusMessage message = session_bus::agentCall("Activate");
  message << QVariant::fromValue(configuration.allowedSystemItems) << configuration.allowedBundleIdentifiers;
  // The bus itself sets no limit, so that an answer after ours still names the assertion to end.
  auto* call = session_bus::ask(connection_, message, std::chrono::milliseconds(INT_MAX), this,
                                [this, assertion](const QDBusMessage& reply) { answered(*assertion, reply); });
  auto* patience = new QTimer(call);  // goes with the answer, so that it wakes nobody later
  patience->setSingleShot(true);
  connect(patience, &QTimer::timeout, this, [this, assertion] {
    if (!assertion->completion) return;
    complete(*assertion, error(noAnswer, "The menu bar agent did not answer in time."));
    end(*assertion);
  });
  patience->start(activationLimit);
}

void AgentClient::answered(AssertionState& assertion, const QDBusMessage& reply) {
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("u"))
    return complete(assertion, failure(reply));
  assertion.agent = reply.service();
  assertion.identifier = reply.arguments().constFirst().toUInt();
  if (!assertion.ended) return complete(assertion, std::nullopt);
  end(assertion);
  complete(assertion, error(ended, "The request ended before it took effect."));
}

void AgentClient::end(AssertionState& assertion) {
  assertion.ended = true;
  if (!assertion.identifier) return;
  // To the very agent that granted it: a later one may use the same number for another assertion.
  QDBusMessage message =
      session_bus::call(assertion.agent, latin(agent_protocol::path), agent_protocol::interface, "Invalidate");
  message << *std::exchange(assertion.identifier, std::nullopt);
  message.setAutoStartService(false);
  connection_.call(message, QDBus::NoBlock);
}

void AgentClient::complete(AssertionState& assertion, const std::optional<FrameworkError>& error) {
  if (const auto completion = std::exchange(assertion.completion, nullptr)) completion(error);
}

}  // namespace orvo
