#include "bridge/MenuBarBackend.h"

#include "bridge/FrameworkEntry.h"
#include "support/MemoryFramework.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

extern "C" int bridgeFromC(void);

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Step = MemoryFramework::Step;

constexpr const char* available = "macOS 27 native concealment protocol is available.";
constexpr const char* unavailable =
    "This macOS build does not expose the expected menu bar protocol. Icons will remain visible.";

// What a caller sees of its completion.
struct Caller {
  std::vector<std::optional<FrameworkError>> answers;
  std::vector<std::thread::id> threads;
  std::atomic<int> releases{0};

  QLCompletion completion() {
    return {[](void* context, const QLError* error) {
              auto& caller = *static_cast<Caller*>(context);
              EXPECT_EQ(caller.releases, 0) << "invoked after the release";
              caller.threads.push_back(std::this_thread::get_id());
              caller.answers.push_back(error == nullptr ? std::nullopt
                                                        : std::optional(FrameworkError{error->domain, error->code,
                                                                                       error->localizedDescription}));
            },
            [](void* context) { ++static_cast<Caller*>(context)->releases; }, this};
  }
};

class MenuBarBackend : public testing::Test {
 protected:
  MenuBarBackend() { setConcealmentFramework(&framework_); }
  ~MenuBarBackend() override { setConcealmentFramework(nullptr); }

  QLAssertionRef create(const std::vector<const char*>& bundles = {"app"}) {
    return QLCreateMenuBarAssertion(bundles.data(), bundles.size(), caller_.completion());
  }

  // Outlives the framework, which releases what it still holds when it goes.
  Caller caller_;
  MemoryFramework framework_;
};

TEST_F(MenuBarBackend, ServesACallerWrittenInC) {
  framework_.onActivate = [this](std::size_t activation) { framework_.answer(activation); };
  EXPECT_EQ(bridgeFromC(), 0);
  ASSERT_EQ(framework_.activations().size(), 2U);
  EXPECT_THAT(framework_.activations()[0].allowedBundleIdentifiers, ElementsAre("first", "second"));
  EXPECT_THAT(framework_.activations()[1].allowedBundleIdentifiers, IsEmpty());
  for (const auto& activation : framework_.activations()) {
    EXPECT_THAT(activation.allowedSystemItems, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
  }
  EXPECT_EQ(framework_.liveObjects(), 0U);
}

TEST_F(MenuBarBackend, LoadsOnceAndTestsTheMessagesAtEveryCall) {
  EXPECT_TRUE(QLMenuBarBackendAvailable());
  EXPECT_STREQ(QLMenuBarBackendDescription(), available);
  EXPECT_THAT(framework_.loadedPaths(),
              ElementsAre("/System/Library/PrivateFrameworks/MenuBarClientCore.framework/MenuBarClientCore"));
  EXPECT_THAT(framework_.tested(), ElementsAre("initWithAllowedSystemItems:allowedBundleIdentifiers:",
                                               "activateWithConfiguration:completionHandler:", "invalidate",
                                               "initWithAllowedSystemItems:allowedBundleIdentifiers:",
                                               "activateWithConfiguration:completionHandler:", "invalidate"));
  framework_.missingMessages = {"invalidate"};
  EXPECT_FALSE(QLMenuBarBackendAvailable());
}

TEST_F(MenuBarBackend, LoadsOnceHoweverManyThreadsAskFirst) {
  std::vector<std::thread> threads;
  std::atomic<int> yes{0};
  for (int i = 0; i < 8; ++i) threads.emplace_back([&yes] { yes += QLMenuBarBackendAvailable() ? 1 : 0; });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(yes, 8);
  EXPECT_EQ(framework_.loadedPaths().size(), 1U);
}

TEST_F(MenuBarBackend, CallsNobodyWhereTheFrameworkIsIncomplete) {
  const std::vector<std::function<void(MemoryFramework&)>> faults{
      [](auto& framework) { framework.loads = false; },
      [](auto& framework) { framework.missingClasses = {"MBAssessmentModeConfiguration"}; },
      [](auto& framework) { framework.missingClasses = {"MBAssessmentModeAssertion"}; },
      [](auto& framework) { framework.missingMessages = {"initWithAllowedSystemItems:allowedBundleIdentifiers:"}; },
      [](auto& framework) { framework.missingMessages = {"activateWithConfiguration:completionHandler:"}; },
      [](auto& framework) { framework.missingMessages = {"invalidate"}; },
      [](auto&) { setConcealmentFramework(nullptr); },
  };
  for (std::size_t i = 0; i < faults.size(); ++i) {
    MemoryFramework framework;
    setConcealmentFramework(&framework);
    faults[i](framework);
    Caller caller;
    EXPECT_FALSE(QLMenuBarBackendAvailable()) << i;
    EXPECT_STREQ(QLMenuBarBackendDescription(), unavailable) << i;
    EXPECT_EQ(QLCreateMenuBarAssertion(nullptr, 0, caller.completion()), nullptr) << i;
    EXPECT_THAT(caller.answers, IsEmpty()) << i;
    EXPECT_EQ(caller.releases, 1) << i;
    EXPECT_THAT(framework.activations(), IsEmpty()) << i;
  }
}

TEST_F(MenuBarBackend, YieldsNothingForANullObject) {
  for (bool* null : {&framework_.configurationIsNull, &framework_.assertionIsNull}) {
    *null = true;
    caller_.releases = 0;
    EXPECT_EQ(create(), nullptr);
    EXPECT_THAT(caller_.answers, IsEmpty());
    EXPECT_EQ(caller_.releases, 1);
    *null = false;
  }
  EXPECT_EQ(framework_.liveObjects(), 0U);
}

TEST_F(MenuBarBackend, TurnsTheFrameworksExceptionsIntoOneError) {
  for (const Step step : {Step::makeConfiguration, Step::makeAssertion, Step::activate}) {
    for (const auto& reason : {std::optional<std::string>("out of order"), std::optional<std::string>()}) {
      framework_.raises = {{step, MemoryFramework::raising(reason)}};
      Caller caller;
      EXPECT_EQ(QLCreateMenuBarAssertion(nullptr, 0, caller.completion()), nullptr);
      EXPECT_THAT(caller.answers,
                  ElementsAre(FrameworkError{"Orvo.MenuBar", 1, reason.value_or("Menu bar activation failed.")}));
      EXPECT_THAT(caller.threads, ElementsAre(std::this_thread::get_id()));
      EXPECT_EQ(caller.releases, 1);
      EXPECT_EQ(framework_.liveObjects(), 0U);
    }
  }
}

TEST_F(MenuBarBackend, LetsForeignExceptionsPassWithoutLeaking) {
  for (const Step step : {Step::makeConfiguration, Step::makeAssertion, Step::activate}) {
    framework_.raises = {{step, MemoryFramework::raisingForeign()}};
    caller_.releases = 0;
    EXPECT_THROW(create(), std::runtime_error);
    EXPECT_THAT(caller_.answers, IsEmpty());
    EXPECT_EQ(caller_.releases, 1);
  }
  framework_.raises.clear();
  QLAssertionRef assertion = create();
  framework_.raises = {{Step::invalidate, MemoryFramework::raisingForeign()}};
  EXPECT_THROW(QLReleaseMenuBarAssertion(assertion), std::runtime_error);
  framework_.forgetCompletion(0);
  EXPECT_EQ(framework_.liveObjects(), 0U);
  EXPECT_THAT(framework_.logged(), IsEmpty());
}

TEST_F(MenuBarBackend, PassesTheAnswerOnFromAnyThread) {
  const FrameworkError error{"Elsewhere", 7, "No."};
  QLAssertionRef assertion = create();
  ASSERT_NE(assertion, nullptr);
  EXPECT_EQ(framework_.active().size(), 1U);
  std::thread([&] { framework_.answer(0, error); }).join();
  EXPECT_THAT(caller_.answers, ElementsAre(error));
  EXPECT_EQ(caller_.releases, 0);
  framework_.forgetCompletion(0);
  EXPECT_EQ(caller_.releases, 1);
  QLReleaseMenuBarAssertion(assertion);
  EXPECT_THAT(framework_.active(), IsEmpty());
}

TEST_F(MenuBarBackend, InvokesOnceWhenTheFrameworkAnswersTwiceOrFailsAfterAnswering) {
  QLAssertionRef assertion = create();
  framework_.answer(0);
  framework_.answer(0, FrameworkError{"late", 2, "again"});
  EXPECT_THAT(caller_.answers, ElementsAre(std::nullopt));
  QLReleaseMenuBarAssertion(assertion);

  Caller early;
  framework_.onActivate = [this](std::size_t activation) {
    framework_.answer(activation);
    throw FrameworkException{"too late"};
  };
  EXPECT_EQ(QLCreateMenuBarAssertion(nullptr, 0, early.completion()), nullptr);
  EXPECT_THAT(early.answers, ElementsAre(std::nullopt));
  EXPECT_THAT(framework_.active(), IsEmpty());
  framework_.forgetCompletion(1);
  EXPECT_EQ(early.releases, 1);
}

TEST_F(MenuBarBackend, SurvivesAHandlerThatIsDroppedWhileItRuns) {
  struct Context {
    MemoryFramework& framework;
    bool released = false;
    bool releasedInside = false;
  } context{framework_};
  const QLCompletion completion{[](void* self, const QLError*) {
                                  auto& here = *static_cast<Context*>(self);
                                  here.framework.forgetCompletion(0);
                                  here.releasedInside = here.released;
                                },
                                [](void* self) { static_cast<Context*>(self)->released = true; }, &context};
  QLAssertionRef assertion = QLCreateMenuBarAssertion(nullptr, 0, completion);
  framework_.answer(0);
  EXPECT_FALSE(context.releasedInside);
  EXPECT_TRUE(context.released);
  QLReleaseMenuBarAssertion(assertion);
}

TEST_F(MenuBarBackend, EndsAnAssertionOrSaysWhyNotInTheLog) {
  QLReleaseMenuBarAssertion(nullptr);
  framework_.raises = {{Step::invalidate, MemoryFramework::raising("busy")}};
  QLReleaseMenuBarAssertion(create());
  framework_.raises = {{Step::invalidate, MemoryFramework::raising(std::nullopt)}};
  QLReleaseMenuBarAssertion(create());
  EXPECT_THAT(framework_.logged(), ElementsAre("Orvo: could not release menu bar assertion: busy",
                                               "Orvo: could not release menu bar assertion: (null)"));
  framework_.raises = {{Step::invalidate, [] { ADD_FAILURE() << "sent to an object that does not respond"; }}};
  QLAssertionRef mute = create();
  framework_.missingMessages = {"invalidate"};
  QLReleaseMenuBarAssertion(mute);
  EXPECT_EQ(framework_.logged().size(), 2U);
  EXPECT_EQ(framework_.liveObjects(), 0U);
}

}  // namespace
}  // namespace orvo
