#include "platform/linux/framework/FrameworkLibrary.h"

#include "platform/linux/busSupport/ScriptedAgent.h"
#include "platform/linux/framework/client/AgentClient.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <mutex>
#include <thread>

namespace orvo {
namespace {

using test::runUntil;
using test::ScriptedAgent;

constexpr const char* frameworkPath = "/System/Library/PrivateFrameworks/MenuBarClientCore.framework/MenuBarClientCore";
constexpr const char* activateMessage = "activateWithConfiguration:completionHandler:";
constexpr std::array<int, 9> systemItems{0, 1, 2, 3, 4, 5, 6, 7, 8};

struct Answers {
  std::mutex mutex;
  std::vector<std::string> list;

  ConcealmentFramework::CompletionHandler handler() {
    return [this, caller = std::this_thread::get_id()](const std::optional<FrameworkError>& error) {
      const std::lock_guard lock(mutex);
      EXPECT_NE(std::this_thread::get_id(), caller);
      list.push_back(error ? error->localizedDescription : "granted");
    };
  }
  std::vector<std::string> get() {
    const std::lock_guard lock(mutex);
    return list;
  }
  std::string awaited() {
    EXPECT_TRUE(runUntil([&] { return !get().empty(); }));
    EXPECT_EQ(get().size(), 1U);
    return get().front();
  }
};

class FrameworkLibraryTest : public ::testing::Test {
 protected:
  FrameworkLibraryTest() {
    EXPECT_TRUE(framework_.load(frameworkPath));
    configurationType_ = framework_.classNamed("MBAssessmentModeConfiguration");
    assertionType_ = framework_.classNamed("MBAssessmentModeAssertion");
  }

  bool usable() {
    EXPECT_FALSE(framework_.instancesRespondTo(configurationType_, activateMessage));
    return framework_.instancesRespondTo(assertionType_, activateMessage);
  }

  FrameworkObjectRef activate(Answers& answers, const std::vector<std::string>& allowed = {"a.b", "c"}) {
    const auto configuration = framework_.makeConfiguration(configurationType_, systemItems, allowed);
    auto assertion = framework_.makeAssertion(assertionType_);
    framework_.activate(*assertion, configuration, answers.handler());
    return assertion;
  }

  FrameworkLibrary framework_{ORVO_BUNDLE};
  FrameworkClassRef configurationType_ = nullptr;
  FrameworkClassRef assertionType_ = nullptr;
};

TEST_F(FrameworkLibraryTest, IsUnusableWhileTheAgentIsAbsentSilentOrWithoutTheWatcher) {
  EXPECT_TRUE(runUntil([&] { return !usable(); }));
  ScriptedAgent agent;
  EXPECT_TRUE(runUntil([&] {
    const auto before = agent.count("");
    return usable() && agent.count("") == before;
  })) << "one that is known is not asked again";
  agent.setHeld(false);
  EXPECT_TRUE(runUntil([&] { return !usable(); }));
  agent.setHeld(true);
  EXPECT_TRUE(usable());
  agent.vanish();
  EXPECT_TRUE(runUntil([&] { return !usable(); }));
  ScriptedAgent mute(ScriptedAgent::Mood::silent);
  EXPECT_TRUE(runUntil([&] { return !usable(); }));
}

TEST_F(FrameworkLibraryTest, PassesTheRequestUnchangedAndAnswersOnceOnAnotherThreadAndNeverRunsTheCallersLoop) {
  EXPECT_TRUE(runUntil([&] { return !usable(); }));
  QObject caller;
  bool ran = false;
  QMetaObject::invokeMethod(
      &caller, [&] { ran = true; }, Qt::QueuedConnection);
  EXPECT_FALSE(usable()) << "asks, and waits for the answer";
  ScriptedAgent agent;
  Answers answers;
  const auto assertion = activate(answers, {"org.example.A", "", "ünï.ço"});
  EXPECT_FALSE(ran);
  EXPECT_EQ(answers.awaited(), "granted");
  EXPECT_EQ(agent.count("Activate org.example.A  ünï.ço"), 1);
}

TEST_F(FrameworkLibraryTest, InvalidationRightAfterActivationEndsTheConcealmentThoughTheAnswerIsLate) {
  ScriptedAgent agent(ScriptedAgent::Mood::silent);
  Answers answers;
  const auto assertion = activate(answers);
  framework_.invalidate(*assertion);
  ASSERT_TRUE(runUntil([&] { return agent.count("Activate") > 0; }));
  agent.catchUp();
  EXPECT_TRUE(runUntil([&] { return agent.count("Invalidate 1") == 1; }));
  EXPECT_EQ(answers.awaited(), "The request ended before it took effect.");
}

TEST_F(FrameworkLibraryTest, TheLastReferenceEndsTheConcealmentOnce) {
  ScriptedAgent agent;
  Answers answers;
  auto assertion = activate(answers);
  answers.awaited();
  framework_.invalidate(*assertion);
  framework_.invalidate(*assertion);
  assertion.reset();
  Answers later;
  auto next = activate(later);
  later.awaited();
  EXPECT_EQ(agent.count("Invalidate 1"), 1);
  next.reset();
  EXPECT_TRUE(runUntil([&] { return agent.count("Invalidate 2") == 1; }));
}

TEST_F(FrameworkLibraryTest, AnAssertionOfAnEarlierAgentNeverEndsOneOfItsSuccessor) {
  auto first = std::make_unique<ScriptedAgent>();
  Answers before;
  const auto old = activate(before);
  before.awaited();
  first.reset();
  ScriptedAgent second;
  Answers after;
  const auto current = activate(after);
  after.awaited();
  framework_.invalidate(*old);
  framework_.invalidate(*current);
  ASSERT_TRUE(runUntil([&] { return second.count("Invalidate 1") > 0; }));
  EXPECT_EQ(second.count("Invalidate 1"), 1);
}

TEST_F(FrameworkLibraryTest, EveryFailureOfTheAgentIsAnErrorGivenOnce) {
  Answers absent;
  const auto first = activate(absent);
  EXPECT_EQ(absent.awaited(), "The menu bar agent is not running.");
  Answers refused;
  Answers deserted;
  {
    ScriptedAgent agent(ScriptedAgent::Mood::refuses);
    const auto second = activate(refused);
    EXPECT_EQ(refused.awaited(), "Another program manages the status icons.");
  }
  ScriptedAgent agent(ScriptedAgent::Mood::silent);
  const auto third = activate(deserted);
  ASSERT_TRUE(runUntil([&] { return agent.count("Activate") > 0; }));
  agent.vanish();
  EXPECT_EQ(deserted.awaited(), "The menu bar agent is not running.");
}

TEST_F(FrameworkLibraryTest, WhatTheLibraryRaisesArrivesAsFrameworkException) {
  const auto reasonOf = [](const auto& action) {
    try {
      action();
    } catch (const FrameworkException& exception) {
      return exception.reason.value_or("none");
    }
    return std::string("nothing raised");
  };
  EXPECT_EQ(reasonOf([&] { framework_.makeConfiguration(configurationType_, systemItems, {"caf\xe9"}); }),
            "A bundle identifier is not valid UTF-8.");
  ScriptedAgent agent;
  Answers answers;
  const auto assertion = activate(answers);
  const auto configuration = framework_.makeConfiguration(configurationType_, systemItems, {});
  EXPECT_EQ(reasonOf([&] { framework_.activate(*assertion, configuration, answers.handler()); }),
            "The assertion has been activated before.");
  answers.awaited();
}

TEST_F(FrameworkLibraryTest, NoCompletionComesAfterTheLoaderIsGone) {
  ScriptedAgent agent(ScriptedAgent::Mood::silent);
  Answers answers;
  {
    FrameworkLibrary passing(ORVO_BUNDLE);
    ASSERT_TRUE(passing.load(frameworkPath));
    const auto configuration = passing.makeConfiguration(configurationType_, systemItems, {});
    const auto assertion = passing.makeAssertion(assertionType_);
    passing.activate(*assertion, configuration, answers.handler());
    ASSERT_TRUE(runUntil([&] { return agent.count("Activate") > 0; }));
  }
  agent.catchUp();
  // The invalidation that follows the late answer is sent before its completion would run.
  Answers later;
  const auto next = activate(later);
  later.awaited();
  EXPECT_TRUE(answers.get().empty());
}

// The client behind the library, with a limit that a test can wait for.
TEST(AgentClientTest, ASilentAgentIsAnErrorAndItsLateGrantIsEndedAgain) {
  ScriptedAgent agent(ScriptedAgent::Mood::silent);
  AgentClient client(*test::otherConnection(), std::chrono::milliseconds(50));
  std::atomic<int> errors = 0;
  const auto concealment = std::make_shared<Concealment>();
  concealment->completion = [&](const auto& error) {
    if (error && error->code == ConcealmentErrorCode::noAnswer) ++errors;
  };
  client.activate(concealment, {});
  ASSERT_TRUE(runUntil([&] { return errors == 1; }));
  agent.catchUp();
  EXPECT_TRUE(runUntil([&] { return agent.count("Invalidate 1") == 1; }));
  EXPECT_EQ(errors, 1);
}

}  // namespace
}  // namespace orvo
