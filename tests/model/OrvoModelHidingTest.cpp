#include "model/ModelFixture.h"

#include <limits>
#include <thread>

namespace orvo {
namespace {

using testing::ElementsAre;
using Step = MemoryFramework::Step;

constexpr const char* installFirst =
    "Install Orvo in Applications and open that copy to keep its menu bar arrow visible.";
constexpr const char* notReady = "System controls are not ready. Refresh the icon list after granting Accessibility.";
constexpr const char* notStarted = "The menu bar API could not start. All icons are visible.";
constexpr const char* refused = "Could not hide icons: not now";
constexpr const char* timedOut = "macOS did not confirm hiding. All icons have been restored.";

// Notes what a bystander sees at each moment that the model lets anyone see.
class Watcher {
 public:
  explicit Watcher(ModelFixture& fixture) : fixture_(fixture) {
    token_ = fixture.model->willChange.observe([this] { note("assign"); });
    fixture.model->onStateChanged = [this] { note("changed"); };
    fixture.memory.framework.onActivate = [this](std::size_t) { note("activate"); };
    fixture.memory.framework.raises[Step::invalidate] = [this] { note("release"); };
  }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;
  ~Watcher() {
    fixture_.model->willChange.remove(token_);
    fixture_.model->onStateChanged = {};
    fixture_.memory.framework.onActivate = {};
    fixture_.memory.framework.raises.clear();
  }
  void note(const std::string& what) {
    log.push_back(what + ": " + name(fixture_.model->state()) + (fixture_.guarded() ? ", guarded" : ", open") +
                  (fixture_.waitsFor(timeout) ? ", time-out set" : "") +
                  (fixture_.waitsFor(rehideDelay) ? ", re-hide set" : ""));
  }

  std::vector<std::string> log;

 private:
  ModelFixture& fixture_;
  ObjectWillChange::Token token_ = ObjectWillChange::Token::none;
};

TEST(OrvoModelHidingTest, AHideRequestIsMadeOnceTheBarSaysSoAndGuardedOnceItIsHeld) {
  ModelFixture t;
  for (const char* bundle : {"ünsorted", "zed", "Zed"}) t.memory.workspace.launch(bundle, 50);
  t.memory.workspace.running.push_back({std::nullopt, 53, "no bundle", std::nullopt});
  Watcher watcher(t);
  t.model->hideSelected();
  watcher.note("returned");
  EXPECT_THAT(watcher.log, ElementsAre("assign: visible, open", "assign: applying, open", "changed: applying, open",
                                       "activate: applying, open", "returned: applying, guarded, time-out set"));
  EXPECT_THAT(
      t.memory.framework.activations.at(0).allowedBundleIdentifiers,
      ElementsAre("Zed", "com.apple.MenuBarAgent", "com.apple.TextInputMenuAgent", "com.apple.controlcenter",
                  "com.apple.screencaptureui", "com.apple.systemuiserver", "local.orvo.Orvo", two, "zed", "ünsorted"));
}

TEST(OrvoModelHidingTest, AConfirmationReleasesTheOlderAssertionBeforeTheBarSaysHidden) {
  ModelFixture t;
  t.hide();
  const auto* const older = t.memory.framework.active().at(0).assertion;
  t.model->hideSelected();
  EXPECT_EQ(t.active(), 2U);
  Watcher watcher(t);
  t.answerLast();
  EXPECT_THAT(watcher.log,
              ElementsAre("release: applying, guarded", "assign: applying, guarded", "changed: hidden, guarded"));
  ASSERT_EQ(t.active(), 1U);
  EXPECT_NE(t.memory.framework.active().at(0).assertion, older);
}

TEST(OrvoModelHidingTest, ARevealStopsTheClocksReleasesAllAndSchedulesLast) {
  ModelFixture t;
  t.hide();
  t.model->hideSelected();
  Watcher watcher(t);
  t.model->reveal(true);
  watcher.note("returned");
  EXPECT_THAT(watcher.log,
              ElementsAre("release: applying, guarded", "release: applying, guarded", "assign: applying, guarded",
                          "changed: visible, open", "returned: visible, open, re-hide set"));
}

TEST(OrvoModelHidingTest, OnlyTheCurrentRequestsAnswerCounts) {
  using T = ModelFixture;
  struct Case {
    const char* name;
    void (*steps)(T&);
    BarState state;
    std::string message;
    std::size_t active;
  };
  const std::vector<Case> cases{
      {"confirmed before the request has returned",
       [](T& t) {
         t.memory.framework.onActivate = [&t](std::size_t number) { t.memory.framework.answer(number); };
         t.model->hideSelected();
         EXPECT_EQ(t.model->state(), BarState::applying);
         t.memory.settle();
       },
       BarState::hidden, "", 1},
      {"confirmed on another thread",
       [](T& t) {
         t.model->hideSelected();
         std::thread([&t] { t.memory.framework.answer(0); }).join();
         EXPECT_EQ(t.model->state(), BarState::applying);
         t.memory.settle();
       },
       BarState::hidden, "", 1},
      {"refused", [](T& t) { t.model->hideSelected(), t.answerLast(refusal); }, BarState::visible, refused, 0},
      {"not answered for nearly 5 seconds", [](T& t) { t.model->hideSelected(), t.advance(4999ms); },
       BarState::applying, "", 1},
      {"not answered for 5 seconds", [](T& t) { t.model->hideSelected(), t.advance(5s); }, BarState::visible, timedOut,
       0},
      {"confirmed after the time-out", [](T& t) { t.model->hideSelected(), t.advance(5s), t.answerLast(); },
       BarState::visible, timedOut, 0},
      {"refused after a reveal", [](T& t) { t.model->hideSelected(), t.model->reveal(false), t.answerLast(refusal); },
       BarState::visible, "", 0},
      {"confirmed, but a reveal came before the main thread heard of it",
       [](T& t) {
         t.model->hideSelected();
         t.memory.framework.answer(0);
         t.model->reveal(false);
         t.memory.settle();
       },
       BarState::visible, "", 0},
      {"an exception, told to the completion and by the missing assertion",
       [](T& t) {
         t.memory.framework.raises[Step::activate] = MemoryFramework::raising("broken");
         t.model->hideSelected();
         t.memory.settle();
       },
       BarState::visible, notStarted, 0},
      {"no assertion while an older one is confirmed",
       [](T& t) {
         t.hide();
         t.memory.framework.assertionIsNull = true;
         t.model->hideSelected();
       },
       BarState::visible, notStarted, 0},
      {"issued again and not answered", [](T& t) { t.hide(), t.advance(4s), t.model->hideSelected(), t.advance(5s); },
       BarState::visible, timedOut, 0},
      {"issued twice, the first confirmed",
       [](T& t) {
         t.model->hideSelected();
         t.model->hideSelected();
         t.memory.framework.answer(0);
         t.memory.settle();
       },
       BarState::applying, "", 2},
      {"a release that fails",
       [](T& t) {
         t.hide();
         t.memory.framework.raises[Step::invalidate] = MemoryFramework::raising("stuck");
         t.model->reveal(false);
       },
       BarState::visible, "", 0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ModelFixture t;
    c.steps(t);
    EXPECT_EQ(t.model->state(), c.state);
    EXPECT_EQ(t.message(), c.message);
    EXPECT_EQ(t.active(), c.active);
    EXPECT_EQ(t.guarded(), c.state != BarState::visible);
  }
}

TEST(OrvoModelHidingTest, ARefusedAttemptChangesNothingButTheMessage) {
  struct Case {
    const char* name;
    void (*prepare)(MemoryPlatform&);
    std::string message;
  };
  const std::vector<Case> cases{
      {"outside the Applications folders",
       [](MemoryPlatform& m) {
         m.bundle.bundlePath = "/Downloads/Orvo.app";
         m.framework.loads = false;
       },
       installFirst},
      {"no framework", [](MemoryPlatform& m) { m.framework.loads = false; }, ""},
      {"no permission", [](MemoryPlatform& m) { m.accessibility.trusted = false; }, ""},
      {"no tap", [](MemoryPlatform& m) { m.eventTaps.creationFails = true; }, notReady},
      {"no system control", [](MemoryPlatform& m) { m.workspace.quit("com.apple.MenuBarAgent"); }, notReady}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ModelFixture t(c.prepare);
    EXPECT_EQ(t.message(), c.message == installFirst ? installFirst : "");
    EXPECT_FALSE(t.model->canHide());
    t.model->hideSelected();
    EXPECT_EQ(t.message(), c.message);
    EXPECT_EQ(t.model->state(), BarState::visible);
    EXPECT_EQ(t.requests(), 0U);
  }
}

TEST(OrvoModelHidingTest, HidingIsOfferedWhileVisibleAndHiddenForASelectionOnly) {
  ModelFixture t;
  EXPECT_TRUE(t.model->canHide());
  t.model->hideSelected();
  EXPECT_FALSE(t.model->canHide());
  t.answerLast();
  EXPECT_TRUE(t.model->canHide());
  t.model->reveal(false);
  t.model->setRule(IconRule::visible, one);
  EXPECT_FALSE(t.model->canHide());
}

TEST(OrvoModelHidingTest, RevealedIconsHideAgainUnlessSomethingElseHappensFirst) {
  using T = ModelFixture;
  constexpr auto longest = std::numeric_limits<std::int64_t>::max();
  struct Case {
    const char* name;
    std::int64_t delay;
    void (*meanwhile)(T&);
    bool hidesAgain;
  };
  const auto nothing = [](T&) {};
  const std::vector<Case> cases{{"undisturbed", 7, nothing, true},
                                {"never", 0, nothing, false},
                                {"a negative delay", -5, nothing, false},
                                {"the longest delay there is", longest, nothing, false},
                                {"another delay chosen", 7, [](T& t) { t.setDelay(6); }, false},
                                {"the same delay chosen", 7, [](T& t) { t.setDelay(7); }, true},
                                {"a rule changed", 7, [](T& t) { t.model->setRule(IconRule::hidden, two); }, true},
                                {"an attempt that could not start", 7,
                                 [](T& t) {
                                   t.memory.framework.assertionIsNull = true;
                                   t.model->hideSelected();
                                   t.memory.framework.assertionIsNull = false;
                                 },
                                 false},
                                {"an attempt refused for lack of permission", 7,
                                 [](T& t) {
                                   t.memory.accessibility.trusted = false;
                                   t.model->requestAccessibility();
                                   t.model->hideSelected();
                                   t.memory.accessibility.trusted = true;
                                   t.model->requestAccessibility();
                                 },
                                 true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ModelFixture t;
    t.hide();
    t.setDelay(c.delay);
    t.model->reveal(true);
    c.meanwhile(t);
    const std::size_t before = t.requests();
    t.advance(7s - 1ms);
    EXPECT_EQ(t.requests(), before);
    t.advance(1ms);
    EXPECT_EQ(t.requests(), before + (c.hidesAgain ? 1 : 0));
  }
}

TEST(OrvoModelHidingTest, AClickOnTheClockOrALostTapRevealsInsideTheTap) {
  ModelFixture t;
  t.hide();
  t.clickClock();
  EXPECT_EQ(t.model->state(), BarState::visible);
  EXPECT_EQ(t.active(), 0U);
  t.hide();
  t.memory.eventTaps.disable(EventType::tapDisabledByTimeout);
  EXPECT_EQ(t.model->state(), BarState::visible);
  EXPECT_FALSE(t.waitsFor(rehideDelay));
}

TEST(OrvoModelHidingTest, AModelThatGoesTakesItsAssertionsAlongAndHearsNoAnswer) {
  ModelFixture t;
  t.hide();
  t.model->hideSelected();
  t.model->refresh();
  t.model.reset();
  EXPECT_EQ(t.active(), 0U);
  EXPECT_TRUE(t.memory.mainQueue.waiting().empty());
  EXPECT_TRUE(t.memory.hotKeys.hotKeys.empty());
  t.memory.framework.answer(1);
  t.post(Notification::applicationLaunched);
  t.memory.settle();
  EXPECT_EQ(t.memory.framework.liveObjects(), 0U);
}

}  // namespace
}  // namespace orvo
