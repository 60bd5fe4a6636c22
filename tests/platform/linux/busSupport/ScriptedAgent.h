// An agent that does what the test says, on a thread and a bus connection of its own, so that callers
// may block while it is silent. Any thread.
#pragma once

#include "platform/linux/AgentProtocol.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusMetaType>
#include <QDBusVirtualObject>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvo::test {

struct TreeRow {
  int parent = -1;
  int process = 0;
  QString identifier;
  bool hasFrame = false;
  double frame[4] = {0, 0, 0, 0};
};

struct ItemRow {
  QString address;
  quint32 process = 0;
  QString bundle = {};
};

inline QDBusArgument& operator<<(QDBusArgument& out, const TreeRow& row) {
  out.beginStructure();
  out << row.parent << row.process << row.identifier << row.hasFrame;
  out.beginStructure();
  for (const double number : row.frame) out << number;
  out.endStructure();
  out.endStructure();
  return out;
}
inline const QDBusArgument& operator>>(const QDBusArgument& in, TreeRow&) { return in; }
inline QDBusArgument& operator<<(QDBusArgument& out, const ItemRow& row) {
  out.beginStructure();
  out << row.address << row.process << row.bundle;
  out.endStructure();
  return out;
}
inline const QDBusArgument& operator>>(const QDBusArgument& in, ItemRow&) { return in; }

}  // namespace orvo::test

Q_DECLARE_METATYPE(orvo::test::TreeRow)
Q_DECLARE_METATYPE(orvo::test::ItemRow)

namespace orvo::test {

class ScriptedAgent : public QDBusVirtualObject {
 public:
  enum class Mood { answers, silent, refuses };

  explicit ScriptedAgent(const QString& busAddress, Mood mood = Mood::answers) : mood_(mood) {
    qDBusRegisterMetaType<TreeRow>();
    qDBusRegisterMetaType<QList<TreeRow>>();
    qDBusRegisterMetaType<ItemRow>();
    qDBusRegisterMetaType<QList<ItemRow>>();
    static std::atomic<int> last = 0;
    name_ = QStringLiteral("scripted-agent-%1").arg(++last);
    moveToThread(&thread_);
    thread_.start();
    onThread([&] {
      auto bus = QDBusConnection::connectToBus(busAddress, name_);
      bus.registerVirtualObject(QString::fromLatin1(agent_protocol::path), this);
      bus.interface()->registerService(QString::fromLatin1(agent_protocol::service));
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

  void setMood(Mood mood) {
    onThread([&] { mood_ = mood; });
  }

  // Answers what it has kept silent about, in order.
  void catchUp() {
    onThread([&] {
      mood_ = Mood::answers;
      for (const QDBusMessage& message : std::exchange(unanswered_, {})) answer(message);
    });
  }

  void setHeld(bool held) {
    onThread([&] {
      held_ = held;
      auto signal = QDBusMessage::createSignal(QString::fromLatin1(agent_protocol::path),
                                               QStringLiteral("org.freedesktop.DBus.Properties"),
                                               QStringLiteral("PropertiesChanged"));
      signal << QString::fromLatin1(agent_protocol::interface) << QVariantMap{{QStringLiteral("WatcherHeld"), held}}
             << QStringList();
      QDBusConnection(name_).send(signal);
    });
  }

  void setTree(const QList<TreeRow>& tree) {
    onThread([&] { tree_ = tree; });
  }
  void setItems(const QList<ItemRow>& items) {
    onThread([&] { items_ = items; });
  }
  void addItem(const ItemRow& item) {
    onThread([&] {
      items_ << item;
      auto signal =
          QDBusMessage::createSignal(QString::fromLatin1(agent_protocol::path),
                                     QString::fromLatin1(agent_protocol::interface), QStringLiteral("ItemAdded"));
      signal << item.address << item.process << item.bundle;
      QDBusConnection(name_).send(signal);
    });
  }

  // Calls received so far, as "Activate [0 1] a b", "Invalidate 1", "Tree" and so on.
  std::vector<std::string> calls() {
    std::vector<std::string> copy;
    onThread([&] { copy = calls_; });
    return copy;
  }
  long count(const std::string& call) {
    const auto all = calls();
    return std::count(all.begin(), all.end(), call);
  }
  quint32 lastAssertion() {
    quint32 number = 0;
    onThread([&] { number = lastAssertion_; });
    return number;
  }

  QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
    if (message.type() != QDBusMessage::MethodCallMessage) return false;
    calls_.push_back(describe(message));
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

  static std::string describe(const QDBusMessage& message) {
    QString text = message.member();
    for (const QVariant& argument : message.arguments()) {
      if (argument.userType() == qMetaTypeId<QDBusArgument>()) {
        QStringList numbers;
        for (const int number : qdbus_cast<QList<int>>(argument)) numbers << QString::number(number);
        text += QStringLiteral(" [") + numbers.join(QLatin1Char(' ')) + QLatin1Char(']');
      } else if (argument.userType() == QMetaType::QStringList) {
        text += QLatin1Char(' ') + argument.toStringList().join(QLatin1Char(' '));
      } else {
        text += QLatin1Char(' ') + argument.toString();
      }
    }
    return text.toStdString();
  }

  void answer(const QDBusMessage& message) {
    QDBusConnection bus(name_);
    const QString member = message.member();
    if (member == QLatin1String("Get")) {
      bus.send(message.createReply(QVariant::fromValue(QDBusVariant(held_))));
    } else if (mood_ == Mood::refuses) {
      bus.send(message.createErrorReply(QString::fromLatin1(agent_protocol::watcherNotHeldError), QString()));
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
  QList<TreeRow> tree_;
  QList<ItemRow> items_;
  std::vector<std::string> calls_;
  std::vector<QDBusMessage> unanswered_;
};

}  // namespace orvo::test
