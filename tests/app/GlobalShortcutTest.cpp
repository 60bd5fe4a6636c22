#include "app/GlobalShortcut.h"

#include "support/MemoryHotKeys.h"

#include <gtest/gtest.h>

#include <memory>

namespace orvo {
namespace {

TEST(GlobalShortcutTest, EveryFailureLeavesNothingBehindAndReleasesNothingTwice) {
  struct Case {
    const char* name;
    HotKeyStatus install;
    HotKeyStatus registration;
    std::size_t handlers;
    std::size_t hotKeys;
  };
  for (const Case& c : {Case{"both granted", 0, 0, 1, 1}, Case{"combination taken", 0, -9878, 1, 0},
                        Case{"no handler, so no hot key", -50, 0, 0, 0}}) {
    SCOPED_TRACE(c.name);
    MemoryHotKeys hotKeys;
    hotKeys.installStatus = c.install;
    hotKeys.registerStatus = c.registration;
    auto shortcut = std::make_unique<GlobalShortcut>(hotKeys);
    EXPECT_EQ(shortcut->isRegistered(), c.hotKeys == 1);
    EXPECT_EQ(hotKeys.handlers.size(), c.handlers);
    EXPECT_EQ(hotKeys.hotKeys.size(), c.hotKeys);
    shortcut.reset();
    EXPECT_TRUE(hotKeys.handlers.empty());
    EXPECT_TRUE(hotKeys.hotKeys.empty());
    EXPECT_EQ(hotKeys.wrongReleases, 0);
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
  EXPECT_EQ(hotKeys.handlers.begin()->second.function(nullptr), eventNotHandledErr);
}

}  // namespace
}  // namespace orvo
