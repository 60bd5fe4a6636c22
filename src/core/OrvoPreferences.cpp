#include "core/OrvoPreferences.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <utility>

namespace orvo {
namespace {

using Json = nlohmann::json;

constexpr const char* rulesKey = "rules";
constexpr const char* secondsKey = "autoRehideSeconds";

// A number written with a fraction or an exponent counts as an integer when its value is one (5.0, 1e1,
// -0.0), as the platform's own decoder has it; 5.5 does not, nor does anything outside 64 bits.
std::optional<std::int64_t> wholeNumber(const Json& number) {
  if (number.is_number_float()) {
    const auto value = number.get<double>();
    // The least integer is left out: digits that overflow 64 bits arrive here too, and may round to it.
    constexpr double limit = 9223372036854775808.0;  // 2 to the power of 63
    if (std::fabs(value) >= limit || std::trunc(value) != value) return std::nullopt;
    return static_cast<std::int64_t>(value);
  }
  constexpr auto greatest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (!number.is_number() || (number.is_number_unsigned() && number.get<std::uint64_t>() > greatest)) {
    return std::nullopt;
  }
  return number.get<std::int64_t>();
}

std::optional<std::map<std::string, IconRule>> rulesFrom(const Json& object) {
  if (!object.is_object()) return std::nullopt;
  std::map<std::string, IconRule> rules;
  for (const auto& [bundle, value] : object.items()) {
    const auto* const text = value.get_ptr<const std::string*>();
    const std::optional<IconRule> rule = text != nullptr ? iconRule(*text) : std::nullopt;
    if (!rule) return std::nullopt;
    rules.emplace(bundle, *rule);
  }
  return rules;
}

}  // namespace

OrvoPreferences OrvoPreferences::decode(const std::optional<std::string>& bytes) {
  // A raw zero byte is never part of a JSON text, but the parser would take it for the end.
  if (!bytes || bytes->find('\0') != std::string::npos) return {};
  const Json document = Json::parse(*bytes, nullptr, /*allow_exceptions=*/false);
  if (!document.is_object() || !document.contains(rulesKey) || !document.contains(secondsKey)) return {};
  auto rules = rulesFrom(document[rulesKey]);
  const std::optional<std::int64_t> seconds = wholeNumber(document[secondsKey]);
  if (!rules || !seconds) return {};
  return {.rules = std::move(*rules), .autoRehideSeconds = *seconds};
}

std::optional<std::string> OrvoPreferences::encode() const {
  Json storedRules = Json::object();
  for (const auto& [bundle, rule] : rules) storedRules[bundle] = rawValue(rule);
  const Json document{{rulesKey, std::move(storedRules)}, {secondsKey, autoRehideSeconds}};
  try {
    return document.dump();
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

}  // namespace orvo
