// Random sequences of everything that can happen to the model, against what must hold after each step
// and at every moment at which a bystander can look.
#include "model/ModelFixture.h"

#include <rapidcheck.h>

#include <set>
#include <thread>

namespace orvo {
namespace {

using enum BarState;
using Step = MemoryFramework::Step;

class Machine : public ModelFixture {
 public:
  struct Event {
    const char* name;
    void (*happens)(Machine&, unsigned choice);
  };
  static const std::vector<Event>& events();

  Machine() {
    model->onStateChanged = [this] { stateChanged(); };
    memory.framework.onActivate = [this](std::size_t number) {
      must(model->state() == applying && current == number, "asks before the bar says so");
    };
    memory.framework.raises[Step::invalidate] = [this] {
      must(model->state() != visible, "visible with an assertion");
      must(model->state() != hidden || active() == 1, "hidden with an older assertion");
    };
  }
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  // What the hooks use goes before the model.
  ~Machine() { memory.framework.raises.clear(); }

  void must(bool holds, const char* otherwise) {
    if (!holds) broken = otherwise;
  }

  // The first answer to a request counts, given here or on another thread.
  void answer(unsigned choice, const std::optional<FrameworkError>& error) {
    if (requests() == 0) return;
    const std::size_t number = choice % 2 == 0 ? requests() - 1 : choice % requests();
    if (!confirmed.contains(number) && !denied.contains(number)) (error ? denied : confirmed).insert(number);
    if (choice % 3 == 0) {
      std::thread([&] { memory.framework.answer(number, error); }).join();
    } else {
      memory.framework.answer(number, error);
    }
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
      current = issued = requests();
      since = memory.mainQueue.now();
      must(message().empty(), "a request under an old message");
    }
    if (told != applying) look();
  }

  // What holds whenever nothing of the model is on the stack, and when the bar is told visible or hidden.
  void look() {
    const BarState state = model->state();
    must(told == state, "changed without a word");
    must(state == visible ? active() == 0 : active() >= 1, "holds what it should not, or nothing");
    must(state == visible || memory.framework.active().back().assertion == assertion(*current), "lost the latest");
    must(state != hidden || active() == 1, "hidden by more than one");
    must(state != hidden || confirmed.contains(*current), "hidden without its own confirmation");
    must(state != applying || memory.mainQueue.now() - since < timeout, "applying for ever");
    must(guarded() == (state != visible && model->systemClickProtection()), "guards the wrong thing");
    must(message() != refused || denied.contains(issued), "another request's refusal");
    must(message() != timedOut || memory.mainQueue.now() - since >= timeout, "another request's time-out");
  }
  const FrameworkObject* assertion(std::size_t number) const {
    return number < requests() ? memory.framework.activations[number].assertion : nullptr;
  }

  // Numbers of requests: answered without and with an error; under way or in force; issued last.
  std::set<std::size_t> confirmed;
  std::set<std::size_t> denied;
  std::optional<std::size_t> current;
  BarState told = visible;
  std::size_t issued = 0;
  MainQueue::Duration since{};
  // What did not hold.
  std::string broken;
};

const std::vector<Machine::Event>& Machine::events() {
  using M = Machine;
  static const std::vector<Event> all{
      {"hide", [](M& m, unsigned) { m.model->hideSelected(); }},
      {"hide again", [](M& m, unsigned) { m.model->hideSelected(); }},
      {"reveal", [](M& m, unsigned choice) { m.model->reveal(choice % 2 == 0); }},
      {"shortcut", [](M& m, unsigned) { m.memory.hotKeys.press(); }},
      {"confirm", [](M& m, unsigned choice) { m.answer(choice, std::nullopt); }},
      {"confirm the last", [](M& m, unsigned) { m.answer(0, std::nullopt), m.settle(); }},
      {"refuse", [](M& m, unsigned choice) { m.answer(choice, refusal); }},
      {"settle", [](M& m, unsigned) { m.settle(); }},
      {"one task", [](M& m, unsigned) { m.memory.mainQueue.runOne(); }},
      {"one scan", [](M& m, unsigned) { m.memory.scanExecutor.runOne(); }},
      {"clock", [](M& m, unsigned choice) { m.memory.mainQueue.advance(choice % 8 * 1s); }},
      {"sleep", [](M& m, unsigned choice) { m.memory.mainQueue.sleepThrough(choice % 20 * 1s); }},
      {"notification", [](M& m, unsigned choice) { m.post(static_cast<Notification>(choice % 6)); }},
      {"refresh", [](M& m, unsigned) { m.model->refresh(); }},
      {"rule",
       [](M& m, unsigned choice) {
         m.model->setRule(choice % 3 == 0 ? IconRule::visible : IconRule::hidden, choice % 2 == 0 ? one : two);
       }},
      {"delay", [](M& m, unsigned choice) { m.setDelay(choice % 4); }},
      {"permission", [](M& m, unsigned choice) { m.memory.accessibility.trusted = choice % 3 != 0; }},
      {"tap", [](M& m, unsigned choice) { m.memory.eventTaps.creationFails = choice % 2 == 0; }},
      {"framework",
       [](M& m, unsigned choice) {
         m.memory.framework.assertionIsNull = choice % 4 == 0;
         m.memory.framework.raises.erase(Step::activate);
         if (choice % 4 == 1) m.memory.framework.raises[Step::activate] = MemoryFramework::raising("broken");
       }},
      {"click",
       [](M& m, unsigned) {
         const bool guarded = m.guarded();
         m.clickClock();
         m.must(!guarded || m.model->state() == visible, "a control clicked in vain");
       }},
      {"lost tap",
       [](M& m, unsigned) {
         if (m.hasTap()) m.memory.eventTaps.disable(EventType::tapDisabledByTimeout);
         m.must(!m.hasTap() || m.model->state() == visible, "hidden without a guard");
       }},
      {"items",
       [](M& m, unsigned choice) {
         m.memory.showItems(choice % 2 == 0 ? std::vector{std::string(one)} : std::vector<std::string>{one, two});
       }},
      {"stop",
       [](M& m, unsigned choice) {
         if (choice % 8 == 0) m.model->stop();
       }},
  };
  return all;
}

TEST(OrvoModelPropertyTest, NoSequenceOfEventsLeavesAnAssertionBehindOrTheBarInDoubt) {
  using Choices = std::vector<std::pair<unsigned, unsigned>>;
  const auto holds = [](const Choices& choices) {
    Machine machine;
    for (const auto& [which, choice] : choices) {
      const auto& event = Machine::events().at(which % Machine::events().size());
      RC_LOG() << event.name << ' ' << choice << '\n';
      event.happens(machine, choice);
      machine.look();
      RC_ASSERT(machine.broken == "");
    }
    machine.model->stop();
    machine.settle();
    machine.look();
    RC_ASSERT(machine.broken == "");
    RC_ASSERT(!machine.model->isScanning());
    machine.model.reset();
    RC_ASSERT(machine.memory.framework.liveObjects() == 0U);
  };
  const auto sequences =
      rc::gen::container<Choices>(rc::gen::pair(rc::gen::inRange(0U, 23U), rc::gen::inRange(0U, 24U)));
  EXPECT_TRUE(rc::check([&] { holds(*rc::gen::resize(200, sequences)); }));
}

}  // namespace
}  // namespace orvo
