#include "platform/linux/framework/FrameworkLibrary.h"

#include "platform/linux/busSupport/TestSession.h"
#include "platform/linux/framework/client/AgentClient.h"

#include <QDBusVariant>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>
#include <utility>

namespace orvo {
namespace {

using test::runUntil;

constexpr const char* frameworkPath = "/System/Library/PrivateFrameworks/MenuBarClientCore.framework/MenuBarClientCore";
constexpr const char* activateMessage = "activateWithConfiguration:completionHandler:";
constexpr const char* watcher = "org.kde.StatusNotifierWatcher";
constexpr std::array<int, 9> systemItems{0, 1, 2, 3, 4, 5, 6, 7, 8};

// The agent with one item.
struct Tray {
  Tray() { peer->ask("register('/item')"); }

  // Once the agent has carried out what had reached it.
  static bool isHidden() {
    auto question =
        QDBusMessage::createMethodCall(watcher, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get");
    question << watcher << "RegisteredStatusNotifierItems";
    const auto told = QDBusConnection::sessionBus().call(question).arguments().value(0);
    return told.value<QDBusVariant>().variant().toStringList().isEmpty();
  }

  std::unique_ptr<test::Program> agent = test::agent();
  std::unique_ptr<test::Program> peer = test::peer("ünï.ço");
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
  // Notes the answer, an empty one for a grant, on the main thread.
  ConcealmentFramework::CompletionHandler handler() {
    return [this, caller = std::this_thread::get_id()](const std::optional<FrameworkError>& error) {
      EXPECT_NE(std::this_thread::get_id(), caller);
      QMetaObject::invokeMethod(
          &notes_, [this, text = error ? error->localizedDescription : ""] { answers_.push_back(text); },
          Qt::QueuedConnection);
    };
  }
  FrameworkObjectRef activate(FrameworkLibrary& framework, const std::vector<std::string>& allowed = {}) {
    auto assertion = framework.makeAssertion(assertionType_);
    framework.activate(*assertion, framework.makeConfiguration(configurationType_, systemItems, allowed), handler());
    return assertion;
  }
  // The one answer since the last.
  std::string answer() {
    EXPECT_TRUE(runUntil([&] { return !answers_.empty(); }));
    EXPECT_EQ(answers_.size(), 1U);
    return std::exchange(answers_, {}).front();
  }
  FrameworkObjectRef granted(const std::vector<std::string>& allowed = {}) {
    auto assertion = activate(framework_, allowed);
    EXPECT_EQ(answer(), "");
    return assertion;
  }

  QObject notes_;
  std::vector<std::string> answers_;
  FrameworkLibrary framework_{ORVO_BUNDLE};
  FrameworkClassRef configurationType_ = nullptr;
  FrameworkClassRef assertionType_ = nullptr;
};

TEST_F(FrameworkLibraryTest, IsUsableWhileTheAgentIsThereAnswersAndHoldsTheWatcher) {
  EXPECT_FALSE(usable());
  auto agent = test::agent();
  EXPECT_TRUE(runUntil([&] { return usable(); }));
  EXPECT_TRUE(runUntil([&] {
    agent->signal(SIGSTOP);
    const bool known = usable();
    agent->signal(SIGCONT);
    return known;
  })) << "one that is known is not asked again";
  agent.reset();
  EXPECT_TRUE(runUntil([&] { return !usable(); }));
  auto holder = test::otherConnection();
  holder->interface()->registerService(watcher);
  agent = test::agent();
  EXPECT_FALSE(usable());
  holder.reset();
  EXPECT_TRUE(runUntil([&] { return usable(); }));
  agent.reset();
  const auto mute = test::peer("mute");
  mute->ask("own('local.orvo.MenuBarAgent')");
  mute->signal(SIGSTOP);
  EXPECT_FALSE(usable());
}

TEST_F(FrameworkLibraryTest, PassesTheRequestAndNeverRunsTheCallersLoop) {
  bool ran = false;
  QMetaObject::invokeMethod(
      &notes_, [&] { ran = true; }, Qt::QueuedConnection);
  EXPECT_FALSE(usable()) << "asks, and waits for the answer";
  EXPECT_FALSE(ran);
  const Tray tray;
  auto assertion = granted({"org.example.A", "", "ünï.ço"});
  EXPECT_FALSE(Tray::isHidden());
  assertion = granted({"ünï.çö"});
  EXPECT_TRUE(Tray::isHidden());
}

TEST_F(FrameworkLibraryTest, AConcealmentEndsWithItsLastReferenceOrBeforeItsAnswerHasCome) {
  const Tray tray;
  auto assertion = granted();
  EXPECT_TRUE(Tray::isHidden());
  assertion.reset();
  EXPECT_TRUE(runUntil([] { return !Tray::isHidden(); }));
  tray.agent->signal(SIGSTOP);
  assertion = activate(framework_);
  framework_.invalidate(*assertion);
  framework_.invalidate(*assertion);
  tray.agent->signal(SIGCONT);
  EXPECT_EQ(answer(), "The request ended before it took effect.");
  EXPECT_TRUE(runUntil([] { return !Tray::isHidden(); }));
}

TEST_F(FrameworkLibraryTest, AnAssertionOfAnEarlierAgentNeverEndsOneOfItsSuccessor) {
  auto first = std::make_unique<Tray>();
  const auto old = granted();
  first.reset();
  const Tray second;
  const auto current = granted();
  framework_.invalidate(*old);
  granted().reset();  // behind it
  EXPECT_TRUE(Tray::isHidden());
  framework_.invalidate(*current);
  EXPECT_TRUE(runUntil([] { return !Tray::isHidden(); }));
}

TEST_F(FrameworkLibraryTest, EveryFailureOfTheAgentIsAnErrorGivenOnce) {
  const auto first = activate(framework_);
  EXPECT_EQ(answer(), "The menu bar agent is not running.");
  const auto holder = test::otherConnection();
  holder->interface()->registerService(watcher);
  const auto agent = test::agent();
  const auto second = activate(framework_);
  EXPECT_EQ(answer(), "Another program manages the status icons.");
  agent->signal(SIGSTOP);
  const auto third = activate(framework_);
  EXPECT_FALSE(usable()) << "asked behind the request";
  agent->end();
  EXPECT_EQ(answer(), "The menu bar agent is not running.");
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
  const auto assertion = activate(framework_);
  const auto configuration = framework_.makeConfiguration(configurationType_, systemItems, {});
  EXPECT_EQ(reasonOf([&] { framework_.activate(*assertion, configuration, handler()); }),
            "The assertion has been activated before.");
  EXPECT_EQ(answer(), "The menu bar agent is not running.");
}

TEST_F(FrameworkLibraryTest, NoCompletionComesAfterTheLoaderIsGone) {
  const auto agent = test::agent();
  agent->signal(SIGSTOP);
  {
    FrameworkLibrary passing(ORVO_BUNDLE);
    ASSERT_TRUE(passing.load(frameworkPath));
    const auto assertion = activate(passing);
  }
  agent->signal(SIGCONT);
  granted();
}

// The client behind the library, with a limit that a test can wait for.
TEST(AgentClientTest, ASilentAgentIsAnErrorAndItsLateGrantIsEndedAgain) {
  const Tray tray;
  tray.agent->signal(SIGSTOP);
  AgentClient client(*test::otherConnection(), std::chrono::milliseconds(50));
  std::atomic<int> errors = 0;
  const auto concealment = std::make_shared<AssertionState>();
  concealment->completion = [&](const auto& error) {
    if (error && error->code == AgentClient::noAnswer) ++errors;
  };
  client.activate(concealment, {});
  ASSERT_TRUE(runUntil([&] { return errors == 1; }));
  tray.agent->signal(SIGCONT);
  EXPECT_TRUE(runUntil([] { return !Tray::isHidden(); }));
  EXPECT_EQ(errors, 1);
}

}  // namespace
}  // namespace orvo
