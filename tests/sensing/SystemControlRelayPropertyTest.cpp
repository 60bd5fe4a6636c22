#include "sensing/SystemControlRelay.h"

#include "support/ManualMainQueue.h"
#include "support/MemoryEventTaps.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <map>

namespace orvo {
namespace {

using std::chrono::milliseconds;
using enum EventType;

constexpr std::int64_t marker = 0x5155494C4C4554;
constexpr milliseconds replayDelay{180};
constexpr std::size_t actionCount = 10;
constexpr Point inside{1800, 0};
constexpr std::array outside{Point{1880, 10}, Point{1850, 24}, Point{1799.9, 0}, Point{1850, -0.1}};
const std::vector<Rect> frames{{1700, 0, 40, 24}, {1800, 0, 80, 24}};

// What a step does, a number that it may use, such as milliseconds.
using Steps = std::vector<std::pair<std::size_t, unsigned>>;

// A relay under random events, with a ledger of what it owes to the session.
class Session {
 public:
  Session() {
    relay_->onReveal = [this] {
      ++reveals_;
      RC_ASSERT(taps_.posted.size() == posted_);
      relay_->setConcealed(false);
    };
    relay_->setSystemFrames(frames);
    relay_->install();
    relay_->setConcealed(true);
  }

  void run(const Steps& steps) {
    for (const auto& [action, number] : steps) {
      act(action, number);
      settle();
      // Where the system asks about these alone, the relay hears of every press that it would hold.
      RC_ASSERT(taps_.regions == (relay_->isConcealed() ? relay_->systemFrames() : std::vector<Rect>{}));
    }
    turn(replayDelay);
    RC_ASSERT(owed_.empty());
  }

 private:
  void act(std::size_t action, unsigned number) {
    const bool left = number % 2 == 0;
    const EventType down = left ? leftMouseDown : rightMouseDown;
    const EventType up = left ? leftMouseUp : rightMouseUp;
    const std::function<void()> actions[actionCount]{
        [&] { send(down, inside); },
        [&] { send(down, outside.at(number % outside.size())); },
        [&] { send(up, outside[0]); },
        [&] { turn(milliseconds(number)); },
        [&] { relay_->setConcealed(number % 4 > 0); },
        [&] { relay_->setSystemFrames(left ? frames : std::vector<Rect>{}); },
        [&] { disable(left ? tapDisabledByTimeout : tapDisabledByUserInput); },
        [&] { restart(); },
        [&] { sendUncopied(left ? down : up); },
        [&] {
          for (MemoryEvent event : std::vector<MemoryEvent>(taps_.posted)) RC_ASSERT(taps_.send(event));
        }};
    actions[action]();
  }

  void disable(EventType reason) {
    const int before = reveals_;
    taps_.disable(reason);
    settle();
    RC_ASSERT(reveals_ == before + 1);
    RC_ASSERT(taps_.enabled);
    RC_ASSERT(owed_.empty());
  }
  void restart() {
    relay_->stop();
    settle();
    RC_ASSERT(owed_.empty());
    relay_->install();
  }
  void sendUncopied(EventType type) {
    MemoryEvent event(type, inside);
    event.copyFails = true;
    RC_ASSERT(taps_.send(event));
  }
  void turn(milliseconds time) {
    queue_.advance(time);
    settle();
    for (const auto& [serial, since] : owed_) RC_ASSERT(queue_.now() - since < replayDelay);
  }

  // Enters a dropped event into the ledger; a press replaces all that is still owed.
  void send(EventType type, Point point) {
    MemoryEvent event(type, point, ++sent_);
    const bool press = type == leftMouseDown || type == rightMouseDown;
    const bool holds = relay_->isConcealed() && !relay_->systemFrames().empty() && point == inside;
    const int before = reveals_;
    const bool passed = taps_.send(event);
    RC_ASSERT(passed != (press ? holds : awaited_ == type));
    RC_ASSERT(reveals_ == before + (press && holds ? 1 : 0));
    RC_ASSERT(event.userData == 0);
    if (passed) return;
    if (press) owed_.clear();
    awaited_ = press ? (type == leftMouseDown ? leftMouseUp : rightMouseUp) : EventType{};
    owed_.emplace(event.serial, queue_.now());
  }

  // Strikes out what was posted since the last time: marked, owed until now, and in order.
  void settle() {
    for (; posted_ < taps_.posted.size(); ++posted_) {
      const MemoryEvent& event = taps_.posted[posted_];
      RC_ASSERT(event.userData == marker);
      RC_ASSERT(!owed_.empty());
      RC_ASSERT(owed_.begin()->first == event.serial);
      owed_.erase(owed_.begin());
    }
  }

  ManualMainQueue queue_;
  MemoryEventTaps taps_;
  std::shared_ptr<SystemControlRelay> relay_ = SystemControlRelay::make(taps_, queue_);
  int reveals_ = 0;
  int sent_ = 0;
  std::size_t posted_ = 0;
  // Serial number and the time at which it was held back.
  std::map<int, milliseconds> owed_;
  EventType awaited_{};
};

RC_GTEST_PROP(SystemControlRelayProperty, PostsEveryHeldEventOnceMarkedAndInOrderUnlessANewerPressReplacesIt, ()) {
  // Of full size from the first on, since small ranges of actions leave the later ones out.
  const auto step = rc::gen::pair(rc::gen::inRange(std::size_t{0}, actionCount), rc::gen::inRange(0U, 250U));
  Session().run(*rc::gen::resize(100, rc::gen::container<Steps>(step)));
}

}  // namespace
}  // namespace orvo
