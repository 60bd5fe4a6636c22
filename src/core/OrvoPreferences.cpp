#include "core/OrvoPreferences.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orvo {
namespace {

using Json = nlohmann::json;

constexpr const char* rulesKey = "rules";
constexpr const char* secondsKey = "autoRehideSeconds";

// As the codec sees it: a text that is no number at all is not too great.
bool isTooGreat(const std::string& number) {
  try {
    return Json::parse(number).is_discarded();
  } catch (const Json::out_of_range&) {
    return true;
  } catch (const Json::exception&) {
    return false;
  }
}

// Takes a number of `text` that starts at `at` out where it is too great, which needs five characters at least, and
// tells its last place.
std::size_t blankIfTooGreat(std::string& text, std::size_t at) {
  const std::size_t length = std::min(text.find_first_not_of("+-.0123456789Ee", at), text.size()) - at;
  if (length < 5) return at;
  if (isTooGreat(text.substr(at, length))) text.replace(at, length, "null" + std::string(length - 4, ' '));
  return at + length - 1;
}

// JSON allows numbers that no double can hold, and the codec refuses a whole document for one of them. Here such
// a number becomes null: that is wrong just where a number counts.
std::string withoutGreatNumbers(std::string text) {
  bool inString = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '"') inString = !inString;
    if (!inString) at = blankIfTooGreat(text, at);
    if (inString && text[at] == '\\') ++at;
  }
  return text;
}

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
  const Json document = Json::parse(withoutGreatNumbers(*bytes), nullptr, /*allow_exceptions=*/false);
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
