#include "app/GlobalShortcut.h"

#include "support/MemoryPlatform.h"

#include <gtest/gtest.h>

namespace orvo {
namespace {

TEST(GlobalShortcutTest, HoldsWhatItGotReleasesNothingTwiceAndHandlesEveryPress) {
  struct Case {
    HotKeyStatus install, registration;
    int handlers, hotKeys;
  };
  for (const Case& c : {Case{0, 0, 1, 1}, Case{0, -9878, 1, 0}, Case{-50, 0, 0, 0}}) {
    SCOPED_TRACE(c.install + c.registration);
    MemoryHotKeys hotKeys;
    hotKeys.installStatus = c.install;
    hotKeys.registerStatus = c.registration;
    int presses = 0;
    {
      GlobalShortcut shortcut(hotKeys);
      EXPECT_EQ(shortcut.isRegistered(), c.hotKeys == 1);
      EXPECT_TRUE(hotKeys.handlers == c.handlers && hotKeys.hotKeys == c.hotKeys);
      EXPECT_TRUE(c.handlers == 0 || hotKeys.press() == hotKeyNoError) << "nobody listens";
      shortcut.onPress = [&] { ++presses; };
      EXPECT_TRUE(c.handlers == 0 || hotKeys.press() == hotKeyNoError);
    }
    EXPECT_EQ(presses, c.handlers);
    EXPECT_TRUE(hotKeys.handlers == 0 && hotKeys.hotKeys == 0);
    EXPECT_TRUE(c.handlers == 0 || hotKeys.function(nullptr) == eventNotHandledErr);
  }
}

}  // namespace
}  // namespace orvo
