#include "sensing/SystemControlRelay.h"

#include "support/ManualMainQueue.h"
#include "support/MemoryEventTaps.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <map>

namespace orvo {
namespace {

using std::chrono::milliseconds;
using enum EventType;

constexpr std::int64_t marker = 0x5155494C4C4554;
constexpr milliseconds replayDelay{180};
constexpr Point inside{1850, 10};
constexpr Point outside{10, 10};
const std::vector<Rect> frames{{1800, 0, 80, 24}};

// What a step does and a number that it may use, such as milliseconds.
using Steps = std::vector<std::pair<int, int>>;

// The last two are left out where regions are honoured: there a replay does not come back, and an up
// that could not be copied is not asked about again.
enum Action {
  downInside,
  downOutside,
  up,
  turnClock,
  conceal,
  reveal,
  setFrames,
  disable,
  restart,
  uncopied,
  comeBack,
  actions
};

// A relay under random events, with a ledger of what it owes to the session.
class Session {
 public:
  explicit Session(bool honoursRegions) {
    taps_.honoursRegions = honoursRegions;
    relay_->onReveal = [this] {
      ++reveals_;
      settle();
      relay_->setConcealed(false);
    };
    relay_->setSystemFrames(frames);
    relay_->install();
    relay_->setConcealed(true);
  }

  void run(const Steps& steps) {
    for (const auto& [action, number] : steps) {
      act(static_cast<Action>(action), number);
      settle();
    }
    turn(replayDelay);
    RC_ASSERT(owed_.empty());
  }

  std::vector<bool> verdicts;
  // By serial number.
  std::vector<int> posted;

 private:
  void act(Action action, int number) {
    const bool left = number % 2 == 0;
    const EventType down = left ? leftMouseDown : rightMouseDown;
    const int before = reveals_;
    if (action == downInside || action == downOutside) send({down, action == downInside ? inside : outside});
    if (action == up) send({left ? leftMouseUp : rightMouseUp, inside});
    if (action == turnClock) turn(milliseconds(number));
    if (action == conceal || action == reveal) relay_->setConcealed(action == conceal);
    if (action == setFrames) relay_->setSystemFrames(left ? frames : std::vector<Rect>{});
    if (action == disable) {
      taps_.disable(left ? tapDisabledByTimeout : tapDisabledByUserInput);
      RC_ASSERT(reveals_ == before + 1);
    }
    if (action == restart) {
      relay_->stop();
      settle();
      RC_ASSERT(owed_.empty());
      relay_->install();
    }
    if (action == uncopied) {
      MemoryEvent event(left ? down : leftMouseUp, inside);
      event.copyFails = true;
      RC_ASSERT(taps_.send(event));
    }
    if (action == comeBack) {
      for (MemoryEvent event : std::vector<MemoryEvent>(taps_.posted)) RC_ASSERT(taps_.send(event));
    }
  }

  void turn(milliseconds time) {
    queue_.advance(time);
    settle();
    for (const auto& [serial, since] : owed_) RC_ASSERT(queue_.now() - since < replayDelay);
  }

  // Enters a dropped event into the ledger; a press replaces all that is still owed.
  void send(MemoryEvent event) {
    event.serial = static_cast<int>(verdicts.size());
    const bool press = event.type == leftMouseDown || event.type == rightMouseDown;
    const bool mayHold = relay_->isConcealed() && !relay_->systemFrames().empty() && event.point == inside;
    const int before = reveals_;
    const bool passed = taps_.send(event);
    verdicts.push_back(passed);
    if (press) RC_ASSERT(passed != mayHold);
    RC_ASSERT(reveals_ == before + (press && !passed ? 1 : 0));
    if (passed) return;
    if (press) owed_.clear();
    if (!press) RC_ASSERT(awaited_ == event.type);
    awaited_ = press ? (event.type == leftMouseDown ? leftMouseUp : rightMouseUp) : EventType{};
    owed_.emplace(event.serial, queue_.now());
  }

  // Strikes out what was posted since the last time: marked, owed until now, and in order.
  void settle() {
    while (posted.size() < taps_.posted.size()) {
      const MemoryEvent& event = taps_.posted[posted.size()];
      RC_ASSERT(event.userData == marker);
      RC_ASSERT(!owed_.empty());
      RC_ASSERT(owed_.begin()->first == event.serial);
      owed_.erase(owed_.begin());
      posted.push_back(event.serial);
    }
  }

  ManualMainQueue queue_;
  MemoryEventTaps taps_;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
  int reveals_ = 0;
  // Serial number and the time at which it was held back.
  std::map<int, milliseconds> owed_;
  EventType awaited_{};
};

// Of full size from the first on, since small ranges of actions leave the later ones out.
Steps anySteps(int actionCount) {
  return *rc::gen::resize(
      100, rc::gen::container<Steps>(rc::gen::pair(rc::gen::inRange(0, actionCount), rc::gen::inRange(0, 250))));
}

RC_GTEST_PROP(SystemControlRelayProperty, PostsEveryHeldEventOnceMarkedAndInOrderUnlessANewerPressReplacesIt, ()) {
  Session(false).run(anySteps(actions));
}

RC_GTEST_PROP(SystemControlRelayProperty, DecidesTheSameWhereTheSystemAsksAboutItsRegionsAlone, ()) {
  const Steps steps = anySteps(uncopied);
  Session all(false);
  Session regions(true);
  all.run(steps);
  regions.run(steps);
  RC_ASSERT(all.verdicts == regions.verdicts);
  RC_ASSERT(all.posted == regions.posted);
}

}  // namespace
}  // namespace orvo
