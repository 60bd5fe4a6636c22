#include "app/GlobalShortcut.h"

#include "support/MemoryHotKeys.h"

#include <gtest/gtest.h>

#include <memory>

namespace orvo {
namespace {

TEST(GlobalShortcutTest, EveryFailureLeavesNothingBehindAndReleasesNothingTwice) {
  struct Case {
    HotKeyStatus install;
    HotKeyStatus registration;
    int handlers;
    int hotKeys;
  };
  for (const Case& c : {Case{0, 0, 1, 1}, Case{0, -9878, 1, 0}, Case{-50, 0, 0, 0}}) {
    SCOPED_TRACE(c.install + c.registration);
    MemoryHotKeys hotKeys;
    hotKeys.installStatus = c.install;
    hotKeys.registerStatus = c.registration;
    auto shortcut = std::make_unique<GlobalShortcut>(hotKeys);
    EXPECT_EQ(shortcut->isRegistered(), c.hotKeys == 1);
    EXPECT_EQ(hotKeys.handlers, c.handlers);
    EXPECT_EQ(hotKeys.hotKeys, c.hotKeys);
    shortcut.reset();
    EXPECT_EQ(hotKeys.handlers, 0);
    EXPECT_EQ(hotKeys.hotKeys, 0);
  }
}

TEST(GlobalShortcutTest, APressIsHandledWhetherOrNotSomeoneListens) {
  MemoryHotKeys hotKeys;
  GlobalShortcut shortcut(hotKeys);
  EXPECT_EQ(hotKeys.press(), hotKeyNoError);
  int presses = 0;
  shortcut.onPress = [&] { ++presses; };
  EXPECT_EQ(hotKeys.press(), hotKeyNoError);
  EXPECT_EQ(presses, 1);
  EXPECT_EQ(hotKeys.function(nullptr), eventNotHandledErr);
}

}  // namespace
}  // namespace orvo
