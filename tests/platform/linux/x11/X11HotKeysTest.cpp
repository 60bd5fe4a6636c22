#include "platform/linux/x11/X11HotKeys.h"

#include "person/Person.h"
#include "platform/linux/x11/TestDesktop.h"
#include "support/ManualMainQueue.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace orvo {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t keyB = 11;
constexpr std::uint32_t controlOptionCommand = 6400;
constexpr std::uint32_t controlOption = 4096 + 2048;
constexpr EventTypeSpec pressed{fourCharacterCode("keyb"), 5};

class X11HotKeysTest : public testing::Test {
 protected:
  X11HotKeysTest() {
    EventHandlerRef handler{};
    const auto count = [](void* counter) -> HotKeyStatus {
      ++*static_cast<int*>(counter);
      return hotKeyNoError;
    };
    EXPECT_EQ(keys.installEventHandler(count, pressed, &presses, handler), hotKeyNoError);
  }

  HotKeyStatus take(X11HotKeys& from, std::uint32_t modifiers = controlOptionCommand) {
    return from.registerEventHotKey(keyB, modifiers, {fourCharacterCode("QUIL"), 1}, 0, hotKey);
  }
  void pressCombination() { person.pressChord({"Control_L", "Alt_L", "Super_L", "b"}); }
  bool reaches(int count) {
    return eventually(queue, [&] { return presses >= count; }) && presses == count;
  }
  // A press of another hot key comes behind all that went before.
  bool stays(int count) {
    HotKeyRef fence{};
    if (keys.registerEventHotKey(keyB, controlOption, {fourCharacterCode("QUIL"), 2}, 0, fence) != 0) return false;
    person.pressChord({"Control_L", "Alt_L", "b"});
    const bool exact = reaches(count + 1);
    keys.unregisterEventHotKey(fence);
    --presses;
    return exact;
  }

  TestDesktop desktop;
  ManualMainQueue queue;
  Person person{desktop.display()};
  X11HotKeys keys{queue, desktop.display()};
  HotKeyRef hotKey{};
  int presses = 0;
};

TEST_F(X11HotKeysTest, FiresWhicheverLockKeysAreOnAndWithNothingElseThanItsModifiers) {
  ASSERT_EQ(take(keys), hotKeyNoError);
  // Each step switches one lock: none, Caps, both, Num.
  for (const auto* lock : {"", "Caps_Lock", "Num_Lock", "Caps_Lock"}) {
    SCOPED_TRACE(lock);
    if (*lock != '\0') person.pressChord({lock});
    const int before = presses;
    pressCombination();
    EXPECT_TRUE(reaches(before + 1));
    person.pressChord({"Control_L", "Super_L", "b"});
    person.pressChord({"Shift_L", "Control_L", "Alt_L", "Super_L", "b"});
    EXPECT_TRUE(stays(before + 1));
  }
}

TEST_F(X11HotKeysTest, AHeldKeyIsOnePress) {
  ASSERT_EQ(take(keys), hotKeyNoError);
  for (const auto* key : {"Control_L", "Alt_L", "Super_L", "b"}) person.pressKey(key);
  EXPECT_TRUE(reaches(1));
  // Longer than it takes the server to begin repeating (660 ms) and to repeat several times.
  holdFor(queue, 900ms);
  for (const auto* key : {"b", "Super_L", "Alt_L", "Control_L"}) person.releaseKey(key);
  EXPECT_TRUE(stays(1));
  pressCombination();
  EXPECT_TRUE(reaches(2));
}

TEST_F(X11HotKeysTest, AnotherHoldersCombinationIsRefusedWholeAndFreeOnceItGoes) {
  auto other = std::make_unique<X11HotKeys>(queue, desktop.display());
  ASSERT_EQ(take(*other), hotKeyNoError);
  hotKey = HotKeyRef::none;
  EXPECT_EQ(take(keys), eventHotKeyExistsErr);
  EXPECT_EQ(hotKey, HotKeyRef::none);
  other.reset();
  ASSERT_TRUE(eventually([&] { return take(keys) == hotKeyNoError; }));

  // One of the four lock combinations is enough for a refusal, and the rest must not stay taken.
  keys.unregisterEventHotKey(hotKey);
  auto* connection = desktop.connection();
  constexpr xcb_keycode_t placeOfB = 56;
  const std::uint16_t withCaps = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4 | XCB_MOD_MASK_LOCK;
  const auto grab = [&](std::uint16_t modifiers) {
    auto* error = xcb_request_check(connection, xcb_grab_key_checked(connection, 0, desktop.root(), modifiers, placeOfB,
                                                                     XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    const bool taken = error == nullptr;
    std::free(error);
    return taken;
  };
  ASSERT_TRUE(eventually([&] { return grab(withCaps); }));
  EXPECT_EQ(take(keys), eventHotKeyExistsErr);
  EXPECT_TRUE(eventually([&] { return grab(withCaps & ~XCB_MOD_MASK_LOCK); }));
}

TEST_F(X11HotKeysTest, FollowsTheKeyboardLayout) {
  ASSERT_EQ(take(keys), hotKeyNoError);
  auto* connection = desktop.connection();
  const auto put = [&](xcb_keycode_t key, xcb_keysym_t symbol) {
    const xcb_keysym_t symbols[] = {symbol, symbol};
    xcb_change_keyboard_mapping(connection, 1, key, 2, &symbols[0]);
    xcb_flush(connection);
  };
  constexpr xcb_keycode_t placeOfQ = 24;
  constexpr xcb_keycode_t placeOfB = 56;
  put(placeOfB, 'q');
  put(placeOfQ, 'b');
  EXPECT_TRUE(eventually(queue, [&] {
    // A person who knows the new layout.
    Person(desktop.display()).pressChord({"Control_L", "Alt_L", "Super_L", "b"});
    return presses > 0;
  }));
  EXPECT_TRUE(eventually(queue, [&] {
    const int before = presses;
    Person(desktop.display()).pressChord({"Control_L", "Alt_L", "Super_L", "q"});
    return stays(before);
  }));
}

TEST_F(X11HotKeysTest, APressOnItsWayIsDroppedWithItsHotKey) {
  ASSERT_EQ(take(keys), hotKeyNoError);
  pressCombination();
  ASSERT_TRUE(reaches(1));
  pressCombination();
  EXPECT_TRUE(queue.waitUntilPosted(5s));
  keys.unregisterEventHotKey(hotKey);
  queue.runPosted();
  pressCombination();
  EXPECT_TRUE(stays(1));
}

TEST_F(X11HotKeysTest, WhatCannotBeHadIsRefused) {
  X11HotKeys nowhere(queue, ":63000");
  EXPECT_NE(take(nowhere), hotKeyNoError);
  EXPECT_NE(keys.registerEventHotKey(12, controlOptionCommand, {0, 0}, 0, hotKey), hotKeyNoError);
  EventHandlerRef handler{};
  EXPECT_NE(keys.installEventHandler(nullptr, {fourCharacterCode("mous"), 5}, nullptr, handler), hotKeyNoError);
}

}  // namespace
}  // namespace orvo
