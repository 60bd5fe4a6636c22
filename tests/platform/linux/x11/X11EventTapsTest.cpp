#include "platform/linux/x11/X11EventTaps.h"

#include "person/Person.h"
#include "platform/linux/x11/TapThread.h"
#include "platform/linux/x11/TestDesktop.h"
#include "sensing/SystemControlRelay.h"
#include "support/ManualMainQueue.h"

#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

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
  X11EventTaps taps{queue, [] { return true; }, desktop.display()};
};

TEST_F(X11EventTapsTest, EachGuardedClickReachesItsControlExactlyOnceThroughTheRelay) {
  struct Case {
    unsigned button;
    std::chrono::milliseconds hold;
    bool movesAway;
  };
  Dock dock(desktop, dockFrame);
  const auto relay = SystemControlRelay::make(taps, queue);
  int reveals = 0;
  relay->onReveal = [&] {
    ++reveals;
    relay->setConcealed(false);
  };
  relay->setSystemFrames({region});
  relay->install();
  ASSERT_TRUE(relay->isInstalled());

  for (const auto& [button, hold, movesAway] : std::vector<Case>{{1, 50ms, false},
                                                                 {3, 50ms, true},
                                                                 {1, 300ms, true},
                                                                 {3, 300ms, false},
                                                                 {1, 1000ms, false},
                                                                 {3, 1000ms, true}}) {
    SCOPED_TRACE(testing::Message() << "button " << button << " held " << hold.count() << " ms, moves " << movesAway);
    reveals = 0;
    relay->setConcealed(true);
    ASSERT_TRUE(covered(dock));
    person.moveTo(onRegion);
    person.press(button);
    holdFor(queue, hold / 2);
    const Point end = movesAway ? onDesktop : onRegion;
    person.moveTo(end);
    holdFor(queue, hold / 2);
    EXPECT_THAT(dock.buttons(), IsEmpty()) << "before the button is up";
    person.release(button);

    EXPECT_TRUE(arrives(dock, click(button, onRegion))) << testing::PrintToString(dock.buttons());
    EXPECT_TRUE(eventually(queue, [&] { return person.pointer() == end; }));
    EXPECT_EQ(reveals, 1);
    EXPECT_EQ(dock.covers(), 0);
    expectNothingMoreThan(dock, click(button, onRegion));
  }
  relay->stop();
}

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
  Tap tap(taps);
  ASSERT_TRUE(eventually([&] { return plugin.covers() == 1; }));

  person.moveTo(onRegion);
  person.turnWheel();
  person.press(2);
  person.release(2);
  EXPECT_TRUE(arrives(plugin, {{5, true, onRegion}, {5, false, onRegion}, {2, true, onRegion}, {2, false, onRegion}}));

  const std::vector<Point> outside = {{599, 580}, {700, 580}, {650, 561}, {650, 598}};
  for (const Point point : outside) person.click(point, 1);
  EXPECT_TRUE(eventually([&] { return dock.buttons().size() + plugin.buttons().size() == 4U + 8U; }));
  EXPECT_THAT(tap.seen, IsEmpty());

  person.click(onRegion, 3);
  ASSERT_TRUE(eventually(queue, [&] { return tap.seen.size() == 2; }));
  EXPECT_EQ(tap.seen[0].type, EventType::rightMouseDown);
  EXPECT_EQ(tap.seen[0].location, onRegion);
  EXPECT_EQ(tap.seen[1].type, EventType::rightMouseUp);
}

TEST_F(X11EventTapsTest, APressThatTheCallbackLetsThroughArrives) {
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
  EXPECT_TRUE(eventually(queue, [&] { return tap.seen.size() >= 4; }));
  EXPECT_THAT(tap.types(), ElementsAre(EventType::leftMouseDown, EventType::leftMouseUp, EventType::rightMouseDown,
                                       EventType::rightMouseUp));
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

TEST_F(X11EventTapsTest, APostedEventIsShownWithItsFieldsBeforeItGoesOn) {
  Dock dock(desktop, dockFrame);
  Tap tap(taps);
  ASSERT_TRUE(covered(dock));
  person.click(onRegion, 1);
  ASSERT_TRUE(eventually(queue, [&] { return tap.seen.size() == 2; }));
  tap.seen.clear();

  tap.held->setIntegerValueField(eventSourceUserData, 42);
  taps.post(EventTapLocation::session, *tap.held);
  EXPECT_THAT(tap.seen, IsEmpty()) << "not inside the call";
  ASSERT_TRUE(eventually(queue, [&] { return tap.seen.size() == 1; }));
  EXPECT_EQ(tap.seen[0].mark, 42);
  expectNothingMoreThan(dock, {});  // it was dropped

  taps.post(EventTapLocation::session, *tap.held);
  tap.port->invalidate();  // nobody is left to be asked
  EXPECT_TRUE(arrives(dock, click(1, onRegion)));
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
  tap.port.reset();
  EXPECT_TRUE(eventually([&] { return returned.covers() == 0; }));
}

TEST_F(X11EventTapsTest, NoTapWithoutTrustOrServerOrBesideAnother) {
  Tap first(taps);
  const auto make = [&](X11EventTaps& from) {
    return from.create(EventTapLocation::session, EventTapPlacement::headInsert, EventTapOptions::activeFilter, 0x1E,
                       &Tap::callback, &first);
  };
  X11EventTaps untrusted(
      queue, [] { return false; }, desktop.display());
  X11EventTaps nowhere(
      queue, [] { return true; }, ":63000");
  EXPECT_EQ(make(taps), nullptr);
  EXPECT_EQ(make(untrusted), nullptr);
  EXPECT_EQ(make(nowhere), nullptr);
  first.port.reset();
  EXPECT_NE(make(taps), nullptr);
}

TEST(X11EventTapsServerTest, AServerThatDiesTakesNothingWithIt) {
  TestDesktop desktop;
  ManualMainQueue queue;
  X11EventTaps taps(
      queue, [] { return true; }, desktop.display());
  Tap tap(taps);
  desktop.stopServer();
  tap.port->setRegionsOfInterest({});
  EXPECT_TRUE(eventually(queue, [&] {
    tap.port.reset();
    tap.port = taps.create(EventTapLocation::session, EventTapPlacement::headInsert, EventTapOptions::activeFilter,
                           0x1E, &Tap::callback, &tap);
    return tap.port == nullptr;
  }));
}

// Another process that holds the tap, as a whole Orvo would.
class TapHolder {
 public:
  explicit TapHolder(const TestDesktop& desktop) : process_(fork()) {
    if (process_ == 0) hold(desktop.display());
  }
  ~TapHolder() {
    signal(SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  TapHolder(const TapHolder&) = delete;
  TapHolder& operator=(const TapHolder&) = delete;

  void signal(int number) const { kill(process_, number); }

 private:
  [[noreturn]] static void hold(const std::string& display) {
    ManualMainQueue queue;
    X11EventTaps taps(
        queue, [] { return true; }, display);
    const Tap tap(taps);
    for (;;) {
      if (queue.waitUntilPosted(60s)) queue.runPosted();
    }
  }

  pid_t process_;
};

TEST(X11EventTapsProcessTest, AStoppedOrKilledTapFreezesNothingAndRepeatsNothing) {
  TestDesktop desktop;
  desktop.startWindowManager();
  TapHolder holder(desktop);
  Person person(desktop.display());
  Dock dock(desktop, dockFrame);
  ASSERT_TRUE(eventually([&] { return dock.covers() == 1; }));

  holder.signal(SIGSTOP);
  const auto stopped = std::chrono::steady_clock::now();
  person.click(onRegion, 1);  // dead, and the only thing that is
  person.click(besideRegion, 1);
  EXPECT_TRUE(eventually([&] { return dock.buttons() == click(1, besideRegion); }));
  dock.forget();
  person.moveTo(onRegion);
  person.turnWheel();
  EXPECT_TRUE(eventually([&] { return dock.buttons().size() == 2; }));
  dock.forget();

  // Long after the click the tap gives up rather than to bring it back.
  EXPECT_TRUE(eventually([&] { return std::chrono::steady_clock::now() - stopped > verdictLimit + 100ms; }));
  holder.signal(SIGCONT);
  EXPECT_TRUE(eventually([&] { return dock.covers() == 0; }));
  person.click(onRegion, 3);
  EXPECT_TRUE(eventually([&] { return dock.buttons() == click(3, onRegion); }))
      << testing::PrintToString(dock.buttons());
}

TEST(X11EventTapsProcessTest, CoversGoWithTheProcessThatLaidThem) {
  TestDesktop desktop;
  desktop.startWindowManager();
  TapHolder holder(desktop);
  Person person(desktop.display());
  Dock dock(desktop, dockFrame);
  ASSERT_TRUE(eventually([&] { return dock.covers() == 1; }));
  holder.signal(SIGKILL);
  EXPECT_TRUE(eventually([&] { return dock.covers() == 0; }));
  person.click(onRegion, 1);
  EXPECT_TRUE(eventually([&] { return dock.buttons() == click(1, onRegion); }));
}

TEST_F(X11EventTapsTest, AGuardedClickOnTheRealPanelsClockOpensItsCalendarOnce) {
  desktop.startPanel();
  const auto relay = SystemControlRelay::make(taps, queue);
  relay->onReveal = [&] { relay->setConcealed(false); };
  relay->install();
  for (int restart = 0; restart < 2; ++restart) {
    const Rect clock = desktop.clockFrame();
    const Point onClock{clock.x + clock.width / 2, clock.y + clock.height / 2};
    relay->setSystemFrames({clock});
    relay->setConcealed(true);
    if (restart == 1) {
      desktop.stopPanel();
      desktop.startPanel();
    }
    for (const auto hold : {50ms, 300ms}) {
      relay->setConcealed(true);
      holdFor(queue, 100ms);
      person.moveTo(onClock);
      person.press(1);
      holdFor(queue, hold);
      EXPECT_EQ(desktop.openPanelWindows(), 0);
      person.release(1);
      EXPECT_TRUE(eventually(queue, [&] { return desktop.openPanelWindows() == 1; }));
      EXPECT_FALSE(relay->isConcealed());
      // A second click of ours would have closed it before this one does.
      person.click(onClock, 1);
      EXPECT_TRUE(eventually(queue, [&] { return desktop.openPanelWindows() == 0; }));
    }
  }
  relay->stop();
}

}  // namespace
}  // namespace orvo
