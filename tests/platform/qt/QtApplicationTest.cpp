#include "platform/qt/QtApplication.h"

#include "platform/qt/QtMainQueue.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <tuple>

namespace orvo {
namespace {

struct Program final : ApplicationDelegate {
  Program() { application.setDelegate(this); }

  void applicationDidFinishLaunching() override { log += "launched ", onLaunch(); }
  bool applicationShouldHandleReopen(bool) override { return log += "reopen ", true; }
  void applicationWillTerminate() override { log += "end "; }
  bool applicationShouldTerminateAfterLastWindowClosed() override { return false; }

  std::string log;
  std::function<void()> onLaunch = [] {};
  QtMainQueue queue;
  QtApplication application{qGuiApp};
};

TEST(QtApplicationTest, EveryWayOutTellsTheDelegateExactlyOnce) {
  const std::function<void(QtApplication&)> ways[]{
      [](QtApplication& application) { application.terminate(), application.terminate(); },
      [](QtApplication&) { raise(SIGINT); },
      [](QtApplication&) { raise(SIGHUP); },
      [](QtApplication&) { QCoreApplication::quit(); },
  };
  for (const auto& end : ways) {
    for (const bool whileLaunching : {false, true}) {
      if (whileLaunching && &end == &ways[3]) continue;  // without a loop there is nothing to quit
      Program program;
      program.onLaunch = [&] {
        whileLaunching ? end(program.application) : program.queue.post([&] { end(program.application); });
      };
      program.application.run();
      EXPECT_EQ(program.log, "launched end ") << &end - &ways[0];
    }
  }
}

TEST(QtApplicationTest, ARequestToReopenWaitsForTheLaunchAndAClosedLastWindowEndsNothing) {
  Program program;
  QtApplication& application = program.application;
  application.setAdmission([] { return false; });
  application.run();
  EXPECT_EQ(program.log, "") << "not admitted";
  application.setAdmission([] { return true; });
  QWindow window;
  window.show();
  application.reopen();
  program.onLaunch = [&] { program.queue.post([&] { window.close(); }); };
  program.queue.runAfter(std::chrono::milliseconds(50), [&] {
    program.log += "runs ";
    application.terminate();
    application.reopen();
  });
  application.run();
  EXPECT_EQ(program.log, "launched reopen runs end ");
}

TEST(QtApplicationTest, MainMenuKeysActInAWindowAndLeaveItsTextFieldsAlone) {
  Program program;
  MenuItem top;
  top.submenu.emplace_back().items.resize(2);
  MenuItem &quit = top.submenu[0].items[0], &copy = top.submenu[0].items[1];
  quit.keyEquivalent = "q", quit.action = [&] { program.log += "quit "; };
  copy.keyEquivalent = "c", copy.action = FirstResponderAction{"copy:"};
  Menu menu;
  menu.items = {top};
  program.application.setMainMenu(menu);
  QWindow window;
  const std::tuple<int, Qt::KeyboardModifiers, bool> presses[]{
      {Qt::Key_Q, Qt::ControlModifier, true},
      {Qt::Key_C, Qt::ControlModifier, false},
      {Qt::Key_Q, Qt::NoModifier, false},
      {Qt::Key_Q, Qt::ControlModifier | Qt::AltModifier, false}};
  for (const auto& [key, modifiers, acts] : presses) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QCoreApplication::sendEvent(&window, &event);
    EXPECT_EQ(program.log, acts ? "quit " : "");
    program.log.clear();
  }
}

}  // namespace
}  // namespace orvo
