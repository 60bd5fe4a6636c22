#include "core/OrvoPreferences.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <limits>

namespace orvo {
namespace {

using namespace std::string_literals;

constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();

OrvoPreferences record(std::map<std::string, IconRule> rules, std::int64_t seconds) {
  OrvoPreferences preferences;
  preferences.rules = std::move(rules);
  preferences.autoRehideSeconds = seconds;
  return preferences;
}

std::string withSeconds(const std::string& number) { return R"({"rules":{},"autoRehideSeconds":)" + number + "}"; }

std::string nested(std::size_t depth, const std::string& inside) {
  return R"({"other":)" + std::string(depth, '[') + inside + R"(,"rules":{"a":"hidden"},"autoRehideSeconds":5})";
}

TEST(OrvoPreferences, ReadsEveryCorrectDocument) {
  const std::vector<std::pair<std::string, OrvoPreferences>> cases{
      {R"({"rules":{},"autoRehideSeconds":5})", record({}, 5)},
      {R"( {"autoRehideSeconds" : -3,
            "rules":{"b":"visible","a":"hidden"}} )",
       record({{"a", IconRule::hidden}, {"b", IconRule::visible}}, -3)},
      {R"({"other":{"rules":{"x":7},"autoRehideSeconds":[{}]},"rules":{},"autoRehideSeconds":5,"more":null})",
       record({}, 5)},
      {R"({"rules":{"a\u0000\ud83d\ude00":"hidden"},"autoRehideSeconds":0})",
       record({{"a\0\xF0\x9F\x98\x80"s, IconRule::hidden}}, 0)},
      {R"({"rules":{"":"hidden","rules":"hidden","autoRehideSeconds":"visible"},"autoRehideSeconds":0})",
       record({{"", IconRule::hidden}, {"rules", IconRule::hidden}, {"autoRehideSeconds", IconRule::visible}}, 0)},
      {"\xEF\xBB\xBF" + withSeconds("5"), record({}, 5)},
      {R"({"rules":{"a":"hidden"},"rules":{"b":"visible","b":"hidden"},"autoRehideSeconds":1,"autoRehideSeconds":2})",
       record({{"b", IconRule::hidden}}, 2)},
      {nested(1'000'000, std::string(1'000'000, ']')), record({{"a", IconRule::hidden}}, 5)},
  };
  for (const auto& [bytes, expected] : cases) {
    EXPECT_EQ(OrvoPreferences::decode(bytes), expected) << bytes.substr(0, 200);
  }
}

TEST(OrvoPreferences, TakesANumberForAnIntegerWhenItsValueIsOne) {
  const std::vector<std::pair<std::string, std::int64_t>> integers{{"-0", 0},
                                                                   {"-0.0", 0},
                                                                   {"5.0", 5},
                                                                   {"1e1", 10},
                                                                   {"50E-1", 5},
                                                                   {"9223372036854775807", greatest},
                                                                   {"-9223372036854775808", least}};
  for (const auto& [text, value] : integers) {
    EXPECT_EQ(OrvoPreferences::decode(withSeconds(text)), record({}, value)) << text;
  }
  const std::string rules = R"({"rules":{"a":"hidden"},"autoRehideSeconds":)";
  for (const char* text : {"9223372036854775808", "-9223372036854775809", "18446744073709551616", "1e19", "5.5", "1e-1",
                           "9223372036854775808.0", "1e999", "05", "+5", "0x5", "NaN", "5."}) {
    EXPECT_EQ(OrvoPreferences::decode(rules + text + "}"), OrvoPreferences{}) << text;
  }
}

TEST(OrvoPreferences, DropsTheWholeRecordForOneFault) {
  EXPECT_EQ(OrvoPreferences::decode(std::nullopt), OrvoPreferences{});
  const std::string good = R"({"rules":{"a":"hidden"},"autoRehideSeconds":5})";
  ASSERT_NE(OrvoPreferences::decode(good), OrvoPreferences{});
  const std::vector<std::string> cases{
      "",
      "null",
      "5",
      "[]",
      "[" + good + "]",
      good + "x",
      good + "\0"s,
      good + "\0garbage"s,
      "\xFF\xFE{",
      good.substr(0, good.size() - 1),
      R"({"rules":{"a":"hidden"}})",
      R"({"autoRehideSeconds":5})",
      R"({"rules":{"a":"hidden"},"autoRehideSeconds":"5"})",
      R"({"rules":{"a":"hidden"},"autoRehideSeconds":true})",
      R"({"rules":{"a":"hidden"},"autoRehideSeconds":null})",
      R"({"rules":{"a":"hidden"},"autoRehideSeconds":{}})",
      R"({"rules":{"a":"hidden"},"autoRehideSeconds":[5]})",
      R"({"rules":[],"autoRehideSeconds":5})",
      R"({"rules":"hidden","autoRehideSeconds":5})",
      R"({"rules":{"a":"hidden","b":"Hidden"},"autoRehideSeconds":5})",
      R"({"rules":{"a":"hidden","b":"hidden "},"autoRehideSeconds":5})",
      R"({"rules":{"a":"hidden","b":null},"autoRehideSeconds":5})",
      R"({"rules":{"a":"hidden","b":1},"autoRehideSeconds":5})",
      R"({"rules":{"a":"hidden","b":["hidden"]},"autoRehideSeconds":5})",
      R"({"rules":{"a":"hidden","b":{"c":"hidden"}},"autoRehideSeconds":5})",
      R"({"rules":{"a":"hidden"},"Rules":{},"autorehideseconds":5})",
      R"({"rules":{"a":"hidden"},"autoRehideSeconds":5,})",
      R"({"rules":{"a":"hidden"},/**/"autoRehideSeconds":5})",
      "{\"rules\":{\"a\xC3(\":\"hidden\"},\"autoRehideSeconds\":5}",
      R"({"rules":{"a\ud800":"hidden"},"autoRehideSeconds":5})",
      nested(1'000'000, ""),
  };
  for (const std::string& bytes : cases) {
    EXPECT_EQ(OrvoPreferences::decode(bytes), OrvoPreferences{}) << bytes.substr(0, 200);
  }
}

TEST(OrvoPreferences, WritesNothingWhenAKeyIsNotUtf8) {
  for (const char* key : {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\x80"}) {
    EXPECT_EQ(record({{key, IconRule::hidden}}, 5).encode(), std::nullopt);
  }
}

TEST(OrvoPreferences, WritesOneCompactObjectOfTwoMembers) {
  const auto bytes = record({{"a\n\"\\\x01", IconRule::hidden}, {"b", IconRule::visible}}, least).encode();
  ASSERT_TRUE(bytes);
  EXPECT_EQ(bytes->find_first_of(" \n\t"), std::string::npos);
  const auto document = nlohmann::json::parse(*bytes);
  EXPECT_EQ(document.size(), 2U);
  EXPECT_TRUE(document.at("autoRehideSeconds").is_number_integer());
  EXPECT_EQ(document.at("rules").at("a\n\"\\\x01"), "hidden");
  EXPECT_TRUE(nlohmann::json::parse(*OrvoPreferences{}.encode()).at("rules").is_object());
}

RC_GTEST_PROP(OrvoPreferencesProperty, EveryRecordComesBackEqual, ()) {
  // ASCII with all its control characters, and a letter of every longer length.
  const auto letter = rc::gen::oneOf(
      rc::gen::map(rc::gen::inRange(0, 0x80), [](int code) { return std::string(1, static_cast<char>(code)); }),
      rc::gen::element<std::string>("\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xEF\xBB\xBF"));
  OrvoPreferences preferences;
  for (const auto& [letters, hidden] : *rc::gen::container<std::vector<std::pair<std::vector<std::string>, bool>>>(
           rc::gen::pair(rc::gen::container<std::vector<std::string>>(letter), rc::gen::arbitrary<bool>()))) {
    std::string key;
    for (const std::string& part : letters) key += part;
    preferences.rules[key] = hidden ? IconRule::hidden : IconRule::visible;
  }
  preferences.autoRehideSeconds =
      *rc::gen::oneOf(rc::gen::arbitrary<std::int64_t>(), rc::gen::element(least, greatest));
  const auto bytes = preferences.encode();
  RC_ASSERT(bytes.has_value());
  RC_ASSERT(OrvoPreferences::decode(bytes) == preferences);
}

TEST(IconRule, ComesFromItsExactRawValueAlone) {
  for (const IconRule rule : allIconRules) EXPECT_EQ(iconRule(rawValue(rule)), rule);
  for (const char* text : {"", "Visible", "HIDDEN", " hidden", "hidden ", "hid", "visiblehidden"}) {
    EXPECT_EQ(iconRule(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace orvo
