#include "model/ModelFixture.h"

#include <limits>
#include <tuple>

namespace orvo {
namespace {

using T = ModelFixture;
using enum BarState;
using Step = MemoryFramework::Step;

constexpr const char* installFirst =
    "Install Orvo in Applications and open that copy to keep its menu bar arrow visible.";
constexpr const char* notReady = "System controls are not ready. Refresh the icon list after granting Accessibility.";

TEST(OrvoModelHidingTest, ARequestAllowsEveryRunningBundleButTheHiddenInCodePointOrder) {
  ModelFixture t;
  for (const char* bundle : {"ünsorted", "zed", "Zed"}) t.memory.workspace.launch(bundle, 50);
  t.memory.workspace.running.push_back({std::nullopt, 53, "no bundle", std::nullopt});
  t.model->hideSelected();
  EXPECT_THAT(
      t.memory.framework.activations.at(0).allowedBundleIdentifiers,
      ElementsAre("Zed", "com.apple.MenuBarAgent", "com.apple.TextInputMenuAgent", "com.apple.controlcenter",
                  "com.apple.screencaptureui", "com.apple.systemuiserver", "local.orvo.Orvo", two, "zed", "ünsorted"));
}

TEST(OrvoModelHidingTest, EveryFailureEndsInAFullRevealAndSaysWhy) {
  const std::vector<std::tuple<const char*, void (*)(T&), BarState, std::string>> cases{
      {"confirmed before the request has returned",
       [](T& t) {
         t.memory.framework.onActivate = [&t](std::size_t number) { t.memory.framework.answer(number); };
         t.model->hideSelected();
         EXPECT_EQ(t.model->state(), applying);
         t.memory.settle();
       },
       hidden, ""},
      {"revealed meanwhile", [](T& t) { t.model->hideSelected(), t.model->reveal(false); }, visible, ""},
      {"refused", [](T& t) { t.model->hideSelected(), t.answerLast(refusal); }, visible, refused},
      {"issued again and not answered", [](T& t) { t.hide(), t.advance(4s), t.model->hideSelected(), t.advance(5s); },
       visible, timedOut},
      {"an exception, told to the completion and by the missing assertion",
       [](T& t) {
         t.hide();
         t.memory.framework.raises[Step::activate] = MemoryFramework::raising("broken");
         t.model->hideSelected();
         t.memory.settle();
       },
       visible, "The menu bar API could not start. All icons are visible."}};
  for (const auto& [name, steps, state, message] : cases) {
    SCOPED_TRACE(name);
    ModelFixture t;
    steps(t);
    EXPECT_EQ(t.model->state(), state);
    EXPECT_EQ(t.active(), state == visible ? 0U : 1U);
    EXPECT_EQ(t.message(), message);
    EXPECT_EQ(t.memory.mainQueue.waiting().size(), 1U) << "besides the poll, a time-out waits";
    t.model->reveal(false);
    t.refresh();
    EXPECT_EQ(t.message(), message) << "kept until the next request";
  }
}

TEST(OrvoModelHidingTest, ARefusedAttemptChangesNothingButTheMessage) {
  const std::vector<std::tuple<const char*, void (*)(MemoryPlatform&), std::string>> cases{
      {"outside the Applications folders", [](auto& m) { m.bundle.bundlePath = "/O"; }, installFirst},
      {"there, and no framework", [](auto& m) { m.framework.loads = false, m.bundle.bundlePath = "/O"; }, installFirst},
      {"no framework", [](auto& m) { m.framework.loads = false; }, ""},
      {"no permission", [](auto& m) { m.accessibility.trusted = false; }, ""},
      {"no tap", [](auto& m) { m.eventTaps.creationFails = true; }, notReady},
      {"no system control", [](auto& m) { m.workspace.quit("com.apple.MenuBarAgent"); }, notReady}};
  for (const auto& [name, prepare, message] : cases) {
    SCOPED_TRACE(name);
    ModelFixture t(prepare);
    EXPECT_EQ(t.message(), message == installFirst ? installFirst : "");
    EXPECT_FALSE(t.model->canHide());
    t.memory.loginItem.failure = "full";
    t.model->setLoginItem(true);
    t.model->hideSelected();
    EXPECT_EQ(t.message(), message.empty() ? "Login item could not be changed: full" : message);
    EXPECT_EQ(t.model->state(), visible);
    EXPECT_EQ(t.requests(), 0U);
  }
}

TEST(OrvoModelHidingTest, HidingIsOfferedWhileVisibleAndHiddenForASelectionAndWithPermissionOnly) {
  ModelFixture t;
  EXPECT_TRUE(t.model->canHide());
  t.model->hideSelected();
  EXPECT_FALSE(t.model->canHide());
  t.answerLast();
  EXPECT_TRUE(t.model->canHide());
  t.model->setRule(IconRule::visible, one);
  EXPECT_EQ(t.model->state(), visible) << "nothing left to hide";
  EXPECT_FALSE(t.model->canHide());
  t.model->reveal(true);
  EXPECT_FALSE(t.waitsFor(rehideDelay)) << "nothing to hide again";
  t.model->setRule(IconRule::hidden, one);
  t.memory.accessibility.trusted = false;
  t.model->requestAccessibility();
  EXPECT_FALSE(t.model->canHide());
}

TEST(OrvoModelHidingTest, RevealedIconsHideAgainUnlessSomethingElseHappensFirst) {
  constexpr auto longest = std::numeric_limits<std::int64_t>::max();
  const auto nothing = [](T&) {};
  const std::vector<std::tuple<const char*, std::int64_t, void (*)(T&), bool>> cases{
      {"undisturbed", 7, nothing, true},
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
      {"the menu bar host ended", 7, [](T& t) { t.post(Notification::menuBarHostTerminated), t.memory.settle(); },
       true},
      {"hidden by hand", 7, [](T& t) { t.hide(); }, false},
      {"revealed for good", 7, [](T& t) { t.model->reveal(false); }, false},
      {"an attempt refused for lack of permission", 7,
       [](T& t) {
         t.memory.accessibility.trusted = false;
         t.model->requestAccessibility();
         t.model->hideSelected();
         t.memory.accessibility.trusted = true;
         t.model->requestAccessibility();
       },
       true}};
  for (const auto& [name, delay, meanwhile, hidesAgain] : cases) {
    SCOPED_TRACE(name);
    ModelFixture t;
    t.hide();
    t.setDelay(delay);
    t.model->reveal(true);
    meanwhile(t);
    const std::size_t before = t.requests();
    t.advance(rehideDelay - 1ms);
    EXPECT_EQ(t.requests(), before);
    t.advance(1ms);
    EXPECT_EQ(t.requests(), before + (hidesAgain ? 1 : 0));
  }
}

TEST(OrvoModelHidingTest, AModelThatGoesTakesItsAssertionsAlongAndHearsNoAnswer) {
  ModelFixture t;
  t.hide();
  t.model->hideSelected();
  t.model->refresh();
  t.model.reset();
  EXPECT_EQ(t.active(), 0U);
  EXPECT_TRUE(t.memory.mainQueue.waiting().empty());
  EXPECT_EQ(t.memory.hotKeys.hotKeys, 0);
  t.post(Notification::applicationLaunched);
  EXPECT_FALSE(t.memory.mainQueue.runOne()) << "still observed";
  t.memory.framework.answer(1);
  t.memory.settle();
  EXPECT_EQ(t.memory.framework.liveObjects(), 0U);
}

}  // namespace
}  // namespace orvo
