// Random sequences of everything that can happen to the model, against what must hold after each step.
#include "model/ModelFixture.h"

#include <rapidcheck.h>

#include <set>
#include <thread>

namespace orvo {
namespace {

class Machine : public ModelFixture {
 public:
  struct Event {
    const char* name;
    void (*happens)(Machine&, unsigned choice);
  };
  static const std::vector<Event>& events();

  void answer(unsigned choice, const std::optional<FrameworkError>& error) {
    if (requests() == 0) return;
    const std::size_t number = choice % 2 == 0 ? requests() - 1 : choice % requests();
    if (!error) confirmed.insert(number);
    if (choice % 3 == 0) {
      std::thread([&] { memory.framework.answer(number, error); }).join();
    } else {
      memory.framework.answer(number, error);
    }
  }

  void check() {
    const BarState state = model->state();
    const auto held = memory.framework.active();
    if (state == BarState::visible) RC_ASSERT(held.empty());
    if (state == BarState::applying) RC_ASSERT(!held.empty());
    if (state == BarState::hidden) {
      RC_ASSERT(held.size() == 1U);
      const auto& all = memory.framework.activations;
      RC_ASSERT(std::any_of(confirmed.begin(), confirmed.end(),
                            [&](std::size_t number) { return all.at(number).assertion == held[0].assertion; }));
    }
    if (state == BarState::visible) RC_ASSERT(!guarded());
    RC_ASSERT(model->systemClickProtection() <= (memory.eventTaps.tap() != nullptr));
  }

  // Numbers of the requests that were answered without an error.
  std::set<std::size_t> confirmed;
};

const std::vector<Machine::Event>& Machine::events() {
  using M = Machine;
  static const std::vector<Event> all{
      {"hide", [](M& m, unsigned) { m.model->hideSelected(); }},
      {"hide again", [](M& m, unsigned) { m.model->hideSelected(); }},
      {"reveal", [](M& m, unsigned choice) { m.model->reveal(choice % 2 == 0); }},
      {"shortcut", [](M& m, unsigned) { m.memory.hotKeys.press(); }},
      {"confirm", [](M& m, unsigned choice) { m.answer(choice, std::nullopt); }},
      {"confirm the last", [](M& m, unsigned) { m.answer(0, std::nullopt); }},
      {"refuse", [](M& m, unsigned choice) { m.answer(choice, refusal); }},
      {"settle", [](M& m, unsigned) { m.memory.settle(); }},
      {"one task", [](M& m, unsigned) { m.memory.mainQueue.runOne(); }},
      {"one scan", [](M& m, unsigned) { m.memory.scanExecutor.runOne(); }},
      {"clock", [](M& m, unsigned choice) { m.memory.mainQueue.advance(choice % 8 * 1s); }},
      {"sleep", [](M& m, unsigned choice) { m.memory.mainQueue.sleepThrough(choice % 20 * 1s); }},
      {"notification", [](M& m, unsigned choice) { m.post(static_cast<Notification>(choice % 5)); }},
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
         m.memory.framework.raises.clear();
         if (choice % 4 == 1) {
           m.memory.framework.raises[MemoryFramework::Step::activate] = MemoryFramework::raising("broken");
         }
       }},
      {"click", [](M& m, unsigned) { m.clickClock(); }},
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
      machine.check();
    }
    // Without a new request, five seconds end every doubt.
    const std::size_t before = machine.requests();
    machine.advance(timeout);
    machine.check();
    if (machine.requests() == before) RC_ASSERT(machine.model->state() != BarState::applying);
    machine.model->stop();
    machine.memory.settle();
    RC_ASSERT(machine.active() == 0U);
    RC_ASSERT(!machine.model->isScanning());
    machine.model.reset();
    RC_ASSERT(machine.memory.framework.liveObjects() == 0U);
  };
  const auto sequences =
      rc::gen::container<Choices>(rc::gen::pair(rc::gen::inRange(0U, 22U), rc::gen::inRange(0U, 24U)));
  EXPECT_TRUE(rc::check([&] { holds(*rc::gen::resize(200, sequences)); }));
}

}  // namespace
}  // namespace orvo
