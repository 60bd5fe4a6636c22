#include <csignal>
#include <memory>
#include <utility>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "agent/ListeningPanel.h"
#include "agent/TrayProgram.h"
#include "platform/linux/AgentProtocol.h"
#include "platform/linux/busSupport/PrivateBus.h"

namespace orvo::test {
namespace {

const QString item = QStringLiteral("/StatusNotifierItem");
const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");

class AgentTest : public testing::Test {
 protected:
  void SetUp() override {
    bus_.becomeSessionBus();
    connection_ = bus_.connect(bus_.address());
    startAgent();
    panel_ = std::make_unique<ListeningPanel>(connection_);
  }
  void TearDown() override {
    agent_.kill();
    agent_.waitForFinished();
    QDBusConnection::disconnectFromBus(bus_.address());
  }

  void startAgent() {
    agent_.start(QStringLiteral(ORVO_AGENT), QStringList());
    ASSERT_TRUE(runUntil([this] { return owned(QString::fromLatin1(agent_protocol::service)); }));
    (void)ask("Items");  // answered only when it has asked for the other name too
  }

  bool owned(const QString& name) const { return connection_.interface()->isServiceRegistered(name); }

  std::unique_ptr<TrayProgram> program(const QString& name) { return std::make_unique<TrayProgram>(folder_, name); }

  // A program with an item that is on the panel.
  std::unique_ptr<TrayProgram> programWithItem(const QString& name) {
    auto started = program(name);
    EXPECT_EQ(started->say("register " + started->bus), "ok None");
    return started;
  }

  QDBusMessage ask(const QString& method, const QVariantList& arguments = {}) const {
    auto call = QDBusMessage::createMethodCall(agent_protocol::service, agent_protocol::path, agent_protocol::interface,
                                               method);
    call.setArguments(arguments);
    return connection_.call(call);
  }

  // Addresses and process identifiers as Items has them.
  QList<std::pair<QString, uint>> registered() const {
    QList<std::pair<QString, uint>> items;
    const auto argument = ask("Items").arguments().value(0).value<QDBusArgument>();
    argument.beginArray();
    while (!argument.atEnd()) {
      items.emplaceBack();
      argument.beginStructure();
      argument >> items.back().first >> items.back().second;
      argument.endStructure();
    }
    argument.endArray();
    return items;
  }

  // The panel hears nothing more once an answer that was asked for later has come.
  QStringList heard() {
    (void)ask("Items");
    QCoreApplication::processEvents();
    return panel_->heard();
  }

  bool hears(const QStringList& expected) {
    QStringList all;
    return runUntil([&] { return (all += panel_->heard()).size() >= expected.size(); }) && all == expected &&
           heard().isEmpty();
  }

  QTemporaryDir folder_;
  PrivateBus bus_;
  QDBusConnection connection_{QString()};
  QProcess agent_;
  std::unique_ptr<ListeningPanel> panel_;
};

TEST_F(AgentTest, CountsAnItemOnceHoweverItRegisters) {
  const auto first = program("first");
  const auto second = program("second");
  first->say("own org.kde.StatusNotifierItem-1-1");
  second->say("own org.example.Second");
  for (const QString& text : {first->bus, QString("org.kde.StatusNotifierItem-1-1"), item, first->bus + item})
    EXPECT_EQ(first->say("register " + text), "ok None");
  EXPECT_EQ(first->say("register org.example.Second/Item"), "ok None") << "by a connection that is not the item's";
  EXPECT_EQ(first->say("register org.example.Nobody"), "ok None");
  EXPECT_EQ(second->say("register /own/path"), "ok None");
  const QList<std::pair<QString, uint>> expected = {{first->bus + item, uint(first->pid())},
                                                    {second->bus + "/Item", uint(second->pid())},
                                                    {second->bus + "/own/path", uint(second->pid())}};
  EXPECT_EQ(registered(), expected);
  EXPECT_EQ(panel_->items(), QStringList({first->bus + item, second->bus + "/Item", second->bus + "/own/path"}));

  second->say("release org.example.Second");
  EXPECT_TRUE(runUntil([&] { return panel_->items().size() == 2; })) << "its name went, its process lives on";
  second->kill();
  EXPECT_TRUE(runUntil([&] { return panel_->items() == QStringList(first->bus + item); }));
}

TEST_F(AgentTest, TellsThePanelTheDifferenceOnlyAndKeepsTheOrder) {
  const auto one = programWithItem("one");
  const auto two = programWithItem("two");
  const auto three = programWithItem("three");
  const auto orvo = program("requester");
  const QString a = one->bus + item;
  const QString b = two->bus + item;
  const QString c = three->bus + item;
  EXPECT_TRUE(hears({'+' + a, '+' + b, '+' + c}));

  EXPECT_EQ(orvo->say("activate two"), "ok 1");
  EXPECT_EQ(heard(), QStringList({'-' + a, '-' + c})) << "before the answer";
  EXPECT_EQ(panel_->items(), QStringList(b));
  EXPECT_EQ(registered().size(), 3);

  // Replaced by a request that also hides the first: it must not be seen in between.
  EXPECT_EQ(orvo->say("activate three"), "ok 2");
  EXPECT_EQ(heard(), QStringList('-' + b));
  EXPECT_EQ(orvo->say("invalidate 1"), "ok None");
  EXPECT_EQ(heard(), QStringList('+' + c));

  const auto four = programWithItem("four");
  EXPECT_EQ(four->say("register /allowed"), "ok None");
  EXPECT_EQ(heard(), QStringList()) << "a newcomer that is not allowed";
  EXPECT_EQ(three->say("register /second"), "ok None");
  EXPECT_EQ(heard(), QStringList('+' + three->bus + "/second")) << "a newcomer that is";

  EXPECT_EQ(orvo->say("invalidate 2"), "ok None");
  EXPECT_EQ(heard(), QStringList({'+' + a, '+' + b, '+' + four->bus + item, '+' + four->bus + "/allowed"}));
  EXPECT_EQ(panel_->items(), QStringList({a, b, c, four->bus + item, four->bus + "/allowed", three->bus + "/second"}));
}

TEST_F(AgentTest, EndsAConcealmentWithItsRequesterOnly) {
  const auto tray = programWithItem("tray");
  const QStringList back('+' + tray->bus + item);
  EXPECT_TRUE(hears(back));
  const auto stranger = program("stranger");
  auto orvo = program("requester");
  const QString assertion = orvo->say("activate").mid(3);
  EXPECT_EQ(heard().size(), 1);
  EXPECT_EQ(stranger->say("invalidate " + assertion), "error org.freedesktop.DBus.Error.AccessDenied");
  stranger->kill();
  EXPECT_EQ(heard(), QStringList());
  orvo->signal(SIGKILL);
  EXPECT_TRUE(hears(back));

  // Gone before the agent could watch it: nobody would tell.
  for (int round = 0; round < 5; ++round) program("hasty")->say("activate_and_die");
  EXPECT_TRUE(runUntil([&] { return panel_->items() == QStringList(tray->bus + item); }));
}

TEST_F(AgentTest, WaitsForNoStoppedProgram) {
  const auto stopped = programWithItem("stopped");
  const auto orvo = program("requester");
  stopped->signal(SIGSTOP);
  QElapsedTimer clock;
  clock.start();
  EXPECT_EQ(orvo->say("activate"), "ok 1");
  EXPECT_EQ(panel_->items(), QStringList());
  EXPECT_EQ(orvo->say("invalidate 1"), "ok None");
  EXPECT_EQ(panel_->items(), QStringList(stopped->bus + item));
  (void)ask("Tree");
  EXPECT_LT(clock.elapsed(), 2000);
  stopped->signal(SIGCONT);
}

TEST_F(AgentTest, LeavesTheTreeToItemsWithoutAPanel) {
  const auto shown = programWithItem("shown");
  const auto concealed = programWithItem("concealed");
  const auto orvo = program("requester");
  orvo->say("activate shown");
  const auto tree = ask("Tree").arguments().value(0).value<QDBusArgument>();
  EXPECT_EQ(tree.currentSignature(), "a(iisb(dddd))");
  QList<std::pair<int, int>> elements;
  tree.beginArray();
  while (!tree.atEnd()) {
    elements.emplaceBack();
    tree.beginStructure();
    tree >> elements.back().first >> elements.back().second;
    tree.endStructure();
  }
  tree.endArray();
  const QList<std::pair<int, int>> expected = {{-1, int(agent_.processId())}, {0, int(shown->pid())}};
  EXPECT_EQ(elements, expected);
}

TEST_F(AgentTest, ToleratesNoSecondAgent) {
  QProcess second;
  second.start(QStringLiteral(ORVO_AGENT), QStringList());
  ASSERT_TRUE(second.waitForFinished());
  EXPECT_NE(second.exitCode(), 0);
  EXPECT_EQ(second.readAllStandardError(), "orvo-agent: another agent is running\n");
  EXPECT_TRUE(owned(watcherName));
}

TEST_F(AgentTest, TakesTheTrayOverWhenItsHolderLeaves) {
  agent_.kill();
  agent_.waitForFinished();
  const auto holder = program("holder");
  const auto tray = program("tray");
  holder->say("own " + watcherName);
  startAgent();
  QDBusInterface agent(agent_protocol::service, agent_protocol::path, agent_protocol::interface, connection_);
  EXPECT_EQ(agent.property("WatcherHeld"), QVariant(false));
  EXPECT_EQ(tray->say("activate"), "error local.orvo.MenuBarAgent1.Error.WatcherNotHeld");
  holder->kill();
  EXPECT_TRUE(runUntil([&] { return agent.property("WatcherHeld") == QVariant(true); }));
  EXPECT_EQ(tray->say("register " + tray->bus), "ok None");
  EXPECT_EQ(panel_->items(), QStringList(tray->bus + item));
  EXPECT_EQ(tray->say("activate"), "ok 1");
  agent_.kill();
  agent_.waitForFinished();
  EXPECT_EQ(agent_.readAllStandardError(),
            "orvo-agent: another program holds org.kde.StatusNotifierWatcher; waiting for it\n"
            "orvo-agent: holds org.kde.StatusNotifierWatcher\n");
}

// Qt programs read the introspection, and hear "no host" only once.
TEST_F(AgentTest, PromisesAHostBeforeThereIsAPanel) {
  EXPECT_EQ(panel_->property("IsStatusNotifierHostRegistered"), QVariant(true));
  const auto call = QDBusMessage::createMethodCall(watcherName, "/StatusNotifierWatcher",
                                                   "org.freedesktop.DBus.Introspectable", "Introspect");
  const QString text = connection_.call(call).arguments().value(0).toString();
  for (const char* name : {"RegisterStatusNotifierItem", "RegisterStatusNotifierHost", "RegisteredStatusNotifierItems",
                           "IsStatusNotifierHostRegistered", "ProtocolVersion", "StatusNotifierItemRegistered",
                           "StatusNotifierItemUnregistered", "StatusNotifierHostRegistered"})
    EXPECT_TRUE(text.contains(QStringLiteral("name=\"%1\"").arg(name))) << name;
}

TEST_F(AgentTest, EndsWithTheBus) {
  bus_.stop();
  EXPECT_TRUE(runUntil([this] { return agent_.state() == QProcess::NotRunning; }));
}

}  // namespace
}  // namespace orvo::test

int main(int count, char** arguments) {
  QCoreApplication application(count, arguments);
  testing::InitGoogleTest(&count, arguments);
  return RUN_ALL_TESTS();
}
