// The status item in a real panel, worked by a real pointer.
#include "PrivateSession.h"
#include "platform/linux/desktop/StatusNotifierItem.h"
#include "platform/qt/QtMainQueue.h"
#include "support/QtEventLoop.h"

#include <QDir>
#include <QFile>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

namespace orvo {

using test::runUntil;

namespace {

// A panel along the upper edge that shows nothing but the tray, whose first item is at the left.
constexpr const char* panelSettings = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="26"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property>
</channel>
)";

class PanelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    xServer_.start("Xvfb", {"-displayfd", "1", "-screen", "0", "640x300x24", "-nolisten", "tcp"});
    ASSERT_TRUE(xServer_.waitForReadyRead(20000));
    environment_.insert("DISPLAY", ':' + QString::fromUtf8(xServer_.readLine().trimmed()));
    environment_.insert("NO_AT_BRIDGE", "1");
    const QString folder = qEnvironmentVariable("XDG_CONFIG_HOME") + "/xfce4/xfconf/xfce-perchannel-xml";
    ASSERT_TRUE(QDir().mkpath(folder));
    QFile settings(folder + "/xfce4-panel.xml");
    ASSERT_TRUE(settings.open(QIODevice::WriteOnly));
    settings.write(panelSettings);
    settings.close();
    startPanel();
  }
  void TearDown() override {
    stopPanel();
    xServer_.terminate();
    xServer_.waitForFinished();
  }

  void startPanel() {
    panel_.setProcessEnvironment(environment_);
    panel_.setStandardErrorFile(QProcess::nullDevice());
    panel_.start("xfce4-panel", {"--disable-wm-check"});
    ASSERT_TRUE(panel_.waitForStarted());
  }
  void stopPanel() {
    panel_.terminate();
    panel_.waitForFinished();
  }

  void act(const QStringList& steps) const {
    QProcess xdotool;
    xdotool.setProcessEnvironment(environment_);
    xdotool.start("xdotool", steps);
    EXPECT_TRUE(runUntil([&] { return xdotool.state() == QProcess::NotRunning; }));
  }
  // Again until it has an effect: nobody says when a panel has drawn what it was told.
  template <typename Condition>
  bool actUntil(const QStringList& steps, Condition condition) const {
    const QDeadlineTimer deadline(test::waitLimit);
    while (!condition() && !deadline.hasExpired()) {
      act(steps);
      const QDeadlineTimer pause(500);
      while (!condition() && !pause.hasExpired()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }
    return condition();
  }

  QProcessEnvironment environment_ = QProcessEnvironment::systemEnvironment();
  QProcess xServer_;
  QProcess panel_;
  QtMainQueue queue_;
  QtApplication application_{qGuiApp};
};

TEST_F(PanelTest, ClicksAndChoicesComeThroughBeforeAndAfterThePanelRestarts) {
  StatusNotifierItem item({QDBusConnection::sessionBus(), queue_, application_, {}});
  int lefts = 0;
  int rights = 0;
  int choices = 0;
  Menu menu;
  for (int row = 0; row < 3; ++row) {
    menu.items.push_back({.title = "Row", .action = [&] { ++choices; }, .keyEquivalent = "", .submenu = {}});
  }
  item.setAction(
      [&] {
        const bool left = application_.currentEventType() == EventType::leftMouseUp;
        ++(left ? lefts : rights);
        if (!left) item.popUpMenu(menu, {});
      },
      leftMouseUpMask | rightMouseUpMask);
  item.setImage("chevron.right", "Orvo");
  item.setVisible(true);

  for (const char* round : {"first panel", "second panel"}) {
    SCOPED_TRACE(round);
    lefts = choices = 0;
    EXPECT_TRUE(actUntil({"mousemove", "12", "12", "click", "1"}, [&] { return lefts > 0; }));
    rights = 0;
    EXPECT_TRUE(actUntil({"mousemove", "12", "12", "click", "3"}, [&] { return rights > 0; }));
    EXPECT_TRUE(actUntil({"key", "Down", "key", "Return"}, [&] { return choices > 0; }));
    stopPanel();
    startPanel();
  }
}

}  // namespace
}  // namespace orvo
