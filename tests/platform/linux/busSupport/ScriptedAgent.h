// An agent that does what the test says, on a thread and a bus connection of its own, so that callers
// may block while it is silent. Any thread.
#pragma once

#include "agent/TreeElement.h"
#include "platform/linux/AgentProtocol.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace orvo::test {

class ScriptedAgent : public QDBusVirtualObject {
 public:
  enum class Mood { answers, silent, refuses };

  explicit ScriptedAgent(const QString& busAddress, Mood mood = Mood::answers) : mood_(mood) {
    registerAgentTypes();
    static std::atomic<int> last = 0;
    name_ = QStringLiteral("scripted-agent-%1").arg(++last);
    moveToThread(&thread_);
    thread_.start();
    onThread([&] {
      auto bus = QDBusConnection::connectToBus(busAddress, name_);
      bus.registerVirtualObject(agent_protocol::path, this);
      bus.interface()->registerService(agent_protocol::service);
    });
  }
  ScriptedAgent(const ScriptedAgent&) = delete;
  ScriptedAgent& operator=(const ScriptedAgent&) = delete;
  ~ScriptedAgent() override {
    vanish();
    thread_.quit();
    thread_.wait();
  }

  void vanish() {
    onThread([&] { QDBusConnection::disconnectFromBus(name_); });
  }
  // Answers what it has kept silent about, in order.
  void catchUp() {
    onThread([&] {
      mood_ = Mood::answers;
      for (const QDBusMessage& message : std::exchange(unanswered_, {})) answer(message);
    });
  }
  void setHeld(bool held) {
    onThread([&] { held_ = held; });
    emitSignal("org.freedesktop.DBus.Properties", "PropertiesChanged",
               {agent_protocol::interface, QVariantMap{{QStringLiteral("WatcherHeld"), held}}, QStringList()});
  }
  void setTree(const QList<TreeElement>& tree) {
    onThread([&] { tree_ = tree; });
  }
  void setItems(const QList<ItemRecord>& items) {
    onThread([&] { items_ = items; });
  }
  void addItem(const ItemRecord& item) {
    emitSignal(agent_protocol::interface, "ItemAdded", {item.address, item.processIdentifier, item.bundleIdentifier});
  }

  // Calls received so far, as "Activate a b", "Invalidate 1", "Tree" and so on.
  std::vector<std::string> calls() {
    std::vector<std::string> copy;
    onThread([&] { copy = calls_; });
    return copy;
  }
  long count(const std::string& call) {
    const auto all = calls();
    return std::count(all.begin(), all.end(), call);
  }
  bool wasAskedToActivate() {
    const auto all = calls();
    return std::any_of(all.begin(), all.end(), [](const std::string& call) { return call.starts_with("Activate"); });
  }

  QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
    QString text = message.member();
    for (const QVariant& argument : message.arguments()) {
      const bool isList = argument.userType() == QMetaType::QStringList;
      const QString told = isList ? argument.toStringList().join(QLatin1Char(' ')) : argument.toString();
      if (argument.userType() != qMetaTypeId<QDBusArgument>()) text += ' ' + told;
    }
    calls_.push_back(text.toStdString());
    if (mood_ == Mood::silent) {
      unanswered_.push_back(message);
    } else {
      answer(message);
    }
    return true;
  }

 private:
  void onThread(const std::function<void()>& action) {
    QMetaObject::invokeMethod(this, action, Qt::BlockingQueuedConnection);
  }

  void emitSignal(const char* interface, const char* name, const QVariantList& arguments) {
    auto signal = QDBusMessage::createSignal(agent_protocol::path, interface, name);
    signal.setArguments(arguments);
    onThread([&] { QDBusConnection(name_).send(signal); });
  }

  void answer(const QDBusMessage& message) {
    QDBusConnection bus(name_);
    const QString member = message.member();
    if (member == QLatin1String("Get")) {
      bus.send(message.createReply(QVariant::fromValue(QDBusVariant(held_))));
    } else if (mood_ == Mood::refuses) {
      bus.send(message.createErrorReply(agent_protocol::watcherNotHeldError, QString()));
    } else if (member == QLatin1String("Activate")) {
      bus.send(message.createReply(++lastAssertion_));
    } else if (member == QLatin1String("Tree")) {
      bus.send(message.createReply(QVariant::fromValue(tree_)));
    } else if (member == QLatin1String("Items")) {
      bus.send(message.createReply(QVariant::fromValue(items_)));
    } else {
      bus.send(message.createReply());
    }
  }

  QThread thread_;
  QString name_;
  Mood mood_;
  bool held_ = true;
  quint32 lastAssertion_ = 0;
  QList<TreeElement> tree_;
  QList<ItemRecord> items_;
  std::vector<std::string> calls_;
  std::vector<QDBusMessage> unanswered_;
};

}  // namespace orvo::test
