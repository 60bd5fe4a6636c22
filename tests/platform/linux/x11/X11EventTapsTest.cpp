#include "platform/linux/x11/X11EventTaps.h"

#include "person/Person.h"
#include "platform/linux/x11/TapThread.h"
#include "platform/linux/x11/TestDesktop.h"
#include "support/ManualMainQueue.h"

#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <mutex>
#include <optional>
#include <utility>

namespace orvo {

// For messages.
void PrintTo(const Dock::Button& button, std::ostream* out) {
  *out << (button.down ? "down " : "up ") << button.number << " at " << button.location.x << "," << button.location.y;
}

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr Rect dockFrame{0, 560, 800, 40};
constexpr Rect region{600, 562, 100, 36};
constexpr Point onRegion{650, 580};
constexpr Point besideRegion{300, 580};
constexpr Point onDesktop{200, 200};

std::vector<Dock::Button> click(unsigned button, Point point) {
  return {{button, true, point}, {button, false, point}};
}

// A tap of its own, for what the relay never does.
struct Tap {
  struct Seen {
    EventType type;
    Point location;
    std::int64_t mark;
  };

  explicit Tap(X11EventTaps& taps)
      : port(taps.create(EventTapLocation::session, EventTapPlacement::headInsert, EventTapOptions::activeFilter, 0x1E,
                         &callback, this)) {
    if (!port) return;
    port->addToMainRunLoop();
    port->setRegionsOfInterest({region});
    port->enable();
  }

  static Event* callback(EventType type, Event* event, void* userInfo) {
    auto& tap = *static_cast<Tap*>(userInfo);
    tap.seen.push_back({type, event->location(), event->integerValueField(eventSourceUserData)});
    if (tap.passes) return event;
    if (type == EventType::leftMouseDown) tap.held = event->copy();
    return nullptr;
  }

  std::vector<EventType> types() const {
    std::vector<EventType> types;
    for (const auto& event : seen) types.push_back(event.type);
    return types;
  }

  std::unique_ptr<EventTapPort> port;
  bool passes = false;
  std::vector<Seen> seen;
  std::unique_ptr<Event> held;
};

class X11EventTapsTest : public testing::Test {
 protected:
  X11EventTapsTest() { desktop.startWindowManager(); }

  bool covered(Dock& dock) {
    return eventually(queue, [&] { return dock.covers() == 1; });
  }
  bool arrives(Dock& dock, const std::vector<Dock::Button>& expected) {
    return eventually(queue, [&] { return dock.buttons().size() >= expected.size(); }) && dock.buttons() == expected;
  }
  // A click of the person beside all regions comes behind everything that was given before it.
  void expectNothingMoreThan(Dock& dock, std::vector<Dock::Button> expected) {
    person.click(besideRegion, 1);
    for (const auto& button : click(1, besideRegion)) expected.push_back(button);
    EXPECT_TRUE(arrives(dock, expected)) << testing::PrintToString(dock.buttons());
    dock.forget();
  }

  TestDesktop desktop;
  ManualMainQueue queue;
  Person person{desktop.display()};
  // As a reading of the tree finds them.
  void find(std::optional<ControlPlaces::List> now) {
    const std::lock_guard lock(mutex);
    controls = std::move(now);
  }

  xcb_window_t topLevelAt(Point point) const {
    const auto cookie =
        xcb_translate_coordinates(desktop.connection(), desktop.root(), desktop.root(),
                                  static_cast<std::int16_t>(point.x), static_cast<std::int16_t>(point.y));
    const auto reply = owned(xcb_translate_coordinates_reply(desktop.connection(), cookie, nullptr));
    return reply ? reply->child : xcb_window_t{XCB_WINDOW_NONE};
  }

  std::mutex mutex;
  std::optional<ControlPlaces::List> controls;
  ControlPlaces places{[this] {
    const std::lock_guard lock(mutex);
    return controls;
  }};
  X11EventTaps taps{queue, [] { return true; }, places, desktop.display()};
};

TEST_F(X11EventTapsTest, NoReplayEndsOnACoverThatIsWantedBackAtOnce) {
  Dock dock(desktop, dockFrame);
  Tap tap(taps);
  for (int round = 0; round < 40; ++round) {
    ASSERT_TRUE(covered(dock));
    person.click(onRegion, 1);
    ASSERT_TRUE(eventually(queue, [&] {
      return tap.types() == std::vector{EventType::leftMouseDown, EventType::leftMouseUp};
    }));
    tap.passes = true;
    // A window manager sees each click first, and may be slow to hand it on.
    const bool slow = round % 8 == 0;
    if (slow) {
      person.moveTo(onDesktop);
      desktop.signalWindowManager(SIGSTOP);
    }
    taps.post(EventTapLocation::session, *tap.held);  // covers are wanted all the while
    if (slow) {
      holdFor(queue, 60ms);
      desktop.signalWindowManager(SIGCONT);
    }
    ASSERT_TRUE(arrives(dock, click(1, onRegion)))
        << "round " << round << ": " << testing::PrintToString(dock.buttons());
    dock.forget();
    tap.seen.clear();
    tap.passes = false;
  }
}

TEST_F(X11EventTapsTest, OnlyTheTwoButtonsOverTheRegionConcernTheTap) {
  Dock dock(desktop, dockFrame);
  // A plug-in of another program inside the panel: what falls through must fall to it.
  Dock plugin(desktop, {590, 0, 120, 40}, dock.window());
  const Tap tap(taps);
  ASSERT_TRUE(eventually([&] { return plugin.covers() == 1; }));
  const std::pair<unsigned, Point> passing[]{
      {2, onRegion}, {1, {599, 580}}, {1, {700, 580}}, {3, {650, 561}}, {1, {650, 598}}};
  // One by one: of clicks without a pause the server may lose some while a window manager looks at them.
  for (const auto& [button, point] : passing) {
    person.click(point, button);
    EXPECT_TRUE(arrives(plugin, click(button, point))) << point.x << "," << point.y;
    plugin.forget();
  }
  EXPECT_THAT(tap.seen, IsEmpty());
  person.click(onRegion, 3);
  ASSERT_TRUE(eventually(queue, [&] { return tap.seen.size() == 2; }));
  EXPECT_THAT(tap.types(), ElementsAre(EventType::rightMouseDown, EventType::rightMouseUp));
  EXPECT_EQ(tap.seen[0].location, onRegion);
}

TEST_F(X11EventTapsTest, WhatTheCallbackLetsThroughArrivesPostedEventsWithTheirFieldsIncluded) {
  Dock dock(desktop, dockFrame);
  Tap tap(taps);
  tap.passes = true;
  for (const unsigned button : {1U, 3U}) {
    ASSERT_TRUE(covered(dock));
    person.click(onRegion, button);
    EXPECT_TRUE(arrives(dock, click(button, onRegion))) << testing::PrintToString(dock.buttons());
    expectNothingMoreThan(dock, click(button, onRegion));
  }
  // The dock has the last click before the queue has told of its release.
  EXPECT_TRUE(eventually(queue, [&] { return tap.seen.size() == 4; }));

  tap.passes = false;
  ASSERT_TRUE(covered(dock));
  person.click(onRegion, 1);
  ASSERT_TRUE(eventually(queue, [&] { return tap.seen.size() == 6; }));
  tap.held->setIntegerValueField(eventSourceUserData, 42);
  taps.post(EventTapLocation::session, *tap.held);
  EXPECT_EQ(tap.seen.size(), 6U) << "not inside the call";
  ASSERT_TRUE(eventually(queue, [&] { return tap.seen.size() == 7; }));
  EXPECT_EQ(tap.seen[6].mark, 42);
  expectNothingMoreThan(dock, {});  // it was dropped

  taps.post(EventTapLocation::session, *tap.held);
  tap.port->invalidate();  // nobody is left to be asked
  EXPECT_TRUE(arrives(dock, click(1, onRegion)));
}

TEST_F(X11EventTapsTest, AClickMayBeHeldForLongButComesOutOfNowhereForNobody) {
  Dock dock(desktop, dockFrame);
  Tap tap(taps);
  ASSERT_TRUE(covered(dock));
  person.moveTo(onRegion);
  person.press(1);
  ASSERT_TRUE(eventually(queue, [&] { return tap.held != nullptr; }));
  tap.passes = true;
  taps.post(EventTapLocation::session, *tap.held);
  holdFor(queue, clickLimit + 100ms);
  EXPECT_THAT(dock.buttons(), IsEmpty());
  person.release(1);
  EXPECT_TRUE(arrives(dock, click(1, onRegion))) << "given late, but at the release";
  dock.forget();

  holdFor(queue, clickLimit + 100ms);
  taps.post(EventTapLocation::session, *tap.held);  // as after a stop
  ASSERT_TRUE(eventually(queue, [&] { return tap.seen.size() == 4; }));
  expectNothingMoreThan(dock, {});
}

TEST_F(X11EventTapsTest, AClickThatNobodyHasDecidedWhenTheTapEndsIsGiven) {
  Dock dock(desktop, dockFrame);
  auto ending = std::make_unique<X11EventTaps>(
      queue, [] { return true; }, places, desktop.display());
  const Tap tap(*ending);
  ASSERT_TRUE(covered(dock));
  person.click(onRegion, 1);
  ASSERT_TRUE(queue.waitUntilPosted(5s));
  ending.reset();
  EXPECT_TRUE(arrives(dock, click(1, onRegion))) << testing::PrintToString(dock.buttons());
}

TEST_F(X11EventTapsTest, AHungMainThreadLosesNoClickAndHearsOfTheTimeOut) {
  Dock dock(desktop, dockFrame);
  Tap tap(taps);
  ASSERT_TRUE(covered(dock));
  const auto pressed = std::chrono::steady_clock::now();
  person.click(onRegion, 1);
  EXPECT_TRUE(eventually([&] { return dock.buttons().size() == 2; }));  // the queue does not run
  EXPECT_GE(std::chrono::steady_clock::now() - pressed, verdictLimit);
  EXPECT_EQ(dock.covers(), 0);

  queue.runPosted();
  EXPECT_THAT(tap.types(), ElementsAre(EventType::tapDisabledByTimeout));
  person.click(onRegion, 1);  // disabled: passes without asking
  EXPECT_TRUE(arrives(dock, {{1, true, onRegion}, {1, false, onRegion}, {1, true, onRegion}, {1, false, onRegion}}));

  tap.port->enable();
  ASSERT_TRUE(covered(dock));
  person.click(onRegion, 1);
  EXPECT_TRUE(eventually(queue, [&] { return tap.seen.size() == 3; }));
  expectNothingMoreThan(dock, dock.buttons());
}

TEST_F(X11EventTapsTest, CoversFollowThePanel) {
  auto dock = std::make_unique<Dock>(desktop, dockFrame);
  Tap tap(taps);
  ASSERT_TRUE(covered(*dock));

  // Killed with a button held on its cover.
  person.moveTo(onRegion);
  person.press(1);
  ASSERT_TRUE(eventually(queue, [&] { return tap.seen.size() == 1; }));
  dock.reset();
  person.release(1);
  EXPECT_TRUE(eventually(queue, [&] { return tap.seen.size() == 2; })) << "the release was lost";

  Dock returned(desktop, dockFrame);
  EXPECT_TRUE(covered(returned));
  person.click(onRegion, 1);
  EXPECT_TRUE(eventually(queue, [&] { return tap.seen.size() == 4; }));
  tap.port->setRegionsOfInterest({{10, 10, 50, 50}});  // nowhere near a dock
  EXPECT_TRUE(eventually([&] { return returned.covers() == 0; }));
  tap.port->setRegionsOfInterest({{650, 562, -50, 36}});
  EXPECT_TRUE(covered(returned));
  EXPECT_EQ(Tap(taps).port, nullptr) << "there is one";
  tap.port.reset();
  EXPECT_TRUE(eventually([&] { return returned.covers() == 0; }));
}

TEST_F(X11EventTapsTest, AClickOnAControlIsToldWhereItWasAndGivenWhereItIsOrToNobody) {
  const auto clock = [](double x, Rect window) {
    return ControlPlace{"clock", {window.x + x, window.y + 2, 100, 36}, {window, 0}};
  };
  constexpr Rect outOfSight{0, -40, 800, 40};  // where the reading had the dock
  const struct {
    const char* what;
    Rect read;
    ControlPlaces::List then;
    bool isBehindAnother;
    std::vector<Dock::Button> given;
  } cases[] = {
      {"stays", dockFrame, {clock(600, dockFrame)}, false, click(1, {610, 570})},
      {"moved", dockFrame, {clock(300, dockFrame)}, false, click(1, {310, 570})},
      {"read while out of sight", outOfSight, {clock(200, outOfSight)}, false, click(1, {210, 570})},
      {"gone", dockFrame, {{"another", region, {dockFrame, 0}}}, false, {}},
      {"behind another window", dockFrame, {clock(600, dockFrame)}, true, {}},
      {"in a window that is gone", dockFrame, {clock(600, {0, 0, 30, 400})}, false, {}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    Dock dock(desktop, dockFrame);
    places.note({clock(600, each.read)});
    Tap tap(taps);
    tap.port->setRegionsOfInterest({clock(600, each.read).frame});
    ASSERT_TRUE(covered(dock));
    person.click({610, 570}, 1);
    ASSERT_TRUE(eventually(queue, [&] { return tap.seen.size() == 2; }));
    EXPECT_EQ(tap.seen[0].location, (Point{610, each.read.y + 10}));
    find(std::nullopt);  // nobody knows at first
    std::optional<Dock> other;
    if (each.isBehindAnother) {
      const auto before = topLevelAt({610, 570});
      other.emplace(desktop, Rect{600, 560, 200, 40});
      ASSERT_TRUE(eventually([&] { return topLevelAt({610, 570}) != before; }));
    }
    tap.passes = true;
    taps.post(EventTapLocation::session, *tap.held);
    ASSERT_TRUE(eventually(queue, [&] { return tap.seen.size() == 3; }));
    holdFor(queue, 50ms);
    EXPECT_THAT(dock.buttons(), IsEmpty());
    find(each.then);
    EXPECT_TRUE(arrives(dock, each.given)) << testing::PrintToString(dock.buttons());
    holdFor(queue, 50ms);  // the tap puts the pointer back, and the next click brings the dock to the front again
    expectNothingMoreThan(dock, each.given);
    EXPECT_TRUE(!other || other->buttons().empty());
  }
}

TEST_F(X11EventTapsTest, NobodyElsePressesOrTakesTheCoverAway) {
  Dock dock(desktop, dockFrame);
  const Tap tap(taps);
  ASSERT_TRUE(covered(dock));
  auto* x = desktop.connection();
  const auto cover = [&] {
    const auto tree = owned(xcb_query_tree_reply(x, xcb_query_tree(x, dock.window()), nullptr));
    return xcb_query_tree_children(tree.get())[0];
  };
  xcb_button_press_event_t press{};
  press.response_type = XCB_BUTTON_PRESS;
  press.detail = 1;
  press.event = cover();
  xcb_send_event(x, 0, cover(), XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&press));
  const std::uint32_t aside[] = {0, 0};
  xcb_configure_window(x, cover(), XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, &aside[0]);
  xcb_flush(x);
  for (int round = 0; round < 2; ++round) {
    const std::size_t before = tap.seen.size();
    EXPECT_TRUE(eventually(queue, [&] {
      person.click(onRegion, 3);
      return tap.seen.size() > before;
    }));
    if (round == 0) xcb_unmap_window(x, cover());
    xcb_flush(x);
  }
  EXPECT_THAT(tap.types(), testing::Not(testing::Contains(EventType::leftMouseDown)));
}

// Holds a tap in a process of its own, as a whole Orvo would.
[[noreturn]] void holdTap(const std::string& display) {
  ManualMainQueue queue;
  const ControlPlaces nowhere([] { return std::nullopt; });
  X11EventTaps taps(
      queue, [] { return true; }, nowhere, display);
  const Tap tap(taps);
  for (;;) {
    if (queue.waitUntilPosted(60s)) queue.runPosted();
  }
}

TEST_F(X11EventTapsTest, AStoppedTapRepeatsNothingOnceItGoesOn) {
  Dock dock(desktop, dockFrame);
  const pid_t holder = fork();
  if (holder == 0) holdTap(desktop.display());
  EXPECT_TRUE(covered(dock));

  kill(holder, SIGSTOP);
  waitpid(holder, nullptr, WUNTRACED);  // all its threads
  person.click(onRegion, 1);
  holdFor(queue, clickLimit + 100ms);
  kill(holder, SIGCONT);
  EXPECT_TRUE(eventually([&] { return dock.covers() == 0; }));
  person.click(onRegion, 3);
  EXPECT_TRUE(arrives(dock, click(3, onRegion))) << testing::PrintToString(dock.buttons());
  kill(holder, SIGKILL);
  waitpid(holder, nullptr, 0);
}

}  // namespace
}  // namespace orvo
