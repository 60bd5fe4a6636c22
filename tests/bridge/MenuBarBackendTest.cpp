#include "bridge/MenuBarBackend.h"

#include "bridge/FrameworkEntry.h"
#include "support/MemoryFramework.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <thread>

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
      if (error != nullptr)
        caller.answers.back() = error->domain + std::to_string(error->code) + error->localizedDescription;
      caller.inside();
      EXPECT_EQ(caller.releases, 0) << "released before or while it was invoked";
    };
    const auto release = [](void* context) { ++static_cast<Caller*>(context)->releases; };
    return QLCreateMenuBarAssertion(nullptr, 0, {invoke, release, this});
  }
};

class MenuBarBackendTest : public testing::Test {
 protected:
  MenuBarBackendTest() { setConcealmentFramework(&framework_); }
  ~MenuBarBackendTest() override { setConcealmentFramework(nullptr); }

  // Outlives the framework, which releases what it still holds when it goes.
  Caller caller_;
  MemoryFramework framework_;
};

TEST_F(MenuBarBackendTest, ServesACallerThatNeedsNoAnswer) {
  const char* const bundles[]{"first", "second"};
  QLReleaseMenuBarAssertion(QLCreateMenuBarAssertion(bundles, 2, {}));
  QLReleaseMenuBarAssertion(QLCreateMenuBarAssertion(bundles, 0, {}));
  QLReleaseMenuBarAssertion(nullptr);
  ASSERT_EQ(framework_.activations.size(), 2U);
  EXPECT_THAT(framework_.activations[0].allowedBundleIdentifiers, ElementsAre("first", "second"));
  EXPECT_THAT(framework_.activations[1].allowedSystemItems, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
  framework_.answer(0);
  EXPECT_EQ(framework_.liveObjects(), 0U);
  EXPECT_THAT(framework_.loaded,
              ElementsAre("/System/Library/PrivateFrameworks/MenuBarClientCore.framework/MenuBarClientCore"));
}

TEST_F(MenuBarBackendTest, CallsNobodyWhereTheFrameworkIsIncompleteOrYieldsNull) {
  for (const std::string missing :
       {"configuration", "assertion", "MBAssessmentModeConfiguration", "MBAssessmentModeAssertion",
        "initWithAllowedSystemItems:allowedBundleIdentifiers:", "activateWithConfiguration:completionHandler:",
        "invalidate", "the library", "a framework at all"}) {
    MemoryFramework framework;
    Caller caller;
    framework.missing = {missing};
    framework.loads = missing != "the library";
    setConcealmentFramework(missing == "a framework at all" ? nullptr : &framework);
    const bool yieldsNull = missing == "configuration" || missing == "assertion";
    EXPECT_STREQ(QLMenuBarBackendDescription(), yieldsNull ? macWords.backendAvailable : macWords.backendMissing);
    EXPECT_EQ(caller.create(), nullptr) << missing;
    EXPECT_TRUE(caller.answers.empty() && caller.releases == 1 && framework.liveObjects() == 0) << missing;
  }
}

TEST_F(MenuBarBackendTest, TurnsTheFrameworksExceptionsIntoOneErrorOrALineOfTheLogAndLetsOthersPass) {
  for (const auto& reason : {std::optional<std::string>("out of order"), {}}) {
    for (const Step step : {Step::makeConfiguration, Step::makeAssertion, Step::activate}) {
      framework_.raises = {{step, MemoryFramework::raising(reason)}};
      Caller caller;
      EXPECT_EQ(caller.create(), nullptr);
      EXPECT_THAT(caller.answers, ElementsAre("Orvo.MenuBar1" + reason.value_or("Menu bar activation failed.")));
      EXPECT_EQ(caller.releases, 1);
    }
    for (const Step step : {Step::respondsTo, Step::invalidate}) {
      framework_.raises = {{step, MemoryFramework::raising(reason)}};
      QLReleaseMenuBarAssertion(caller_.create());
      EXPECT_EQ(framework_.logged.back(), "Orvo: could not release menu bar assertion: " + reason.value_or("(null)"));
    }
  }
  framework_.raises = {{Step::activate, [] { throw std::runtime_error("not the framework's own"); }}};
  EXPECT_THROW(caller_.create(), std::runtime_error);
  EXPECT_TRUE(framework_.logged.size() == 4 && framework_.liveObjects() == 0 && caller_.answers.empty());
}

TEST_F(MenuBarBackendTest, PassesOneAnswerOnFromWhereverItComesAndSurvivesThatItsHandlerGoesMeanwhile) {
  QLAssertionRef assertion = caller_.create();
  const auto handler = framework_.activations[0].completion;
  std::thread([&] { framework_.answer(0, FrameworkError{"Elsewhere", 7, "No."}); }).join();
  handler(std::nullopt);
  EXPECT_THAT(caller_.answers, ElementsAre("Elsewhere7No."));
  QLReleaseMenuBarAssertion(assertion);
  EXPECT_EQ(framework_.active(), 0U);
  Caller last;
  assertion = last.create();
  last.inside = [this] { framework_.activations[1].completion = nullptr; };
  framework_.activations[1].completion(std::nullopt);
  EXPECT_EQ(last.releases, 1);
  QLReleaseMenuBarAssertion(assertion);
}

}  // namespace orvo
