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
  const auto item = [](const char* key, MenuAction action) {
    return MenuItem{.title = "", .action = std::move(action), .keyEquivalent = key, .submenu = {}};
  };
  auto top = item("", {});
  top.submenu.emplace_back().items = {item("q", [&] { program.log += "quit "; }),
                                      item("c", FirstResponderAction{"copy:"})};
  Menu menu;
  menu.items = {top};
  program.application.setMainMenu(menu);
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
  EXPECT_EQ(program.log, "quit ");
  EXPECT_EQ(window.keys, "CQQ");
}

}  // namespace
}  // namespace orvo
