#include <csignal>
#include <memory>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "platform/linux/busSupport/PrivateBus.h"

namespace orvo::test {
namespace {

const QString item = QStringLiteral("/StatusNotifierItem");
const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");

// A real program on the bus, whose bundle identifier is the given name.
class Program : public QProcess {
 public:
  Program(const QTemporaryDir& folder, const QString& name) {
    const QString script = folder.filePath(name);
    QFile::copy(QStringLiteral(ORVO_TRAY_PROGRAM), script);
    setProcessChannelMode(ForwardedErrorChannel);
    bus = startAndReadLine(*this, QStringLiteral("/usr/bin/python3"), {script});
  }
  ~Program() override { end(); }

  QString say(const QString& command) {
    write(command.toUtf8() + '\n');
    if (!runUntil([this] { return canReadLine(); })) ADD_FAILURE() << command.toStdString();
    return QString::fromUtf8(readLine()).trimmed();
  }
  void signal(int number) const { ::kill(static_cast<pid_t>(processId()), number); }
  void end() {
    kill();
    waitForFinished();
  }

  QString bus;  // its unique name
};

class AgentTest : public testing::Test {
 protected:
  void SetUp() override {
    bus_.becomeSessionBus();
    panel_ = program("panel");
    startAgent();
    panel_->say("listen");
  }
  void TearDown() override { endAgent(); }

  void startAgent() {
    agent_.start(QStringLiteral(ORVO_AGENT), QStringList());
    ASSERT_TRUE(runUntil([this] { return panel_->say("tree").startsWith("-1:"); }));
  }
  void endAgent() {
    agent_.kill();
    agent_.waitForFinished();
  }

  std::unique_ptr<Program> program(const QString& name) { return std::make_unique<Program>(folder_, name); }
  std::unique_ptr<Program> programWithItem(const QString& name) {
    auto started = program(name);
    EXPECT_EQ(started->say("register " + started->bus), "");
    return started;
  }

  QTemporaryDir folder_;
  PrivateBus bus_;
  std::unique_ptr<Program> panel_;
  QProcess agent_;
};

TEST_F(AgentTest, CountsAnItemOnceHoweverItRegisters) {
  const auto first = program("first");
  const auto second = program("second");
  const QString a = first->bus + item;
  first->say("own org.kde.StatusNotifierItem-1-1");
  second->say("own org.example.Second");
  for (const QString& text : {first->bus, QString("org.kde.StatusNotifierItem-1-1"), item, a})
    EXPECT_EQ(first->say("register " + text), "");
  EXPECT_EQ(first->say("register org.example.Second/Item"), "") << "by a connection that is not the item's";
  EXPECT_EQ(first->say("register org.example.Nobody"), "");
  EXPECT_EQ(second->say("register /own"), "");
  const auto mine = QString(" %1 second").arg(second->processId());
  EXPECT_EQ(panel_->say("registered"), a + QString(" %1 first ").arg(first->processId()) + second->bus + "/Item" +
                                           mine + ' ' + second->bus + "/own" + mine);
  EXPECT_EQ(panel_->say("items"), a + ' ' + second->bus + "/Item " + second->bus + "/own");
  second->say("release org.example.Second");
  EXPECT_TRUE(runUntil([&] { return panel_->say("items") == a + ' ' + second->bus + "/own"; })) << "its process lives";
  first->say("release org.kde.StatusNotifierItem-1-1");
  second->end();
  EXPECT_TRUE(runUntil([&] { return panel_->say("items") == a; }));
}

TEST_F(AgentTest, TellsThePanelTheDifferenceBeforeItAnswersTheRequester) {
  const auto one = programWithItem("one");
  const auto two = programWithItem("two");
  const auto stopped = programWithItem("stopped");
  const auto orvo = program("requester");
  const QString a = one->bus + item;
  const QString b = two->bus + item;
  const QString c = stopped->bus + item;
  EXPECT_EQ(panel_->say("heard"), '+' + a + " +" + b + " +" + c);
  stopped->signal(SIGSTOP);
  EXPECT_EQ(orvo->say("activate two"), "1");
  EXPECT_EQ(panel_->say("heard"), '-' + a + " -" + c);
  EXPECT_EQ(panel_->say("tree"), QString("-1:%1 0:%2").arg(agent_.processId()).arg(two->processId()));
  // Replaced by a request that also hides the first: it must not be seen in between.
  EXPECT_EQ(orvo->say("activate stopped"), "2");
  EXPECT_EQ(orvo->say("invalidate 1"), "");
  EXPECT_EQ(panel_->say("heard"), '-' + b + " +" + c);
  const auto four = programWithItem("four");
  EXPECT_EQ(panel_->say("heard"), "") << "a newcomer that is not allowed";
  EXPECT_EQ(orvo->say("invalidate 2"), "");
  EXPECT_EQ(panel_->say("heard"), '+' + a + " +" + b + " +" + four->bus + item);
}

TEST_F(AgentTest, EndsAConcealmentWithItsRequesterOnly) {
  const auto tray = programWithItem("tray");
  const auto stranger = program("stranger");
  auto orvo = program("requester");
  EXPECT_EQ(orvo->say("activate"), "1");
  EXPECT_EQ(stranger->say("invalidate 1"), "org.freedesktop.DBus.Error.AccessDenied");
  stranger->end();
  EXPECT_EQ(panel_->say("items"), "");
  orvo->end();
  EXPECT_TRUE(runUntil([&] { return panel_->say("items") == tray->bus + item; }));
  // Gone before the agent could watch it: nobody would tell.
  for (int round = 0; round < 5; ++round) program("hasty")->say("activate_and_die");
  EXPECT_TRUE(runUntil([&] { return panel_->say("items") == tray->bus + item; }));
}

TEST_F(AgentTest, TakesTheTrayOverWhenItsHolderLeavesAndToleratesNoSecondAgent) {
  endAgent();
  const auto holder = program("holder");
  const auto tray = program("tray");
  holder->say("own " + watcherName);
  startAgent();
  EXPECT_EQ(tray->say("activate"), "local.orvo.MenuBarAgent1.Error.WatcherNotHeld");
  holder->end();
  EXPECT_TRUE(runUntil([&] { return panel_->say("held") == "True"; }));
  EXPECT_EQ(tray->say("register " + tray->bus), "");
  EXPECT_EQ(panel_->say("items"), tray->bus + item);
  EXPECT_EQ(tray->say("activate"), "1");
  QProcess second;
  second.start(QStringLiteral(ORVO_AGENT), QStringList());
  ASSERT_TRUE(second.waitForFinished());
  EXPECT_EQ(second.readAllStandardError(), "orvo-agent: another agent is running\n");
}

// Qt programs read the introspection, and hear "no host" only once.
TEST_F(AgentTest, PromisesAHostBeforeThereIsAPanelAndEndsWithTheBus) {
  EXPECT_EQ(panel_->say("prop IsStatusNotifierHostRegistered"), "True");
  const QString text = panel_->say("introspect");
  for (const char* name : {"RegisterStatusNotifierItem", "RegisterStatusNotifierHost", "IsStatusNotifierHostRegistered",
                           "ProtocolVersion", "StatusNotifierHostRegistered"})
    EXPECT_TRUE(text.contains(QStringLiteral("name=\"%1\"").arg(name))) << name;
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
