#include "platform/linux/x11/X11HotKeys.h"

#include "person/Person.h"
#include "platform/linux/x11/TestDesktop.h"
#include "support/ManualMainQueue.h"

#include <gtest/gtest.h>

namespace orvo {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t keyB = 11;
constexpr std::uint32_t controlOptionCommand = 6400;
constexpr std::uint32_t controlOption = 4096 + 2048;
constexpr xcb_keycode_t placeOfQ = 24;
constexpr xcb_keycode_t placeOfB = 56;

class X11HotKeysTest : public testing::Test {
 protected:
  X11HotKeysTest() {
    EventHandlerRef handler{};
    const auto count = [](void* counter) -> HotKeyStatus {
      ++*static_cast<int*>(counter);
      return hotKeyNoError;
    };
    EXPECT_EQ(keys.installEventHandler(count, {fourCharacterCode("keyb"), 5}, &presses, handler), hotKeyNoError);
  }

  HotKeyStatus take() { return keys.registerEventHotKey(keyB, controlOptionCommand, {}, 0, hotKey); }
  // As another program would.
  bool grab(unsigned locks, xcb_keycode_t key) {
    const auto modifiers = static_cast<std::uint16_t>(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4 | locks);
    const auto cookie = xcb_grab_key_checked(desktop.connection(), 0, desktop.root(), modifiers, key,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    return !owned(xcb_request_check(desktop.connection(), cookie));
  }
  bool reaches(int count) {
    return eventually(queue, [&] { return presses >= count; }) && presses == count;
  }
  // A press of another hot key comes behind all that went before.
  bool stays(int count) {
    HotKeyRef fence{};
    if (keys.registerEventHotKey(keyB, controlOption, {}, 0, fence) != hotKeyNoError) return false;
    person.chord({"Control_L", "Alt_L", "b"});
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

TEST_F(X11HotKeysTest, APressThatIsHeldFiresOnceAndOneWithOtherModifiersNever) {
  ASSERT_EQ(take(), hotKeyNoError);
  person.chord({"Control_L", "Super_L", "b"});
  person.chord({"Shift_L", "Control_L", "Alt_L", "Super_L", "b"});
  EXPECT_TRUE(stays(0));
  person.pressChord({"Control_L", "Alt_L", "Super_L", "b"});
  // Longer than it takes the server to begin repeating (660 ms) and to repeat several times.
  holdFor(queue, 900ms);
  person.releaseChord({"Control_L", "Alt_L", "Super_L", "b"});
  EXPECT_TRUE(stays(1));
}

TEST_F(X11HotKeysTest, ACombinationThatAnotherHasInPartIsRefusedWhole) {
  EXPECT_TRUE(grab(XCB_MOD_MASK_LOCK, placeOfB));
  EXPECT_EQ(take(), eventHotKeyExistsErr);
  EXPECT_EQ(hotKey, HotKeyRef::none);
  EXPECT_TRUE(eventually([&] { return grab(0, placeOfB); })) << "the rest stayed taken";
}

TEST_F(X11HotKeysTest, FollowsTheKeyboardLayoutToAPlaceThatComesFreeLater) {
  ASSERT_EQ(take(), hotKeyNoError);
  const auto put = [&](xcb_keycode_t key, xcb_keysym_t symbol) {
    const xcb_keysym_t symbols[] = {symbol, symbol};
    xcb_change_keyboard_mapping(desktop.connection(), 1, key, 2, &symbols[0]);
    xcb_flush(desktop.connection());
  };
  // A person who knows the new layout.
  const auto pressed = [&](const char* key) {
    const int before = presses;
    Person(desktop.display()).chord({"Control_L", "Alt_L", "Super_L", key});
    return !stays(before);
  };
  EXPECT_TRUE(grab(0, placeOfQ));
  put(placeOfB, 'q');
  put(placeOfQ, 'b');
  EXPECT_TRUE(eventually(queue, [&] { return !pressed("q"); }));
  EXPECT_FALSE(pressed("b"));
  EXPECT_FALSE(keys.isAvailable(hotKey));
  const auto freed = xcb_ungrab_key_checked(desktop.connection(), placeOfQ, desktop.root(), XCB_MOD_MASK_ANY);
  EXPECT_FALSE(owned(xcb_request_check(desktop.connection(), freed)));
  queue.advance(grabRetryInterval);
  EXPECT_TRUE(eventually(queue, [&] { return pressed("b"); }));
  EXPECT_TRUE(keys.isAvailable(hotKey));
}

}  // namespace
}  // namespace orvo
