#include "platform/qt/QtApplication.h"

#include "platform/qt/QtMainQueue.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

#include <gtest/gtest.h>

#include <csignal>
#include <string>

namespace orvo {
namespace {

struct LoggingDelegate final : ApplicationDelegate {
  void applicationDidFinishLaunching() override {
    log += "launched ";
    onLaunch();
  }
  bool applicationShouldHandleReopen(bool) override {
    log += "reopen ";
    return true;
  }
  void applicationWillTerminate() override { log += "end "; }
  bool applicationShouldTerminateAfterLastWindowClosed() override { return false; }

  std::string log;
  std::function<void()> onLaunch = [] {};
};

class QtApplicationTest : public ::testing::Test {
 protected:
  QtApplicationTest() { application_.setDelegate(&delegate_); }

  LoggingDelegate delegate_;
  QtMainQueue queue_;
  QtApplication application_{qGuiApp};
};

TEST(QtApplicationEndTest, EveryWayOutTellsTheDelegateExactlyOnce) {
  const std::function<void(QtApplication&)> ways[]{
      [](QtApplication& application) { application.terminate(), application.terminate(); },
      [](QtApplication&) { raise(SIGINT); },
      [](QtApplication&) { raise(SIGHUP); },
      [](QtApplication&) { QCoreApplication::quit(); },
  };
  for (const auto& end : ways) {
    for (const bool whileLaunching : {false, true}) {
      if (whileLaunching && &end == &ways[3]) continue;  // without a loop there is nothing to quit
      LoggingDelegate delegate;
      QtMainQueue queue;
      QtApplication application(qGuiApp);
      application.setDelegate(&delegate);
      delegate.onLaunch = [&] { whileLaunching ? end(application) : queue.post([&] { end(application); }); };
      application.run();
      EXPECT_EQ(delegate.log, "launched end ") << &end - &ways[0];
    }
  }
}

TEST_F(QtApplicationTest, ARequestToReopenWaitsForTheLaunchAndAClosedLastWindowEndsNothing) {
  application_.setAdmission([] { return false; });
  application_.run();
  EXPECT_EQ(delegate_.log, "") << "not admitted";
  application_.setAdmission([] { return true; });
  QWindow window;
  window.show();
  application_.reopen();
  delegate_.onLaunch = [&] { queue_.post([&] { window.close(); }); };
  queue_.runAfter(std::chrono::milliseconds(50), [this] {
    delegate_.log += "runs ";
    application_.terminate();
    application_.reopen();
  });
  application_.run();
  EXPECT_EQ(delegate_.log, "launched reopen runs end ");
}

TEST_F(QtApplicationTest, MainMenuKeysActInAWindowAndLeaveItsTextFieldsAlone) {
  const auto item = [](const char* key, MenuAction action) {
    return MenuItem{.title = "", .action = std::move(action), .keyEquivalent = key, .submenu = {}};
  };
  auto top = item("", {});
  top.submenu.emplace_back().items = {item("q", [this] { delegate_.log += "quit "; }),
                                      item("c", FirstResponderAction{"copy:"})};
  Menu menu;
  menu.items = {top};
  application_.setMainMenu(menu);
  struct Receiver final : QWindow {
    void keyPressEvent(QKeyEvent* event) override { keys += static_cast<char>(event->key()); }
    std::string keys;
  } window;
  const std::pair<int, Qt::KeyboardModifiers> presses[]{{Qt::Key_Q, Qt::ControlModifier},
                                                        {Qt::Key_C, Qt::ControlModifier},
                                                        {Qt::Key_Q, Qt::NoModifier},
                                                        {Qt::Key_Q, Qt::ControlModifier | Qt::AltModifier}};
  for (const auto& [key, modifiers] : presses) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QCoreApplication::sendEvent(&window, &event);
  }
  EXPECT_EQ(delegate_.log, "quit ");
  EXPECT_EQ(window.keys, "CQQ");
}

}  // namespace
}  // namespace orvo
