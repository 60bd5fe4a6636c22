#include "sensing/SystemControlRelay.h"

#include "support/ManualMainQueue.h"
#include "support/MemoryEventTaps.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <map>
#include <utility>
#include <vector>

namespace orvo {
namespace {

using std::chrono::milliseconds;
using enum EventType;

constexpr std::int64_t marker = 0x5155494C4C4554;
constexpr milliseconds replayDelay{180};
constexpr Point inside{1850, 10};
constexpr Point outside{10, 10};

// What a step does and a number that it may use, such as milliseconds.
using Step = std::pair<int, int>;
using Steps = std::vector<Step>;

// The last two are left out where regions are honoured: there a replay does not come back, and an up
// that could not be copied is not asked about again.
enum Action {
  downInside,
  downOutside,
  up,
  turnClock,
  conceal,
  reveal,
  frames,
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
      relay_->setConcealed(false);
    };
    relay_->setSystemFrames({{1800, 0, 80, 24}});
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

  const std::vector<bool>& verdicts() const { return verdicts_; }
  std::vector<int> posted() const {
    std::vector<int> serials;
    for (const MemoryEvent& event : taps_.posted) serials.push_back(event.serial);
    return serials;
  }

 private:
  void act(Action action, int number) {
    const bool left = number % 2 == 0;
    const EventType down = left ? leftMouseDown : rightMouseDown;
    switch (action) {
      case downInside:
      case downOutside:
        return send({down, action == downInside ? inside : outside});
      case up:
        return send({left ? leftMouseUp : rightMouseUp, inside});
      case turnClock:
        return turn(milliseconds(number));
      case conceal:
      case reveal:
        return relay_->setConcealed(action == conceal);
      case frames:
        return relay_->setSystemFrames(left ? std::vector<Rect>{{1800, 0, 80, 24}} : std::vector<Rect>{});
      case disable:
        return taps_.disable(left ? tapDisabledByTimeout : tapDisabledByUserInput);
      case restart:
        relay_->stop();
        return relay_->install();
      case uncopied: {
        MemoryEvent event(left ? down : leftMouseUp, inside);
        event.copyFails = true;
        RC_ASSERT(taps_.send(event));
        return;
      }
      case comeBack:
        for (MemoryEvent event : std::vector<MemoryEvent>(taps_.posted)) RC_ASSERT(taps_.send(event));
        return;
      case actions:
        return;
    }
  }

  void turn(milliseconds time) {
    queue_.advance(time);
    settle();
    for (const auto& [serial, since] : owed_) RC_ASSERT(queue_.now() - since < replayDelay);
  }

  // Enters a dropped event into the ledger; a press replaces all that is still owed.
  void send(MemoryEvent event) {
    event.serial = ++serial_;
    const bool press = event.type == leftMouseDown || event.type == rightMouseDown;
    const bool mayHold = relay_->isConcealed() && !relay_->systemFrames().empty() && event.point == inside;
    const int before = reveals_;
    const bool passed = taps_.send(event);
    verdicts_.push_back(passed);
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
    for (; settled_ < taps_.posted.size(); ++settled_) {
      const MemoryEvent& event = taps_.posted[settled_];
      RC_ASSERT(event.integerValueField(eventSourceUserData) == marker);
      RC_ASSERT(!owed_.empty());
      RC_ASSERT(owed_.begin()->first == event.serial);
      owed_.erase(owed_.begin());
    }
  }

  ManualMainQueue queue_;
  MemoryEventTaps taps_;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
  int reveals_ = 0;
  int serial_ = 0;
  std::vector<bool> verdicts_;
  // Serial number and the time at which it was held back.
  std::map<int, milliseconds> owed_;
  EventType awaited_{};
  std::size_t settled_ = 0;
};

Steps anySteps(int actionCount) {
  return *rc::gen::container<Steps>(rc::gen::pair(rc::gen::inRange(0, actionCount), rc::gen::inRange(0, 250)));
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
  RC_ASSERT(all.verdicts() == regions.verdicts());
  RC_ASSERT(all.posted() == regions.posted());
}

}  // namespace
}  // namespace orvo
