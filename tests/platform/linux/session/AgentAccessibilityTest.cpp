#include "platform/linux/session/AgentAccessibility.h"

#include "platform/linux/busSupport/TestSession.h"

#include <QDBusInterface>
#include <QElapsedTimer>

namespace orvo {
namespace {

using test::runUntil;

constexpr int host = 4242;

using Elements = std::vector<AccessibilityElementRef>;

// What a tree tells, in pre-order.
std::string walk(const AccessibilityElementRef& element) {
  std::string told = std::to_string(element->processIdentifier().value_or(0));
  if (const auto name = element->copyAttributeValue("AXIdentifier")) told += ' ' + std::get<std::string>(*name);
  if (const auto frame = element->copyAttributeValue("AXFrame")) {
    const auto& rect = std::get<Rect>(*frame);
    for (const double value : {rect.x, rect.y, rect.width, rect.height})
      told += ' ' + std::to_string(std::lround(value));
  }
  EXPECT_FALSE(element->copyAttributeValue("AXTitle"));
  const auto children = element->copyAttributeValue("AXChildren");
  for (const auto& child : children ? std::get<Elements>(*children) : Elements()) told += " (" + walk(child) + ')';
  return told;
}

TEST(AgentAccessibilityTest, ATreeIsReadOnceAsItIsToldAndOneThatIsNotTheHostsOrNoneHasNoAttributes) {
  const QString root = "(-1, 4242, '', false, (0.0, 0.0, 0.0, 0.0))";
  const QString child = ", (0, 7, '', true, (1.0, 2.0, 3.0, 4.0))";
  const struct {
    QString tree;
    std::string told;
  } cases[]{
      {root + child + ", (0, 4242, 'clock', true, (-5.0, 0.0, 0.0, 24.0)), (2, 8, '', false, (0.0, 0.0, 0.0, 0.0))",
       "4242 (7 1 2 3 4) (4242 clock -5 0 0 24 (8))"},
      {root + QString(child).replace("4.0", "40000.0"), "4242 (7)"},
      {"(-1, 4243, '', true, (0.0, 0.0, 0.0, 0.0))" + child, "4242"},
      {"(0, 4242, '', true, (0.0, 0.0, 0.0, 0.0))", "4242"},
      {root + ", (2, 1, '', true, (0.0, 0.0, 0.0, 0.0))" + child, "4242"},
      {root + ", " + root, "4242"},
      {"'no tree'", "4242"},
      {"", "4242"},
  };
  const auto agent = test::peer("forger");
  agent->ask("own('local.orvo.MenuBarAgent')");
  agent->ask("serve(Tree=lambda: items.pop('tree', '(@as [],)'))");  // once, so that a second question is seen
  AgentAccessibility accessibility;
  for (const auto& [tree, told] : cases) {
    if (!tree.isEmpty()) agent->ask("items.update(tree=\"([" + tree + "],)\")");
    if (tree.isEmpty()) agent->signal(SIGSTOP);
    const auto element = accessibility.applicationElement(host);
    element->setMessagingTimeout(0.2F);
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(walk(element), told) << tree.toStdString();
    EXPECT_LT(clock.elapsed(), 1500);
  }
}

TEST(AgentAccessibilityTest, ThePromptSwitchesAccessibilityOnAndItsSwitchOrEndTakesTrustAway) {
  AgentAccessibility accessibility;
  QDBusInterface launcher("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status");
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(runUntil([&] { return !accessibility.isProcessTrusted(true); }));
    EXPECT_TRUE(runUntil([&] { return accessibility.isProcessTrusted(); }));
    if (round == 0) launcher.setProperty("IsEnabled", false);
  }
  ::kill(static_cast<int>(QDBusConnection::sessionBus().interface()->servicePid("org.a11y.Bus").value()), SIGKILL);
  EXPECT_TRUE(runUntil([&] { return !accessibility.isProcessTrusted(); }));
}

}  // namespace
}  // namespace orvo
