#include "core/VisibilityPlan.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <utility>
#include <vector>

namespace orvo {
namespace {

using Bundles = std::set<std::string>;

TEST(VisibilityPlanTest, AllowsTheProtectedAndItselfWhenNothingRuns) {
  const VisibilityPlan plan({}, {{"marked", IconRule::hidden}}, "com.apple.systemuiserver");
  EXPECT_FALSE(plan.needsAssertion());
  EXPECT_EQ(plan.allowedBundles(),
            (Bundles{"com.apple.MenuBarAgent", "com.apple.controlcenter", "com.apple.systemuiserver",
                     "com.apple.TextInputMenuAgent", "com.apple.screencaptureui"}));
}

RC_GTEST_PROP(VisibilityPlanProperty, EveryBundleIsEitherHiddenOrAllowed, ()) {
  Bundles everything = VisibilityPlan::protectedBundles();
  everything.insert({"a", "b", "A", "com.apple.ControlCenter"});
  const auto bundle = rc::gen::elementOf(std::vector<std::string>(everything.begin(), everything.end()));
  const auto drawn = *rc::gen::container<std::vector<std::string>>(bundle);
  const Bundles running(drawn.begin(), drawn.end());
  std::map<std::string, IconRule> rules;
  for (const std::string& each : *rc::gen::container<std::vector<std::string>>(bundle)) {
    rules[each] = *rc::gen::element(IconRule::visible, IconRule::hidden);
  }
  const auto self = *bundle;
  const VisibilityPlan plan(running, rules, self);
  for (const std::string& each : everything) {
    const bool excluded = each == self || VisibilityPlan::protectedBundles().contains(each);
    const auto rule = rules.find(each);
    const bool hidden = running.contains(each) && rule != rules.end() && rule->second == IconRule::hidden && !excluded;
    RC_ASSERT(plan.hiddenBundles().contains(each) == hidden);
    RC_ASSERT(plan.allowedBundles().contains(each) == ((running.contains(each) || excluded) && !hidden));
  }
  RC_ASSERT(plan.needsAssertion() == !plan.hiddenBundles().empty());
}

}  // namespace
}  // namespace orvo
