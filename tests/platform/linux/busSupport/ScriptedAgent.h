// An agent that does what the test says, on a thread and a bus connection of its own, so that callers
// may block while it is silent. Any thread.
#pragma once

#include "platform/linux/busSupport/TreeElement.h"
#include "platform/linux/AgentProtocol.h"
#include "platform/linux/busSupport/TestSession.h"

#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QThread>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace orvo::test {

class ScriptedAgent : public QDBusVirtualObject {
 public:
  enum class Mood { answers, silent, refuses };

  explicit ScriptedAgent(Mood mood = Mood::answers) : mood_(mood) {
    registerAgentTypes();
    moveToThread(&thread_);
    thread_.start();
    onThread([&] {
      bus_->registerVirtualObject(agent_protocol::path, this);
      bus_->interface()->registerService(agent_protocol::service);
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
    onThread([&] { bus_.reset(); });
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
  // How many calls it got, written as "Activate a b", "Invalidate 1", "Tree" and so on, begin with this.
  long count(const std::string& call) {
    long found = 0;
    onThread([&] {
      found = std::ranges::count_if(calls_, [&](const std::string& each) { return each.starts_with(call); });
    });
    return found;
  }

  QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
    if (!bus_) return true;  // it came while the agent vanished
    QStringList words{message.member()};
    for (const QVariant& argument : message.arguments()) {
      const int type = argument.userType();
      if (type != qMetaTypeId<QDBusArgument>())
        words += type == QMetaType::QStringList ? argument.toStringList() : QStringList{argument.toString()};
    }
    calls_.push_back(words.join(' ').toStdString());
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
    onThread([&] { bus_->send(signal); });
  }

  void answer(const QDBusMessage& message) {
    const QString member = message.member();
    const bool refuses = mood_ == Mood::refuses && member != "Get";
    bus_->send(refuses ? message.createErrorReply(agent_protocol::watcherNotHeldError, QString())
                       : message.createReply(answerTo(member)));
  }
  QVariantList answerTo(const QString& member) {
    if (member == "Get") return {QVariant::fromValue(QDBusVariant(held_))};
    if (member == "Activate") return {++lastAssertion_};
    if (member == "Tree") return {QVariant::fromValue(tree_)};
    if (member == "Items") return {QVariant::fromValue(items_)};
    return {};
  }

  QThread thread_;
  std::shared_ptr<QDBusConnection> bus_ = otherConnection();
  Mood mood_;
  bool held_ = true;
  quint32 lastAssertion_ = 0;
  QList<TreeElement> tree_;
  QList<ItemRecord> items_;
  std::vector<std::string> calls_;
  std::vector<QDBusMessage> unanswered_;
};

}  // namespace orvo::test
