#include "platform/linux/framework/client/AgentClient.h"

#include "platform/linux/AgentProtocol.h"

#include <QCoreApplication>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QTimer>

#include <climits>
#include <utility>

namespace orvo {

namespace {

constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

QString latin(const char* text) { return QString::fromLatin1(text); }

QDBusMessage agentCall(const QString& service, const char* interface, const char* method) {
  return QDBusMessage::createMethodCall(service, latin(agent_protocol::path), latin(interface), latin(method));
}

QDBusMessage heldQuestion() {
  QDBusMessage message = agentCall(latin(agent_protocol::service), propertiesInterface, "Get");
  message << latin(agent_protocol::interface) << latin(agent_protocol::heldProperty);
  return message;
}

bool saysHeld(const QDBusMessage& reply) {
  const QDBusReply<QDBusVariant> answer(reply);
  return answer.isValid() && answer.value().variant().toBool();
}

ConcealmentError failure(const QDBusMessage& reply) {
  const QString name = reply.errorName();
  if (name == latin(agent_protocol::watcherNotHeldError))
    return {ConcealmentErrorCode::watcherNotHeld, QStringLiteral("Another program manages the status icons.")};
  const auto type = QDBusError(reply).type();
  if (type == QDBusError::ServiceUnknown || type == QDBusError::NoReply || type == QDBusError::Disconnected)
    return {ConcealmentErrorCode::agentUnavailable, QStringLiteral("The menu bar agent is not running.")};
  const QString text = reply.errorMessage();
  return {ConcealmentErrorCode::refused, text.isEmpty() ? QStringLiteral("The menu bar agent refused.") : text};
}

}  // namespace

AgentClient::AgentClient(QDBusConnection connection, std::chrono::milliseconds limit)
    : limit_(limit), connection_(std::move(connection)) {
  thread_.setObjectName(QStringLiteral("MenuBarClient"));
  moveToThread(&thread_);
}

AgentClient::~AgentClient() {
  thread_.quit();
  thread_.wait();
  QDBusConnection::disconnectFromBus(connection_.name());
}

bool AgentClient::watcherHeld() {
  if (heldForSure_) return true;
  // Without an application there is no event loop to hear changes with: then each question is asked.
  if (QCoreApplication::instance() != nullptr) ensureThread();
  return saysHeld(connection_.call(heldQuestion(), QDBus::Block, static_cast<int>(questionLimit.count())));
}

void AgentClient::activate(std::shared_ptr<Concealment> concealment, ConcealmentConfiguration configuration) {
  ensureThread();
  QMetaObject::invokeMethod(
      this,
      [this, concealment = std::move(concealment), configuration = std::move(configuration)] {
        send(concealment, configuration);
      },
      Qt::QueuedConnection);
}

void AgentClient::invalidate(std::shared_ptr<Concealment> concealment) {
  QMetaObject::invokeMethod(
      this, [this, concealment = std::move(concealment)] { end(*concealment); }, Qt::QueuedConnection);
}

void AgentClient::ensureThread() {
  const std::lock_guard lock(mutex_);
  if (thread_.isRunning()) return;
  QMetaObject::invokeMethod(
      this, [this] { watchAgent(); }, Qt::QueuedConnection);
  thread_.start();
}

void AgentClient::watchAgent() {
  const QString service = latin(agent_protocol::service);
  auto* watcher = new QDBusServiceWatcher(service, connection_, QDBusServiceWatcher::WatchForOwnerChange, this);
  connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& newOwner) {
            heldForSure_ = false;
            if (!newOwner.isEmpty()) fetchWatcherHeld();
          });
  connection_.connect(service, latin(agent_protocol::path), latin(propertiesInterface),
                      QStringLiteral("PropertiesChanged"), this,
                      SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
  fetchWatcherHeld();
}

void AgentClient::fetchWatcherHeld() {
  auto* call = new QDBusPendingCallWatcher(connection_.asyncCall(heldQuestion()), this);
  connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
    heldForSure_ = saysHeld(call->reply());
    call->deleteLater();
  });
}

void AgentClient::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                    const QStringList& invalidated) {
  if (interface != latin(agent_protocol::interface)) return;
  const auto held = changed.find(latin(agent_protocol::heldProperty));
  if (held != changed.end()) heldForSure_ = held->toBool();
  if (invalidated.contains(latin(agent_protocol::heldProperty))) fetchWatcherHeld();
}

void AgentClient::send(const std::shared_ptr<Concealment>& concealment, const ConcealmentConfiguration& configuration) {
  QDBusMessage message = agentCall(latin(agent_protocol::service), agent_protocol::interface, "Activate");
  message << QVariant::fromValue(configuration.allowedSystemItems) << configuration.allowedBundleIdentifiers;
  // The bus itself sets no limit, so that an answer after ours still names the assertion to end.
  auto* call = new QDBusPendingCallWatcher(connection_.asyncCall(message, INT_MAX), this);
  connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, concealment] {
    answered(concealment, call->reply());
    call->deleteLater();
  });
  auto* patience = new QTimer(call);  // goes with the answer, so that it wakes nobody later
  patience->setSingleShot(true);
  connect(patience, &QTimer::timeout, this, [this, concealment] {
    if (!concealment->completion) return;
    complete(*concealment, ConcealmentError{ConcealmentErrorCode::noAnswer,
                                            QStringLiteral("The menu bar agent did not answer in time.")});
    end(*concealment);
  });
  patience->start(limit_);
}

void AgentClient::answered(const std::shared_ptr<Concealment>& concealment, const QDBusMessage& reply) {
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("u")) {
    complete(*concealment, failure(reply));
    return;
  }
  concealment->agent = reply.service();
  concealment->identifier = reply.arguments().constFirst().toUInt();
  if (!concealment->ended) {
    complete(*concealment, std::nullopt);
    return;
  }
  end(*concealment);
  complete(*concealment,
           ConcealmentError{ConcealmentErrorCode::ended, QStringLiteral("The request ended before it took effect.")});
}

void AgentClient::end(Concealment& concealment) {
  concealment.ended = true;
  if (!concealment.identifier) return;
  // To the very agent that granted it: a later one may use the same number for another assertion.
  QDBusMessage message = agentCall(concealment.agent, agent_protocol::interface, "Invalidate");
  message << *std::exchange(concealment.identifier, std::nullopt);
  message.setAutoStartService(false);
  connection_.call(message, QDBus::NoBlock);
}

void AgentClient::complete(Concealment& concealment, const std::optional<ConcealmentError>& error) {
  if (const auto completion = std::exchange(concealment.completion, nullptr)) completion(error);
}

}  // namespace orvo
