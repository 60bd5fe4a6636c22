#include "core/VisibilityPlan.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <utility>
#include <vector>

namespace orvo {
namespace {

using Bundles = std::set<std::string>;

const std::string own = "local.orvo.Orvo";

TEST(VisibilityPlan, HidesWhatRunsAndIsMarkedAndMayBeHidden) {
  const std::map<std::string, IconRule> rules{{"marked", IconRule::hidden},
                                              {"kept", IconRule::visible},
                                              {"absent", IconRule::hidden},
                                              {own, IconRule::hidden},
                                              {"com.apple.controlcenter", IconRule::hidden},
                                              {"com.apple.ControlCenter", IconRule::hidden}};
  const Bundles running{"marked", "kept", "unknown", own, "com.apple.controlcenter", "com.apple.ControlCenter"};
  const VisibilityPlan plan(running, rules, own);
  EXPECT_EQ(plan.hiddenBundles(), (Bundles{"marked", "com.apple.ControlCenter"}));
  Bundles allowed = VisibilityPlan::protectedBundles();
  allowed.insert({"kept", "unknown", own});
  EXPECT_EQ(plan.allowedBundles(), allowed);
  EXPECT_TRUE(plan.needsAssertion());
}

TEST(VisibilityPlan, AllowsTheProtectedAndItselfWhenNothingRuns) {
  const VisibilityPlan plan({}, {{"marked", IconRule::hidden}}, "com.apple.systemuiserver");
  EXPECT_FALSE(plan.needsAssertion());
  EXPECT_EQ(plan.allowedBundles(),
            (Bundles{"com.apple.MenuBarAgent", "com.apple.controlcenter", "com.apple.systemuiserver",
                     "com.apple.TextInputMenuAgent", "com.apple.screencaptureui"}));
  EXPECT_EQ(plan, VisibilityPlan({}, {}, "com.apple.controlcenter"));
  EXPECT_NE(plan, VisibilityPlan({"other"}, {}, "com.apple.controlcenter"));
}

RC_GTEST_PROP(VisibilityPlanProperty, EveryBundleIsEitherHiddenOrAllowed, ()) {
  std::vector<std::string> pool{"a", "b", "c", "A", own};
  pool.insert(pool.end(), VisibilityPlan::protectedBundles().begin(), VisibilityPlan::protectedBundles().end());
  const auto bundle = rc::gen::elementOf(pool);
  const auto drawnRunning = *rc::gen::container<std::vector<std::string>>(bundle);
  const Bundles running(drawnRunning.begin(), drawnRunning.end());
  const auto drawnRules = *rc::gen::container<std::vector<std::pair<std::string, IconRule>>>(
      rc::gen::pair(bundle, rc::gen::element(IconRule::visible, IconRule::hidden)));
  const std::map<std::string, IconRule> rules(drawnRules.begin(), drawnRules.end());
  const auto self = *bundle;
  const VisibilityPlan plan(running, rules, self);

  Bundles everything = running;
  everything.insert(VisibilityPlan::protectedBundles().begin(), VisibilityPlan::protectedBundles().end());
  everything.insert(self);
  for (const std::string& each : everything) {
    const auto rule = rules.find(each);
    const bool hidden = running.contains(each) && rule != rules.end() && rule->second == IconRule::hidden &&
                        each != self && !VisibilityPlan::protectedBundles().contains(each);
    RC_ASSERT(plan.hiddenBundles().contains(each) == hidden);
    RC_ASSERT(plan.allowedBundles().contains(each) == !hidden);
  }
  RC_ASSERT(plan.hiddenBundles().size() + plan.allowedBundles().size() == everything.size());
}

}  // namespace
}  // namespace orvo
