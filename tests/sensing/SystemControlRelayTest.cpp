#include "sensing/SystemControlRelay.h"

#include "support/MemoryPlatform.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace orvo {

using std::chrono::milliseconds;
using enum EventType;

constexpr milliseconds replayDelay{180};
constexpr Point inside{1800, 0};
constexpr std::array outside{Point{1880, 10}, Point{1850, 24}, Point{1799.9, 0}, Point{1850, -0.1}};
const std::vector<Rect> frames{{1700, 0, 40, 24}, {1800, 0, 80, 24}};

// A relay in the middle of a hide, and a ledger of what it owes to the session.
struct Session {
  Session() {
    relay->onReveal = [this] {
      ++reveals;
      RC_ASSERT(taps.posted.size() == posted);
      relay->setConcealed(false);
    };
    relay->setSystemFrames(frames);
    relay->install();
    relay->setConcealed(true);
  }

  void act(unsigned action, unsigned number) {
    const bool left = number % 2 == 0;
    const EventType down = left ? leftMouseDown : rightMouseDown;
    const EventType up = left ? leftMouseUp : rightMouseUp;
    const int before = reveals;
    if (action == 0) send(down, inside);
    if (action == 1) send(down, outside.at(number % outside.size()));
    if (action == 2) send(up, outside[0]);
    if (action == 3) queue.advance(milliseconds(number));
    if (action == 4) relay->setConcealed(number % 4 > 0);
    if (action == 5) relay->setSystemFrames(left ? frames : std::vector<Rect>{});
    taps.ended = action == 6 && number % 3 == 0;
    if (action == 6) taps.disable(left ? tapDisabledByTimeout : tapDisabledByUserInput);
    if (action == 7) relay->stop();
    if (action == 8) send(left ? down : up, inside, true);
    for (MemoryEvent event : std::vector<MemoryEvent>(taps.posted)) RC_ASSERT(taps.send(event));
    // What was posted since the last time: marked, owed until now, and in order.
    for (; posted < taps.posted.size(); ++posted) {
      RC_ASSERT(taps.posted[posted].userData == 0x5155494C4C4554);
      RC_ASSERT(!owed.empty() && owed.begin()->first == taps.posted[posted].serial);
      owed.erase(owed.begin());
    }
    for (const auto& [serial, since] : owed) RC_ASSERT(queue.now() - since < replayDelay);
    RC_ASSERT(action < 6 || action > 7 || owed.empty());
    RC_ASSERT(action != 6 || (reveals == before + 1 && taps.enabled != taps.ended));
    RC_ASSERT(relay->isInstalled() == (action != 7 && !taps.ended));
    relay->install();
    // Where the system asks about these alone, the relay hears of every press that it would hold.
    RC_ASSERT(taps.regions == (relay->isConcealed() ? relay->systemFrames() : std::vector<Rect>{}));
  }

  // Enters a dropped event into the ledger; a press replaces all that is still owed.
  void send(EventType type, Point point, bool copyFails = false) {
    MemoryEvent event(type, point, ++sent);
    event.copyFails = copyFails;
    const bool press = type == leftMouseDown || type == rightMouseDown;
    const bool holds = !copyFails && (press ? relay->isConcealed() && !relay->systemFrames().empty() && point == inside
                                            : awaited == type);
    const int before = reveals;
    RC_ASSERT(taps.send(event) != holds);
    RC_ASSERT(reveals == before + (press && holds ? 1 : 0));
    RC_ASSERT(event.userData == 0);
    if (!holds) return;
    if (press) owed.clear();
    awaited = press ? (type == leftMouseDown ? leftMouseUp : rightMouseUp) : EventType{};
    owed.emplace(event.serial, queue.now());
  }

  ManualMainQueue queue;
  MemoryEventTaps taps;
  std::shared_ptr<SystemControlRelay> relay = SystemControlRelay::make(taps, queue);
  int reveals = 0, sent = 0;
  std::size_t posted = 0;
  // Serial number and the time at which it was held back.
  std::map<int, milliseconds> owed;
  EventType awaited{};
};

RC_GTEST_PROP(SystemControlRelayTest, PostsEveryHeldEventOnceMarkedAndInOrderUnlessANewerPressReplacesIt, ()) {
  Session session;
  // Of full size from the first on, since small ranges of actions leave the later ones out.
  const auto step = rc::gen::pair(rc::gen::inRange(0U, 9U), rc::gen::inRange(0U, 250U));
  for (const auto& [action, number] :
       *rc::gen::resize(100, rc::gen::container<std::vector<std::pair<unsigned, unsigned>>>(step)))
    session.act(action, number);
  session.act(3, 180);
  RC_ASSERT(session.owed.empty());
}

TEST(SystemControlRelayTest, HoldsAClickFor180MillisecondsOnTheMainThreadAloneAndForNobodyOnceItIsGone) {
  Session session;
  EXPECT_DEATH(std::thread([&] { session.taps.press(inside); }).join(), "");
  session.send(leftMouseDown, inside);
  session.queue.advance(replayDelay - milliseconds(1));
  EXPECT_TRUE(session.taps.posted.empty());
  session.relay.reset();
  session.queue.advance(replayDelay);
  EXPECT_TRUE(session.taps.posted.empty() && !session.taps.valid);
}

}  // namespace orvo
