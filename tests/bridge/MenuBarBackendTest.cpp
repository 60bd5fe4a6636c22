#include "bridge/MenuBarBackend.h"

#include "bridge/FrameworkEntry.h"
#include "support/MemoryFramework.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

extern "C" QLAssertionRef createFromC(const char* const* bundles, std::size_t count, QLCompletion completion);

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Step = MemoryFramework::Step;
using Reason = std::optional<std::string>;

// What a caller sees of its completion.
struct Caller {
  std::vector<std::optional<FrameworkError>> answers;
  int releases = 0;
  // Runs inside the completion.
  std::function<void()> inside = [] {};

  QLAssertionRef create() {
    const auto invoke = [](void* context, const QLError* error) {
      auto& caller = *static_cast<Caller*>(context);
      caller.answers.emplace_back();
      if (error != nullptr) caller.answers.back() = {error->domain, error->code, error->localizedDescription};
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

TEST_F(MenuBarBackendTest, ServesACallerWrittenInCThatNeedsNoAnswer) {
  const char* const bundles[]{"first", "second"};
  QLReleaseMenuBarAssertion(createFromC(bundles, 2, {}));
  QLReleaseMenuBarAssertion(createFromC(nullptr, 0, {}));
  QLReleaseMenuBarAssertion(nullptr);
  ASSERT_EQ(framework_.activations.size(), 2U);
  EXPECT_THAT(framework_.activations[0].allowedBundleIdentifiers, ElementsAre("first", "second"));
  EXPECT_THAT(framework_.activations[1].allowedBundleIdentifiers, IsEmpty());
  EXPECT_THAT(framework_.activations[1].allowedSystemItems, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
  framework_.answer(0);
  EXPECT_EQ(framework_.liveObjects(), 0U);
}

TEST_F(MenuBarBackendTest, LoadsOnceHoweverManyThreadsAskFirst) {
  std::vector<std::thread> threads(8);
  for (std::thread& thread : threads) thread = std::thread([] { EXPECT_TRUE(QLMenuBarBackendAvailable()); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(framework_.loadings, 1);
  EXPECT_EQ(framework_.loadedPath, "/System/Library/PrivateFrameworks/MenuBarClientCore.framework/MenuBarClientCore");
}

TEST_F(MenuBarBackendTest, CallsNobodyWhereTheFrameworkIsIncompleteOrYieldsNull) {
  for (const std::string missing :
       {"configuration", "assertion", "MBAssessmentModeConfiguration", "MBAssessmentModeAssertion",
        "initWithAllowedSystemItems:allowedBundleIdentifiers:", "activateWithConfiguration:completionHandler:",
        "invalidate", "the library", "a framework at all"}) {
    SCOPED_TRACE(missing);
    MemoryFramework framework;
    Caller caller;
    framework.missing = {missing};
    framework.loads = missing != "the library";
    setConcealmentFramework(missing == "a framework at all" ? nullptr : &framework);
    const bool yieldsNull = missing == "configuration" || missing == "assertion";
    EXPECT_STREQ(QLMenuBarBackendDescription(), yieldsNull ? macWords.backendAvailable : macWords.backendMissing);
    EXPECT_EQ(caller.create(), nullptr);
    EXPECT_TRUE(caller.answers.empty() && caller.releases == 1 && framework.liveObjects() == 0);
  }
}

TEST_F(MenuBarBackendTest, TurnsTheFrameworksExceptionsIntoOneErrorAndLetsOthersPass) {
  for (const Step step : {Step::makeConfiguration, Step::makeAssertion, Step::activate}) {
    for (const auto& reason : {Reason("out of order"), Reason()}) {
      framework_.raises = {{step, MemoryFramework::raising(reason)}};
      Caller caller;
      EXPECT_EQ(caller.create(), nullptr);
      EXPECT_THAT(caller.answers,
                  ElementsAre(FrameworkError{"Orvo.MenuBar", 1, reason.value_or("Menu bar activation failed.")}));
      EXPECT_EQ(caller.releases, 1);
    }
    framework_.raises = {{step, [] { throw std::runtime_error("not the framework's own"); }}};
    Caller caller;
    EXPECT_THROW(caller.create(), std::runtime_error);
    EXPECT_TRUE(caller.answers.empty() && caller.releases == 1 && framework_.liveObjects() == 0);
  }
}

TEST_F(MenuBarBackendTest, PassesOneAnswerOnFromWhereverItComesAndSurvivesThatItsHandlerGoesMeanwhile) {
  const FrameworkError error{"Elsewhere", 7, "No."};
  QLAssertionRef assertion = caller_.create();
  const auto handler = framework_.activations[0].completion;
  std::thread([&] { framework_.answer(0, error); }).join();
  handler(std::nullopt);
  EXPECT_THAT(caller_.answers, ElementsAre(error));
  QLReleaseMenuBarAssertion(assertion);
  EXPECT_THAT(framework_.active(), IsEmpty());
  Caller last;
  assertion = last.create();
  last.inside = [this] { framework_.activations[1].completion = nullptr; };
  framework_.activations[1].completion(std::nullopt);
  EXPECT_EQ(last.releases, 1);
  QLReleaseMenuBarAssertion(assertion);
}

TEST_F(MenuBarBackendTest, EndsAnAssertionOrSaysWhyNotInTheLog) {
  for (const auto& [step, reason] : {std::pair{Step::respondsTo, Reason("gone")}, {Step::invalidate, Reason()}}) {
    framework_.raises = {{step, MemoryFramework::raising(reason)}};
    QLReleaseMenuBarAssertion(caller_.create());
  }
  framework_.raises.clear();
  QLAssertionRef mute = caller_.create();
  framework_.missing = {"invalidate"};
  QLReleaseMenuBarAssertion(mute);
  EXPECT_THAT(framework_.logged, ElementsAre("Orvo: could not release menu bar assertion: gone",
                                             "Orvo: could not release menu bar assertion: (null)"));
  EXPECT_EQ(framework_.liveObjects(), 0U);
}

}  // namespace
}  // namespace orvo
