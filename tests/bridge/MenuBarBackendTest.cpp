#include "bridge/MenuBarBackend.h"

#include "support/MemoryPlatform.h"

#include <gmock/gmock.h>

namespace orvo {

using testing::ElementsAre;
using Step = MemoryFramework::Step;

// What a caller sees of its completion.
struct Caller {
  std::vector<std::string> answers;
  int releases = 0;
  // Runs inside the completion.
  std::function<void()> inside = [] {};

  QLAssertionRef create() {
    const auto invoke = [](void* context, const QLError* error) {
      auto& caller = *static_cast<Caller*>(context);
      caller.answers.emplace_back();
      if (error) caller.answers.back() = error->domain + std::to_string(error->code) + error->localizedDescription;
      caller.inside();
      EXPECT_EQ(caller.releases, 0) << "released before or while it was invoked";
    };
    const auto release = [](void* context) { ++static_cast<Caller*>(context)->releases; };
    return QLCreateMenuBarAssertion(nullptr, 0, {invoke, release, this});
  }
};

struct MenuBarBackendTest : testing::Test {
  // Outlives the framework, which releases what it still holds when it goes.
  Caller caller;
  MemoryPlatform memory;
  MemoryFramework& framework = memory.framework;
};

TEST_F(MenuBarBackendTest, ServesACallerThatNeedsNoAnswer) {
  const char* const bundles[]{"first", "second"};
  QLReleaseMenuBarAssertion(QLCreateMenuBarAssertion(bundles, 2, {}));
  QLReleaseMenuBarAssertion(QLCreateMenuBarAssertion(bundles, 0, {}));
  QLReleaseMenuBarAssertion(nullptr);
  ASSERT_EQ(framework.activations.size(), 2U);
  EXPECT_THAT(framework.activations[0].allowedBundleIdentifiers, ElementsAre("first", "second"));
  EXPECT_THAT(framework.activations[1].allowedSystemItems, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
  framework.answer(0);
  EXPECT_EQ(framework.liveObjects(), 0U);
  EXPECT_THAT(framework.loaded,
              ElementsAre("/System/Library/PrivateFrameworks/MenuBarClientCore.framework/MenuBarClientCore"));
}

TEST_F(MenuBarBackendTest, CallsNobodyWhereTheFrameworkIsIncompleteOrYieldsNull) {
  for (const std::string missing :
       {"configuration", "assertion", "MBAssessmentModeConfiguration", "MBAssessmentModeAssertion",
        "initWithAllowedSystemItems:allowedBundleIdentifiers:", "activateWithConfiguration:completionHandler:",
        "invalidate", "the library", "a framework at all"}) {
    MemoryFramework incomplete;
    Caller nobody;
    incomplete.missing = {missing};
    incomplete.loads = missing != "the library";
    setConcealmentFramework(missing == "a framework at all" ? nullptr : &incomplete);
    const bool yieldsNull = missing == "configuration" || missing == "assertion";
    EXPECT_STREQ(QLMenuBarBackendDescription(), yieldsNull ? macWords.backendAvailable : macWords.backendMissing);
    EXPECT_EQ(nobody.create(), nullptr) << missing;
    EXPECT_TRUE(nobody.answers.empty() && nobody.releases == 1 && incomplete.liveObjects() == 0) << missing;
  }
}

TEST_F(MenuBarBackendTest, TurnsTheFrameworksExceptionsIntoOneErrorOrALineOfTheLogAndLetsOthersPass) {
  for (const auto& reason : {std::optional<std::string>("out of order"), {}}) {
    for (const Step step : {Step::makeConfiguration, Step::makeAssertion, Step::activate}) {
      framework.raises = {{step, MemoryFramework::raising(reason)}};
      Caller refused;
      EXPECT_EQ(refused.create(), nullptr);
      EXPECT_THAT(refused.answers, ElementsAre("Orvo.MenuBar1" + reason.value_or("Menu bar activation failed.")));
      EXPECT_EQ(refused.releases, 1);
    }
    for (const Step step : {Step::respondsTo, Step::invalidate}) {
      framework.raises = {{step, MemoryFramework::raising(reason)}};
      QLReleaseMenuBarAssertion(caller.create());
      EXPECT_EQ(framework.logged.back(), "Orvo: could not release menu bar assertion: " + reason.value_or("(null)"));
    }
  }
  framework.raises = {{Step::activate, [] { throw std::runtime_error("not the framework's own"); }}};
  EXPECT_THROW(caller.create(), std::runtime_error);
  EXPECT_TRUE(framework.logged.size() == 4 && framework.liveObjects() == 0 && caller.answers.empty());
}

TEST_F(MenuBarBackendTest, PassesOneAnswerOnFromWhereverItComesAndSurvivesThatItsHandlerGoesMeanwhile) {
  QLAssertionRef assertion = caller.create();
  const auto handler = framework.activations[0].completion;
  std::thread([&] { framework.answer(0, FrameworkError{"Elsewhere", 7, "No."}); }).join();
  handler(std::nullopt);
  EXPECT_THAT(caller.answers, ElementsAre("Elsewhere7No."));
  QLReleaseMenuBarAssertion(assertion);
  EXPECT_EQ(framework.active(), 0U);
  Caller last;
  assertion = last.create();
  last.inside = [this] { framework.activations[1].completion = nullptr; };
  framework.activations[1].completion(std::nullopt);
  EXPECT_EQ(last.releases, 1);
  QLReleaseMenuBarAssertion(assertion);
}

}  // namespace orvo
