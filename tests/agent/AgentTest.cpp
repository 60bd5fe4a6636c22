#include <chrono>
#include <csignal>
#include <memory>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "agent/PrivateBus.h"

namespace orvo::test {
namespace {

const QString item = QStringLiteral("/StatusNotifierItem");
constexpr std::chrono::milliseconds patienceWithPanel{120};  // the agent's
const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");

// A real program on the bus, whose bundle identifier is the given name.
class Program : public QProcess {
 public:
  Program(const QTemporaryDir& folder, const QString& name, const char* source = ORVO_TRAY_PROGRAM) {
    const QString script = folder.filePath(name);
    QFile::copy(source, script);
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
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus_.address().toUtf8());
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

TEST_F(AgentTest, NeverHidesTheItemOfItsOwnBundle) {
  const auto orvo = programWithItem("local.orvo.Orvo");
  const auto other = programWithItem("other");
  EXPECT_EQ(other->say("activate"), "1");
  EXPECT_EQ(panel_->say("items"), orvo->bus + item);
}

TEST_F(AgentTest, IsTroubledByNoPeerForLongAndPassesNothingOnThatDBusForbids) {
  const auto tray = programWithItem("tray");
  const auto hostile = program("hostile");
  for (const char* text : {"/a//b", "/a/", "/a-b", "/a.b", "nobody", "org.example.X/\xC3\xA4"})
    EXPECT_EQ(hostile->say(QStringLiteral("register ") + QString::fromUtf8(text)), "") << text;
  EXPECT_LE(hostile->say("flood 2000").toInt(), 32);
  EXPECT_LE(panel_->say("items").count(' '), 32);
  for (int request = 1; request <= 16; ++request) hostile->say("activate tray");
  const QDeadlineTimer patience(std::chrono::seconds(5));
  for (int request = 0; request < 500; ++request)
    EXPECT_EQ(hostile->say("activate"), "org.freedesktop.DBus.Error.LimitsExceeded");
  EXPECT_FALSE(patience.hasExpired());
  EXPECT_EQ(panel_->say("items"), tray->bus + item);
  endAgent();
  EXPECT_EQ(agent_.readAllStandardError().count("too many"), 2) << "each told once";
}

TEST_F(AgentTest, EndsAConcealmentWithItsRequesterOnly) {
  const auto tray = programWithItem("tray");
  const auto stranger = program("stranger");
  auto orvo = program("requester");
  EXPECT_EQ(orvo->say("activate"), "1");
  EXPECT_EQ(stranger->say("invalidate 1"), "org.freedesktop.DBus.Error.AccessDenied");
  stranger->end();
  EXPECT_EQ(panel_->say("items"), "");
  EXPECT_EQ(orvo->say("invalidate 1"), "");
  EXPECT_EQ(orvo->say("activate"), "2") << "the agent knows it by now";
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

// Beside the tray: clock and sound, 40 points each.
class AgentPanelTest : public AgentTest {
 protected:
  void SetUp() override {
    AgentTest::SetUp();
    xfce_ = std::make_unique<Program>(folder_, "xfce", ORVO_PANEL_PROGRAM);
    for (const char* plugin : {"1 systray 0 40", "2 clock 40 40", "3 pulseaudio 80 40"})
      xfce_->say(QStringLiteral("put %1").arg(plugin));
    EXPECT_TRUE(shows("clock-2@40+40 pulseaudio-3@80+40"));
  }

  // In the very next scan, unless the machine is so busy that the agent has to answer without the panel.
  testing::AssertionResult shows(const QString& expected) {
    QString seen;
    for (int attempt = 0; attempt < 5; ++attempt) {
      const QDeadlineTimer patience(patienceWithPanel);
      seen = panel_->say("controls");
      if (seen == expected) return testing::AssertionSuccess();
      if (!patience.hasExpired()) break;
    }
    return testing::AssertionFailure() << seen.toStdString();
  }

  std::unique_ptr<Program> xfce_;
};

TEST_F(AgentPanelTest, SeesInTheNextScanWhateverThePanelChanged) {
  const struct {
    const char* change;
    const char* expected;
  } steps[] = {
      {"put 2 clock 40 52", "clock-2@40+52 pulseaudio-3@80+40"},
      {"put 3 pulseaudio 92 40", "clock-2@40+52 pulseaudio-3@92+40"},
      {"put 4 xkb 132 30", "clock-2@40+52 pulseaudio-3@92+40 xkb-4@132+30"},
      {"remove 2", "pulseaudio-3@92+40 xkb-4@132+30"},
      {"put 3 pulseaudio -2147483648 40", "xkb-4@132+30"},
      {"retype 4 weather", "weather-4@132+30"},
      {"scale 2", "weather-4@264+60"},
      {"leave org.xfce.Panel", ""},
      {"own org.xfce.Panel", "weather-4@264+60"},
  };
  for (const auto& [change, expected] : steps) {
    xfce_->say(change);
    EXPECT_TRUE(shows(expected)) << change;
  }
  xfce_->end();
  EXPECT_TRUE(shows(""));
}

TEST_F(AgentPanelTest, AsksAnUnchangedPanelForNothingButItsTreeAndPlaces) {
  xfce_->say("calls");
  EXPECT_TRUE(shows("clock-2@40+40 pulseaudio-3@80+40"));
  EXPECT_EQ(xfce_->say("calls"), "7") << "children of panel, window and box; places of the window and three plug-ins";
}

TEST_F(AgentPanelTest, AnswersWithWhatItKnowsWhileThePanelIsStopped) {
  xfce_->signal(SIGSTOP);
  for (int scan = 0; scan < 3; ++scan) EXPECT_TRUE(shows("clock-2@40+40 pulseaudio-3@80+40"));
  xfce_->signal(SIGCONT);
  xfce_->say("put 2 clock 40 52");
  EXPECT_TRUE(runUntil([this] { return bool(shows("clock-2@40+52 pulseaudio-3@80+40")); }));
}

// The server takes the connection and says nothing: not even its greeting may be waited for.
TEST_F(AgentPanelTest, WaitsForNoAccessibilityBusThatIsStopped) {
  PrivateBus accessibility;
  accessibility.signal(SIGSTOP);
  xfce_->say("accessibility " + accessibility.address());
  xfce_->say("scale 1");
  for (int scan = 0; scan < 3; ++scan) EXPECT_TRUE(shows("clock-2@40+40 pulseaudio-3@80+40"));
  EXPECT_EQ(panel_->say("items"), "");
  xfce_->say("accessibility " + bus_.address());
  xfce_->say("put 2 clock 40 52");
  EXPECT_TRUE(runUntil([this] { return bool(shows("clock-2@40+52 pulseaudio-3@80+40")); }));
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
