// Random sequences of everything that can happen to the model, against what must hold after each step
// and at every moment at which a bystander can look.
#include "support/World.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace orvo {

using namespace std::chrono_literals;
using enum BarState;

// Steps of the world, the first one seldom, beside answers, times and clicks.
const std::vector<std::string> worldSteps{
    "stop",    "hide",    "hide",    "reveal",    "peek",    "press",     "settle",  "settle",   "task",
    "scan",    "launch",  "exit",    "sleep",     "wake",    "layout",    "screens", "hostends", "refresh",
    "pickone", "dropone", "picktwo", "untrusted", "trusted", "notaps",    "taps",    "null",     "broken",
    "whole",   "delay0",  "delay2",  "controls",  "onlytwo", "otherhides"};

class Machine : public World {
 public:
  Machine() {
    model->onStateChanged = [this] { stateChanged(); };
    memory.framework.onActivate = [this](std::size_t number) {
      must(model->state() == applying && announced == number, "asks before the bar says so");
      current = issued = number;
      since = memory.mainQueue.now();
    };
    memory.framework.onInvalidate = [this] {
      must(model->state() != visible, "visible with an assertion");
      must(model->state() != hidden || active() == 1, "hidden with an older assertion");
    };
  }
  // What the hooks use goes before the model.
  ~Machine() { memory.framework.onInvalidate = nullptr; }

  void must(bool holds, const char* otherwise) {
    if (!holds) broken = otherwise;
  }
  std::size_t active() const { return memory.framework.active(); }

  void happen(unsigned which, unsigned choice) {
    const bool rare = which == 0 && choice % 8 > 0;
    const bool wasGuarded = guarded();
    if (which < worldSteps.size()) return rare ? void() : play(worldSteps[which]);
    if (which % 7 == 0) return memory.mainQueue.advance(choice % 8 * 1s);
    if (which % 7 == 1) return memory.mainQueue.advance(choice % 20 * 1s, true);
    if (which % 7 > 3) return answer(choice, which % 7 == 4, which % 7 == 6);
    play(which % 7 == 2 ? "click" : "losttap");
    must(model->state() == visible || (which % 7 == 2 ? !wasGuarded : !memory.eventTaps.valid), "controls are lost");
  }

  // The first answer to a request counts, given here or on another thread.
  void answer(unsigned choice, bool denies, bool settles) {
    if (requests() == 0) return;
    const std::size_t number = choice % 2 == 0 ? requests() - 1 : choice % requests();
    if (!confirmed.contains(number) && !denied.contains(number)) (denies ? denied : confirmed).insert(number);
    const auto give = [&] { memory.framework.answer(number, denies ? std::optional(notNow) : std::nullopt); };
    choice % 3 == 0 ? std::thread(give).join() : give();
    if (settles) settle();
  }
  void settle() {
    memory.settle();
    must(!current || !denied.contains(*current), "deaf to a refusal");
    must(!current || !confirmed.contains(*current) || model->state() == hidden, "deaf to a confirmation");
  }

  void stateChanged() {
    told = model->state();
    if (told == visible) {
      current.reset();
      must(!guarded(), "told before the controls are free");
    } else if (told == applying) {
      announced = requests();
      must(message().empty(), "a request under an old message");
    }
    if (told != applying) look();
  }

  // What holds whenever nothing of the model is on the stack, and when the bar is told visible or hidden.
  void look() {
    const BarState state = model->state();
    must(told == state, "changed without a word");
    must(state == visible ? active() == 0 : active() >= 1, "holds what it should not, or nothing");
    must(state == visible || !memory.framework.activations[*current].concealing.expired(), "lost the latest");
    must(state != hidden || active() == 1, "hidden by more than one");
    must(state != hidden || confirmed.contains(*current), "hidden without its own confirmation");
    must(state != applying || memory.mainQueue.now() - since < 5s, "applying for ever");
    must(guarded() == (state != visible && model->systemClickProtection()), "guards the wrong thing");
    must(message() != "Could not hide icons: not now" || denied.contains(issued), "another request's refusal");
    must(message() != macWords.hidingUnconfirmed || memory.mainQueue.now() - since >= 5s, "another request's time-out");
  }

  // Numbers of requests: answered without and with an error; told to the bar; under way or in force; issued last.
  std::set<std::size_t> confirmed, denied;
  std::optional<std::size_t> announced, current;
  std::size_t issued = 0;
  BarState told = visible;
  MainQueue::Duration since{};
  // What did not hold.
  std::string broken;
};

TEST(OrvoModelPropertyTest, NoSequenceOfEventsLeavesAnAssertionBehindOrTheBarInDoubt) {
  using Choices = std::vector<std::pair<unsigned, unsigned>>;
  const auto holds = [](const Choices& choices) {
    Machine machine;
    for (const auto& [which, choice] : choices) {
      RC_LOG() << (which < worldSteps.size() ? worldSteps[which] : std::to_string(which % 7)) << ' ' << choice << '\n';
      machine.happen(which, choice);
      machine.look();
      RC_ASSERT(machine.broken == "");
    }
    const bool goes = choices.size() % 2 == 1;
    if (goes) machine.memory.framework.onInvalidate = nullptr;
    goes ? machine.delegate.reset() : machine.model->stop();
    machine.play("settle 180ms launch screens");  // The time in which a held click is replayed.
    RC_ASSERT(!machine.memory.mainQueue.wakeTime() && !machine.memory.mainQueue.runOne());
    RC_ASSERT(machine.memory.hotKeys.hotKeys == (goes ? 0 : 1));
    RC_ASSERT(machine.active() == 0U && !machine.memory.eventTaps.valid);
    if (!goes) machine.look();
    for (std::size_t number = 0; number < machine.requests(); ++number) machine.memory.framework.answer(number);
    machine.delegate.reset();
    RC_ASSERT(machine.memory.framework.liveObjects() == 0U && machine.broken.empty());
  };
  const auto courses = rc::gen::container<Choices>(rc::gen::pair(rc::gen::inRange(0U, 47U), rc::gen::inRange(0U, 24U)));
  EXPECT_TRUE(rc::check([&] { holds(*rc::gen::resize(200, courses)); }));
}

}  // namespace orvo
