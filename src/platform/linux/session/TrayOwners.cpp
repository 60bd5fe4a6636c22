#include "platform/linux/session/TrayOwners.h"

#include "platform/linux/AgentProtocol.h"
#include "platform/linux/session/SessionBus.h"

#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <utility>

namespace orvo {

using session_bus::latin;

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";

// Nothing waits for these, so that a busy service may take its time.
constexpr std::chrono::milliseconds patience{25000};

QDBusMessage watcherQuestion() {
  QDBusMessage message =
      session_bus::call(latin(watcherName), latin(watcherPath), session_bus::propertiesInterface, "Get");
  message << latin(watcherName) << QStringLiteral("RegisteredStatusNotifierItems");
  message.setAutoStartService(false);
  return message;
}

}  // namespace

TrayOwners::TrayOwners(QDBusConnection bus, Found found) : bus_(std::move(bus)), found_(std::move(found)) {}

void TrayOwners::begin() {
  subscribe();
  const auto limit = static_cast<int>(answerLimit.count());
  const QDBusMessage items = bus_.call(session_bus::agentCall("Items"), QDBus::Block, limit);
  const auto agent = session_bus::processAnswer(
      bus_.call(session_bus::processQuestion(latin(agent_protocol::service)), QDBus::Block, limit));
  if (!agent) return takeAddresses(bus_.call(watcherQuestion(), QDBus::Block, limit));
  agentThere_ = true;
  found_.agent(*agent);
  if (items.type() == QDBusMessage::ReplyMessage) {
    takeItems(items);
  } else {
    askAgent();
  }
}

void TrayOwners::subscribe() {
  const QString agent = latin(agent_protocol::service);
  bus_.connect(agent, latin(agent_protocol::path), latin(agent_protocol::interface), QStringLiteral("ItemAdded"), this,
               SLOT(itemAdded(QString, quint32, QString)));
  bus_.connect(latin(watcherName), latin(watcherPath), latin(watcherName),
               QStringLiteral("StatusNotifierItemRegistered"), this, SLOT(itemRegistered(QString)));
  auto* watch = new QDBusServiceWatcher(agent, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
  watch->addWatchedService(latin(watcherName));
  connect(watch, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this, agent](const QString& name, const QString&, const QString& newOwner) {
            if (name == agent) {
              agentChanged(newOwner);
            } else if (!newOwner.isEmpty() && !agentThere_) {
              askWatcher();
            }
          });
}

void TrayOwners::itemAdded(const QString&, quint32 processIdentifier, const QString& bundleIdentifier) {
  found_.owner(static_cast<std::int32_t>(processIdentifier), bundleIdentifier.toStdString());
}

// While there is an agent the tray only repeats what the agent has said.
void TrayOwners::itemRegistered(const QString& address) {
  if (agentThere_) return;
  askProcess(session_bus::splitItemAddress(address).first, [this](std::int32_t process) { found_.owner(process, {}); });
}

void TrayOwners::agentChanged(const QString& newOwner) {
  agentThere_ = !newOwner.isEmpty();
  if (!agentThere_) return askWatcher();
  askProcess(newOwner, found_.agent);
  askAgent();
}

void TrayOwners::askAgent() {
  session_bus::ask(bus_, session_bus::agentCall("Items"), patience, this,
                   [this](const QDBusMessage& reply) { takeItems(reply); });
}

void TrayOwners::askWatcher() {
  session_bus::ask(bus_, watcherQuestion(), patience, this,
                   [this](const QDBusMessage& reply) { takeAddresses(reply); });
}

void TrayOwners::askProcess(const QString& busName, const std::function<void(std::int32_t)>& answer) {
  session_bus::ask(bus_, session_bus::processQuestion(busName), patience, this, [answer](const QDBusMessage& reply) {
    if (const auto process = session_bus::processAnswer(reply)) answer(*process);
  });
}

void TrayOwners::takeItems(const QDBusMessage& reply) {
  for (const auto& item : session_bus::itemsAnswer(reply)) found_.owner(item.process, item.bundle.toStdString());
}

void TrayOwners::takeAddresses(const QDBusMessage& reply) {
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("v")) return;
  const auto list = reply.arguments().constFirst().value<QDBusVariant>().variant().toStringList();
  for (const QString& address : list) itemRegistered(address);
}

}  // namespace orvo
