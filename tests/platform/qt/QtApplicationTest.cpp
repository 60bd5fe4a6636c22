#include "platform/qt/QtApplication.h"

#include "platform/qt/QtMainQueue.h"

#include <QGuiApplication>
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

}  // namespace
}  // namespace orvo

int main(int count, char** arguments) {
  testing::InitGoogleTest(&count, arguments);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(count, arguments);
  return RUN_ALL_TESTS();
}
