#include "core/VisibilityPlan.h"

#include <algorithm>
#include <iterator>

namespace orvo {

VisibilityPlan::VisibilityPlan(const std::set<std::string>& runningBundles,
                               const std::map<std::string, IconRule>& rules, const std::string& ownBundle) {
  std::set<std::string> excluded = protectedBundles();
  excluded.insert(ownBundle);
  for (const auto& [bundle, rule] : rules) {
    if (rule == IconRule::hidden && runningBundles.contains(bundle) && !excluded.contains(bundle)) {
      hiddenBundles_.insert(bundle);
    }
  }
  std::set_difference(runningBundles.begin(), runningBundles.end(), hiddenBundles_.begin(), hiddenBundles_.end(),
                      std::inserter(allowedBundles_, allowedBundles_.end()));
  allowedBundles_.merge(excluded);
}

const std::set<std::string>& VisibilityPlan::protectedBundles() {
  static const std::set<std::string> bundles{"com.apple.MenuBarAgent", "com.apple.controlcenter",
                                             "com.apple.systemuiserver", "com.apple.TextInputMenuAgent",
                                             "com.apple.screencaptureui"};
  return bundles;
}

}  // namespace orvo
