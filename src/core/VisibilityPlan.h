// Which applications' icons a hide request conceals and which keep theirs. A plain value; any thread.
#pragma once

#include "core/IconRule.h"

#include <map>
#include <set>
#include <string>

namespace orvo {

class VisibilityPlan {
 public:
  VisibilityPlan(const std::set<std::string>& runningBundles, const std::map<std::string, IconRule>& rules,
                 const std::string& ownBundle);

  const std::set<std::string>& hiddenBundles() const { return hiddenBundles_; }
  const std::set<std::string>& allowedBundles() const { return allowedBundles_; }
  bool needsAssertion() const { return !hiddenBundles_.empty(); }

  bool operator==(const VisibilityPlan&) const = default;

  // System components that are never hidden and never listed.
  static const std::set<std::string>& protectedBundles();

 private:
  std::set<std::string> hiddenBundles_;
  std::set<std::string> allowedBundles_;
};

}  // namespace orvo
