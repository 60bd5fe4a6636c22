#include "bridge/MenuBarBackend.h"

#include "support/MemoryPlatform.h"

#include <gtest/gtest.h>

namespace orvo {

// What a caller sees of its completion.
struct Caller {
  int answers = 0, releases = 0;
  // Runs inside the completion.
  std::function<void()> inside = [] {};

  QLAssertionRef create() {
    const auto invoke = [](void* context, const QLError*) {
      auto& caller = *static_cast<Caller*>(context);
      ++caller.answers;
      caller.inside();
      EXPECT_EQ(caller.releases, 0) << "released before or while it was invoked";
    };
    const auto release = [](void* context) { ++static_cast<Caller*>(context)->releases; };
    return QLCreateMenuBarAssertion(nullptr, 0, {invoke, release, this});
  }
};

TEST(MenuBarBackendTest, CallsNobodyWhereTheFrameworkIsIncompleteOrYieldsNull) {
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
    EXPECT_TRUE(nobody.answers == 0 && nobody.releases == 1 && incomplete.liveObjects() == 0) << missing;
  }
  setConcealmentFramework(nullptr);
}

TEST(MenuBarBackendTest, ServesACallerThatNeedsNoAnswerAndSurvivesThatTheHandlerGoesWhileItIsCalled) {
  Caller last;
  MemoryPlatform memory;
  QLReleaseMenuBarAssertion(QLCreateMenuBarAssertion(nullptr, 0, {}));
  QLReleaseMenuBarAssertion(nullptr);
  memory.framework.answer(0);
  QLAssertionRef assertion = last.create();
  last.inside = [&] { memory.framework.activations[1].completion = nullptr; };
  memory.framework.activations[1].completion(std::nullopt);
  EXPECT_TRUE(last.answers == 1 && last.releases == 1);
  QLReleaseMenuBarAssertion(assertion);
  memory.framework.onActivate = [](std::size_t) { throw std::runtime_error("not the framework's own"); };
  EXPECT_THROW(last.create(), std::runtime_error);
  EXPECT_EQ(memory.framework.liveObjects(), 0U);
}

}  // namespace orvo
