#include "platform/qt/QtApplication.h"

#include "support/QtEventLoop.h"
#include "platform/qt/QtMainQueue.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

#include <gtest/gtest.h>

#include <csignal>
#include <string>

namespace orvo {
namespace {

class LoggingDelegate final : public ApplicationDelegate {
 public:
  void applicationDidFinishLaunching() override {
    log += "launched ";
    if (onLaunch) onLaunch();
  }
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override {
    log += hasVisibleWindows ? "reopen-visible " : "reopen ";
    return true;
  }
  void applicationWillTerminate() override {
    log += "end ";
    if (onEnd) onEnd();
  }
  bool applicationShouldTerminateAfterLastWindowClosed() override { return false; }

  std::string log;
  std::function<void()> onLaunch;
  std::function<void()> onEnd;
};

class QtApplicationTest : public ::testing::Test {
 protected:
  QtApplicationTest() { application_.setDelegate(&delegate_); }

  LoggingDelegate delegate_;
  QtMainQueue queue_;
  QtApplication application_{qGuiApp};
};

TEST_F(QtApplicationTest, EveryWayOutTellsTheDelegateExactlyOnce) {
  struct Case {
    const char* name;
    std::function<void(QtApplication&)> end;
  };
  const std::array cases{
      Case{"terminate", [](QtApplication& application) { application.terminate(); }},
      Case{"terminate twice", [](QtApplication& application) { application.terminate(), application.terminate(); }},
      Case{"the session's own quit", [](QtApplication&) { QCoreApplication::quit(); }},
      Case{"SIGTERM", [](QtApplication&) { raise(SIGTERM); }},
      Case{"SIGINT", [](QtApplication&) { raise(SIGINT); }},
      Case{"SIGHUP", [](QtApplication&) { raise(SIGHUP); }},
  };
  for (const Case& way : cases) {
    SCOPED_TRACE(way.name);
    LoggingDelegate delegate;
    QtApplication application(qGuiApp);
    application.setDelegate(&delegate);
    delegate.onEnd = [&] { application.terminate(); };  // as a delegate's own quit does
    queue_.post([&] { way.end(application); });
    application.run();
    EXPECT_EQ(delegate.log, "launched end ");
  }
}

TEST_F(QtApplicationTest, QuittingWhileLaunchingEndsWithoutALoop) {
  delegate_.onLaunch = [this] { application_.terminate(); };
  application_.run();
  EXPECT_EQ(delegate_.log, "launched end ");
}

TEST_F(QtApplicationTest, ACopyThatIsNotAdmittedNeverLaunches) {
  application_.setAdmission([] { return false; });
  application_.run();
  application_.terminate();
  EXPECT_EQ(delegate_.log, "");
}

TEST_F(QtApplicationTest, ARequestToReopenWaitsForTheLaunchAndStopsAtTheEnd) {
  application_.reopen();
  EXPECT_EQ(delegate_.log, "");
  queue_.post([this] {
    application_.terminate();
    application_.reopen();
  });
  application_.run();
  EXPECT_EQ(delegate_.log, "launched reopen end ");
}

TEST_F(QtApplicationTest, ClosingTheLastWindowKeepsTheProgramRunning) {
  QWindow window;
  window.show();
  delegate_.onLaunch = [&] { queue_.post([&] { window.close(); }); };
  bool stillRuns = false;
  queue_.runAfter(std::chrono::milliseconds(50), [&] {
    stillRuns = true;
    application_.terminate();
  });
  application_.run();
  EXPECT_TRUE(stillRuns);
}

TEST_F(QtApplicationTest, MainMenuKeysActInAWindowAndLeaveItsTextFieldsAlone) {
  int settings = 0;
  Menu submenu;
  submenu.items.push_back({.title = "Settings…", .action = [&] { ++settings; }, .keyEquivalent = ",", .submenu = {}});
  submenu.items.push_back(
      {.title = "Copy", .action = FirstResponderAction{"copy:"}, .keyEquivalent = "c", .submenu = {}});
  submenu.items.push_back(
      {.title = "Quit", .action = [this] { delegate_.log += "quit "; }, .keyEquivalent = "q", .submenu = {}});
  Menu menu;
  menu.items.push_back({.title = "", .action = {}, .keyEquivalent = "", .submenu = {submenu}});
  application_.setMainMenu(menu);

  struct Receiver final : QWindow {
    void keyPressEvent(QKeyEvent* event) override { keys += static_cast<char>(event->key()); }
    std::string keys;
  } window;
  const auto press = [&](int key, Qt::KeyboardModifiers modifiers) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QCoreApplication::sendEvent(&window, &event);
  };
  press(Qt::Key_Comma, Qt::ControlModifier);
  press(Qt::Key_Q, Qt::ControlModifier);
  press(Qt::Key_C, Qt::ControlModifier);
  press(Qt::Key_Q, Qt::NoModifier);
  press(Qt::Key_Q, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_EQ(settings, 1);
  EXPECT_EQ(delegate_.log, "quit ");
  EXPECT_EQ(window.keys, "CQQ");
}

TEST_F(QtApplicationTest, TheCurrentEventLastsAsLongAsItsHandler) {
  std::vector<std::optional<EventType>> seen;
  const auto look = [&] { seen.push_back(application_.currentEventType()); };
  application_.handleEvent(EventType::leftMouseUp, [&] {
    application_.handleEvent(EventType::rightMouseUp, look);
    look();
  });
  look();
  EXPECT_EQ(seen, (std::vector<std::optional<EventType>>{EventType::rightMouseUp, EventType::leftMouseUp, {}}));
}

}  // namespace
}  // namespace orvo
