#include "core/OrvoPreferences.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

namespace orvo {
namespace {

using Json = nlohmann::json;

constexpr const char* rulesKey = "rules";
constexpr const char* secondsKey = "autoRehideSeconds";

// A number written with a fraction or an exponent counts as an integer when its value is one (5.0, 1e1,
// -0.0), as the platform's own decoder has it; 5.5 does not, nor does anything outside 64 bits.
std::optional<std::int64_t> wholeNumber(double value, std::string_view text) {
  // Digits alone arrive here only when they overflow the integer types, and rounding must not bring them back.
  if (text.find_first_of(".eE") == std::string_view::npos) return std::nullopt;
  constexpr double limit = 9223372036854775808.0;  // 2 to the power of 63
  if (value < -limit || value >= limit || std::trunc(value) != value) return std::nullopt;
  return static_cast<std::int64_t>(value);
}

// Reads the record from the parser's events, without a tree in between, so that members which concern
// nobody cost nothing however deep they nest. Names may occur twice: each occurrence must be right, and
// the last one counts. Every handler answers whether to go on.
class Reader : public nlohmann::json_sax<Json> {
 public:
  bool isComplete() const { return hasRules_ && hasSeconds_; }
  OrvoPreferences takeRecord() { return std::move(record_); }

  bool null() override { return isIgnored(); }
  bool boolean(bool) override { return isIgnored(); }
  bool number_integer(number_integer_t value) override { return isIgnored() || takeSeconds(value); }
  bool number_unsigned(number_unsigned_t value) override {
    if (isIgnored()) return true;
    if (value > static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max())) return false;
    return takeSeconds(static_cast<std::int64_t>(value));
  }
  bool number_float(number_float_t value, const string_t& text) override {
    return isIgnored() || takeSeconds(wholeNumber(value, text));
  }
  bool string(string_t& text) override { return isIgnored() || takeRule(text); }
  bool binary(binary_t&) override { return false; }

  bool start_object(std::size_t) override {
    const bool opensRules = depth_ == memberDepth && member_ == Member::rules;
    if (opensRules) {
      record_.rules.clear();
      hasRules_ = true;
    }
    if (depth_ > 0 && !opensRules && !isIgnored()) return false;
    ++depth_;
    return true;
  }
  bool key(string_t& name) override {
    if (depth_ == memberDepth) {
      member_ = name == rulesKey ? Member::rules : name == secondsKey ? Member::seconds : Member::other;
    } else if (member_ == Member::rules) {
      bundle_ = name;
    }
    return true;
  }
  bool end_object() override { return close(); }
  bool start_array(std::size_t) override {
    if (!isIgnored()) return false;
    ++depth_;
    return true;
  }
  bool end_array() override { return close(); }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

 private:
  enum class Member { other, rules, seconds };

  // Containers that are open around the record's members, and around the rules.
  static constexpr std::size_t memberDepth = 1;
  static constexpr std::size_t ruleDepth = 2;

  bool isIgnored() const { return depth_ >= memberDepth && member_ == Member::other; }

  bool takeSeconds(std::optional<std::int64_t> value) {
    if (depth_ != memberDepth || member_ != Member::seconds || !value) return false;
    record_.autoRehideSeconds = *value;
    hasSeconds_ = true;
    return true;
  }

  bool takeRule(const std::string& text) {
    const std::optional<IconRule> rule = iconRule(text);
    if (depth_ != ruleDepth || member_ != Member::rules || !rule) return false;
    record_.rules.insert_or_assign(bundle_, *rule);
    return true;
  }

  bool close() {
    --depth_;
    return true;
  }

  OrvoPreferences record_;
  bool hasRules_ = false;
  bool hasSeconds_ = false;
  std::size_t depth_ = 0;
  Member member_ = Member::other;
  std::string bundle_;
};

}  // namespace

OrvoPreferences OrvoPreferences::decode(const std::optional<std::string>& bytes) {
  // A raw zero byte is never part of a JSON text, but the parser would take it for the end.
  if (!bytes || bytes->find('\0') != std::string::npos) return {};
  Reader reader;
  if (!Json::sax_parse(*bytes, &reader) || !reader.isComplete()) return {};
  return reader.takeRecord();
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
