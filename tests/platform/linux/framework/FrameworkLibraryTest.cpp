#include "platform/linux/framework/FrameworkLibrary.h"

#include "platform/linux/busSupport/TestSession.h"
#include "platform/linux/framework/client/AgentClient.h"

#include <array>
#include <atomic>
#include <thread>
#include <utility>

namespace orvo {
namespace {

using test::runUntil;

constexpr const char* frameworkPath = "/System/Library/PrivateFrameworks/MenuBarClientCore.framework/MenuBarClientCore";
constexpr const char* activateMessage = "activateWithConfiguration:completionHandler:";
constexpr std::array<int, 9> systemItems{0, 1, 2, 3, 4, 5, 6, 7, 8};

// Whether the agent conceals for anybody, once it has carried out what had reached it.
bool conceals() {
  const auto question = QDBusMessage::createMethodCall("local.orvo.MenuBarAgent", "/local/orvo/MenuBarAgent",
                                                       "local.orvo.MenuBarAgent1", "Requesters");
  const auto told = QDBusConnection::sessionBus().call(question).arguments().value(0);
  return !qdbus_cast<QList<quint32>>(told).isEmpty();
}

class FrameworkLibraryTest : public ::testing::Test {
 protected:
  FrameworkLibraryTest() {
    EXPECT_TRUE(framework_.load(frameworkPath));
    configurationType_ = framework_.classNamed("MBAssessmentModeConfiguration");
    assertionType_ = framework_.classNamed("MBAssessmentModeAssertion");
  }

  bool usable() { return framework_.instancesRespondTo(assertionType_, activateMessage); }
  void activate(FrameworkLibrary& framework, FrameworkObject& assertion, const std::string& allowed = "") {
    framework.activate(assertion, framework.makeConfiguration(configurationType_, systemItems, {allowed}),
                       [this, caller = std::this_thread::get_id()](const std::optional<FrameworkError>& error) {
                         EXPECT_NE(std::this_thread::get_id(), caller);
                         QMetaObject::invokeMethod(
                             &notes_,
                             [this, text = error ? error->localizedDescription : ""] { answers_.push_back(text); },
                             Qt::QueuedConnection);
                       });
  }
  // The one answer since the last, empty for a grant.
  std::string answer() {
    EXPECT_TRUE(runUntil([&] { return !answers_.empty(); }));
    EXPECT_EQ(answers_.size(), 1U);
    return std::exchange(answers_, {}).front();
  }
  FrameworkObjectRef activated() {
    auto assertion = framework_.makeAssertion(assertionType_);
    activate(framework_, *assertion);
    return assertion;
  }
  FrameworkObjectRef granted() {
    auto assertion = activated();
    EXPECT_EQ(answer(), "");
    return assertion;
  }

  QObject notes_;
  std::vector<std::string> answers_;
  FrameworkLibrary framework_{ORVO_BUNDLE};
  FrameworkClassRef configurationType_ = nullptr;
  FrameworkClassRef assertionType_ = nullptr;
};

TEST_F(FrameworkLibraryTest, IsUsableWhileTheAgentIsThereAnswersAndHoldsTheWatcherAndSaysElseWhatIsWrong) {
  bool ran = false;
  QMetaObject::invokeMethod(
      &notes_, [&] { ran = true; }, Qt::QueuedConnection);
  EXPECT_FALSE(usable() || ran) << "asks, waits for the answer, and never runs the caller's loop";
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
  const auto first = activated();
  EXPECT_EQ(answer(), "The menu bar agent is not running.");
  EXPECT_THROW(activate(framework_, *first), FrameworkException) << "a second time";
  const auto fresh = framework_.makeAssertion(assertionType_);
  EXPECT_THROW(activate(framework_, *fresh, "caf\xe9"), FrameworkException) << "what the bus cannot carry";

  const auto holder = test::peer("holder");
  holder->ask("own('org.kde.StatusNotifierWatcher')");
  agent = test::agent();
  EXPECT_FALSE(usable());
  const auto second = activated();
  EXPECT_EQ(answer(), "Another program manages the status icons.");
  holder->ask("release('org.kde.StatusNotifierWatcher')");
  EXPECT_TRUE(runUntil([&] { return usable(); }));
  agent->signal(SIGSTOP);
  const auto third = activated();
  agent.reset();
  EXPECT_EQ(answer(), "The menu bar agent is not running.");
}

TEST_F(FrameworkLibraryTest, AConcealmentEndsWithItsLastReferenceOrBeforeItsAnswerHasComeAndNeverAnotherAgents) {
  auto agent = test::agent();
  const auto old = granted();
  agent.reset();
  agent = test::agent();
  auto assertion = granted();
  framework_.invalidate(*old);
  int looks = 0;
  EXPECT_TRUE(runUntil([&] { return !conceals() || ++looks == 50; }));
  EXPECT_EQ(looks, 50) << "an assertion of an earlier agent ends none of its successor";
  assertion.reset();
  EXPECT_TRUE(runUntil([] { return !conceals(); }));
  agent->signal(SIGSTOP);
  assertion = activated();
  framework_.invalidate(*assertion);
  framework_.invalidate(*assertion);
  agent->signal(SIGCONT);
  EXPECT_EQ(answer(), "The request ended before it took effect.");
  EXPECT_TRUE(runUntil([] { return !conceals(); }));
  agent->signal(SIGSTOP);
  {
    FrameworkLibrary passing(ORVO_BUNDLE);
    ASSERT_TRUE(passing.load(frameworkPath));
    activate(passing, *passing.makeAssertion(assertionType_));
  }
  agent->signal(SIGCONT);
  granted();  // and no other answer: none comes after its loader is gone
}

// The client behind the library, with a limit that a test can wait for.
TEST(AgentClientTest, ASilentAgentIsAnErrorAndItsLateGrantIsEndedAgain) {
  const auto agent = test::agent();
  agent->signal(SIGSTOP);
  AgentClient client(QDBusConnection::connectToBus(QDBusConnection::SessionBus, "client"),
                     std::chrono::milliseconds(50));
  std::atomic<int> errors = 0;
  const auto concealment = std::make_shared<AssertionState>();
  concealment->completion = [&](const auto& error) {
    if (error && error->code == AgentClient::noAnswer) ++errors;
  };
  client.activate(concealment, {});
  ASSERT_TRUE(runUntil([&] { return errors == 1; }));
  agent->signal(SIGCONT);
  int looks = 0;  // The agent grants it a moment later.
  EXPECT_TRUE(runUntil([&] { return ++looks >= 50 && !conceals(); }));
  EXPECT_EQ(errors, 1);
}

}  // namespace
}  // namespace orvo
