// The person's choice for an application's icons, and its stored form. A value; any thread.
#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace orvo {

// The choice made for one application. Without one, an application counts as visible.
enum class IconRule { visible, hidden };

inline constexpr std::array<IconRule, 2> allIconRules{IconRule::visible, IconRule::hidden};

constexpr std::string_view rawValue(IconRule rule) { return rule == IconRule::hidden ? "hidden" : "visible"; }

// Exact and case-sensitive; any other text yields no rule.
constexpr std::optional<IconRule> iconRule(std::string_view rawValueText) {
  for (const IconRule rule : allIconRules) {
    if (rawValue(rule) == rawValueText) return rule;
  }
  return std::nullopt;
}

}  // namespace orvo
