#include "platform/linux/x11/X11ScreenObserver.h"

#include "platform/linux/x11/TestDesktop.h"
#include "support/ManualMainQueue.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace orvo {
namespace {

TEST(X11ScreenObserverTest, AChangeOfTheScreensIsToldOnceWhenItIsOver) {
  TestDesktop desktop;
  ManualMainQueue queue;
  NotificationCenter center;
  int changes = 0;
  center.addObserver(Notification::screenParametersChanged, [&](Notification) { ++changes; });
  const X11ScreenObserver observer(queue, center, desktop.display());
  const auto xrandr = [&](const std::string& arguments) {
    ASSERT_EQ(std::system(("xrandr -d " + desktop.display() + " " + arguments).c_str()), 0);
  };
  // The observer has heard of it and waits for more; the clock stands still.
  const auto change = [&](const std::string& arguments) {
    xrandr(arguments);
    ASSERT_TRUE(queue.waitUntilPosted(std::chrono::seconds(5)));
    queue.runPosted();
  };
  xrandr("--newmode small 25.175 640 656 752 800 480 490 492 525");
  xrandr("--addmode screen small");
  change("-s 640x480");
  queue.advance(screenSettleTime / 2);
  change("-s 800x600");
  queue.advance(screenSettleTime / 2);
  EXPECT_EQ(changes, 0) << "gone and back, or not over";
  change("-s 640x480");
  EXPECT_TRUE(eventually(queue, [&] { return changes == 1; }));
}

}  // namespace
}  // namespace orvo
