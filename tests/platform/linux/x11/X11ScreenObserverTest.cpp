#include "platform/linux/x11/X11ScreenObserver.h"

#include "platform/linux/x11/TestDesktop.h"
#include "support/ManualMainQueue.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace orvo {
namespace {

using namespace std::chrono_literals;

TEST(X11ScreenObserverTest, AChangeOfTheScreensIsToldOnceWhenItIsOver) {
  TestDesktop desktop;
  ManualMainQueue queue;
  NotificationCenter center;
  int changes = 0;
  center.addObserver(Notification::screenParametersChanged, [&](Notification) { ++changes; });
  const X11ScreenObserver observer(queue, center, desktop.display());
  const auto xrandr = [&](const std::string& arguments) {
    return std::system(("xrandr -d " + desktop.display() + " " + arguments).c_str()) == 0;
  };

  ASSERT_TRUE(xrandr("--newmode small 25.175 640 656 752 800 480 490 492 525") && xrandr("--addmode screen small"));
  ASSERT_TRUE(xrandr("--newmode tiny 12 320 336 352 400 240 250 252 262") && xrandr("--addmode screen tiny"));
  EXPECT_TRUE(eventually(queue, [&] { return queue.waiting().empty() && queue.postedCount() == 0; }));
  EXPECT_EQ(changes, 0) << "for modes that nobody shows";

  // Several changes in one go.
  ASSERT_TRUE(xrandr("-s 640x480") && xrandr("-s 320x240") && xrandr("-s 640x480"));
  ASSERT_TRUE(queue.waitUntilPosted(5s));
  holdFor(queue, 20ms);
  EXPECT_EQ(changes, 0) << "not while it goes on";
  EXPECT_TRUE(eventually(queue, [&] { return changes > 0; }));
  EXPECT_EQ(changes, 1);

  // Gone and back within the settling time is no change.
  ASSERT_TRUE(xrandr("-s 800x600") && xrandr("-s 640x480"));
  ASSERT_TRUE(queue.waitUntilPosted(5s));
  EXPECT_TRUE(eventually(queue, [&] { return queue.waiting().size() == 1; }));
  EXPECT_TRUE(eventually(queue, [&] { return queue.waiting().empty() && queue.postedCount() == 0; }));
  EXPECT_EQ(changes, 1);

  ASSERT_TRUE(xrandr("-s 800x600"));
  EXPECT_TRUE(eventually(queue, [&] { return changes == 2; }));
}

}  // namespace
}  // namespace orvo
