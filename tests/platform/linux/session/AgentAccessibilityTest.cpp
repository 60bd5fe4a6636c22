#include "platform/linux/session/AgentAccessibility.h"

#include "platform/linux/busSupport/ScriptedAgent.h"

#include <QElapsedTimer>

namespace orvo {
namespace {

using test::Program;
using test::runUntil;
using test::ScriptedAgent;

constexpr int host = 4242;

using Elements = std::vector<AccessibilityElementRef>;

int walk(const AccessibilityElementRef& element) {
  int count = 1;
  for (const char* name : {"AXFrame", "AXIdentifier"}) element->copyAttributeValue(name);
  const auto children = element->copyAttributeValue("AXChildren");
  for (const auto& child : children ? std::get<Elements>(*children) : Elements()) count += walk(child);
  return count;
}

AccessibilityElementRef rootOf(AgentAccessibility& accessibility) {
  auto root = accessibility.applicationElement(host);
  root->setMessagingTimeout(0.2F);
  return root;
}

TEST(AgentAccessibilityTest, TheTreeIsReadAsTheAgentTellsIt) {
  ScriptedAgent agent;
  agent.setTree({{-1, host, "", false},
                 {0, 77, "", true, {1, 2, 3, 4}},
                 {0, host, "com.apple.menuextra.clock", true, {-5.5, 0, 0, 24}},
                 {2, host, "", false}});
  AgentAccessibility accessibility;
  const auto root = rootOf(accessibility);
  EXPECT_EQ(root->processIdentifier(), host);
  EXPECT_FALSE(root->copyAttributeValue("AXFrame"));
  EXPECT_FALSE(root->copyAttributeValue("AXTitle"));
  const auto children = std::get<Elements>(*root->copyAttributeValue("AXChildren"));
  ASSERT_EQ(children.size(), 2U);
  EXPECT_EQ(children[0]->processIdentifier(), 77);
  EXPECT_EQ(std::get<Rect>(*children[0]->copyAttributeValue("AXFrame")), (Rect{1, 2, 3, 4}));
  EXPECT_FALSE(children[0]->copyAttributeValue("AXIdentifier"));
  EXPECT_EQ(std::get<std::string>(*children[1]->copyAttributeValue("AXIdentifier")), "com.apple.menuextra.clock");
  EXPECT_EQ(std::get<Rect>(*children[1]->copyAttributeValue("AXFrame")), (Rect{-5.5, 0, 0, 24}));
  EXPECT_EQ(walk(root), 4);
  EXPECT_EQ(agent.count("Tree"), 1);
}

TEST(AgentAccessibilityTest, ATreeThatIsNotTheHostsOrNotATreeHasNoAttributes) {
  struct Case {
    std::string name;
    QList<TreeElement> tree;
    bool silent = false;
  };
  for (const Case& one : {Case{"another process", {{-1, host + 1, "", true}}}, Case{"no element", {}},
                          Case{"a root with a parent", {{0, host, "", true}}},
                          Case{"a child before its parent", {{-1, host, "", true}, {2, 1, "", true}, {0, 1, "", true}}},
                          Case{"a second root", {{-1, host, "", true}, {-1, host, "", true}}},
                          Case{"a silent agent", {{-1, host, "", true}}, true}}) {
    ScriptedAgent agent(one.silent ? ScriptedAgent::Mood::silent : ScriptedAgent::Mood::answers);
    agent.setTree(one.tree);
    AgentAccessibility accessibility;
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(walk(rootOf(accessibility)), 1) << one.name;
    EXPECT_LT(clock.elapsed(), 1500) << one.name;
    EXPECT_EQ(agent.count("Tree"), 1) << one.name;
  }
}

TEST(AgentAccessibilityTest, TrustFollowsTheSessionsAccessibilityAndThePromptSwitchesItOn) {
  ::testing::internal::CaptureStderr();
  AgentAccessibility accessibility;
  EXPECT_FALSE(accessibility.isProcessTrusted());
  EXPECT_NE(::testing::internal::GetCapturedStderr().find("accessibility bus does not answer"), std::string::npos);
  const auto busIsThere = [] {
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(QStringLiteral("org.a11y.Bus")).value();
  };
  {
    Program launcher(QStringLiteral("/usr/libexec/at-spi-bus-launcher"), {});
    ASSERT_TRUE(runUntil(busIsThere));
    EXPECT_FALSE(accessibility.isProcessTrusted(true));
    EXPECT_TRUE(runUntil([&] { return accessibility.isProcessTrusted(); }));
    AgentAccessibility later;
    EXPECT_TRUE(later.isProcessTrusted());
  }
  EXPECT_TRUE(runUntil([&] { return !accessibility.isProcessTrusted(); }));
}

}  // namespace
}  // namespace orvo
