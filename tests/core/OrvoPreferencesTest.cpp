#include "core/OrvoPreferences.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <rapidcheck/gtest.h>

#include <limits>

namespace orvo {
namespace {

using namespace std::string_literals;

constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();

OrvoPreferences record(std::map<std::string, IconRule> rules, std::int64_t seconds) {
  return {.rules = std::move(rules), .autoRehideSeconds = seconds};
}

std::string nested(std::size_t depth, const std::string& inside) {
  return R"({"other":)" + std::string(depth, '[') + inside + R"(,"rules":{"a":"hidden"},"autoRehideSeconds":5})";
}

TEST(OrvoPreferencesTest, ReadsEveryCorrectDocument) {
  const std::vector<std::pair<std::string, OrvoPreferences>> cases{
      {R"( {"autoRehideSeconds" : -3, "rules":{"b":"visible","a":"hidden"}} )",
       record({{"a", IconRule::hidden}, {"b", IconRule::visible}}, -3)},
      {R"({"other":{"rules":{"x":7},"autoRehideSeconds":[{}]},"rules":{},"autoRehideSeconds":5,"more":null})",
       record({}, 5)},
      {R"({"rules":{"":"hidden","rules":"hidden","autoRehideSeconds":"visible"},"autoRehideSeconds":0})",
       record({{"", IconRule::hidden}, {"rules", IconRule::hidden}, {"autoRehideSeconds", IconRule::visible}}, 0)},
      {R"({"rules":{"a":"hidden"},"rules":{"b":"visible","b":"hidden"},"autoRehideSeconds":1,"autoRehideSeconds":2})",
       record({{"b", IconRule::hidden}}, 2)},
      {nested(1'000'000, std::string(1'000'000, ']')), record({{"a", IconRule::hidden}}, 5)},
  };
  for (const auto& [bytes, expected] : cases)
    EXPECT_EQ(OrvoPreferences::decode(bytes), expected) << bytes.substr(0, 99);
}

TEST(OrvoPreferencesTest, DropsTheWholeRecordForOneFault) {
  EXPECT_EQ(OrvoPreferences::decode(std::nullopt), OrvoPreferences{});
  const std::string good = R"({"rules":{"a":"hidden"},"autoRehideSeconds":5})";
  std::vector<std::string> cases{"",
                                 "null",
                                 "[]",
                                 "[" + good + "]",
                                 good + "x",
                                 good + "\0garbage"s,
                                 good.substr(0, good.size() - 1),
                                 R"({"rules":{"a":"hidden"}})",
                                 R"({"autoRehideSeconds":5})",
                                 R"({"rules":{"a":"hidden"},"Rules":{},"autorehideseconds":5})",
                                 R"({"rules":{"a":"hidden"},"autoRehideSeconds":5,})",
                                 "{\"rules\":{\"a\xC3(\":\"hidden\"},\"autoRehideSeconds\":5}",
                                 R"({"rules":{"a\ud800":"hidden"},"autoRehideSeconds":5})",
                                 nested(1'000'000, "")};
  for (const char* rules : {"[]", R"("hidden")"}) {
    cases.push_back(R"({"rules":)"s + rules + R"(,"autoRehideSeconds":5})");
  }
  for (const char* rule : {R"("Hidden")", R"("hidden ")", "null", "1", R"(["hidden"])", R"({"c":"hidden"})"}) {
    cases.push_back(R"({"rules":{"a":"hidden","b":)"s + rule + R"(},"autoRehideSeconds":5})");
  }
  for (const char* seconds : {R"("5")", "true", "null", "{}", "[5]", "5.5", "1e-1", "9223372036854775808",
                              "-9223372036854775809", "9223372036854775808.0", "1e19", "1e999", "05", "+5", "NaN"}) {
    cases.push_back(R"({"rules":{"a":"hidden"},"autoRehideSeconds":)"s + seconds + "}");
  }
  for (const std::string& bytes : cases)
    EXPECT_EQ(OrvoPreferences::decode(bytes), OrvoPreferences{}) << bytes.substr(0, 99);
}

TEST(OrvoPreferencesTest, TakesANumberForAnIntegerWhenItsValueIsOne) {
  for (const auto& [text, value] : {std::pair{"-0.0", std::int64_t{0}},
                                    {"5.0", 5},
                                    {"1e1", 10},
                                    {"50E-1", 5},
                                    {"9223372036854775807", greatest},
                                    {"-9223372036854775808", least}}) {
    EXPECT_EQ(OrvoPreferences::decode(R"({"rules":{},"autoRehideSeconds":)"s + text + "}"), record({}, value)) << text;
  }
}

TEST(OrvoPreferencesTest, WritesOneCompactObjectOfTwoMembersOrNothing) {
  const auto bytes = record({{"a\n\"\\\x01", IconRule::hidden}, {"b", IconRule::visible}}, least).encode();
  ASSERT_TRUE(bytes);
  EXPECT_EQ(bytes->find_first_of(" \n\t"), std::string::npos);
  const auto document = nlohmann::json::parse(*bytes);
  EXPECT_EQ(document.size(), 2U);
  EXPECT_TRUE(document.at("autoRehideSeconds").is_number_integer());
  EXPECT_EQ(document.at("rules").at("a\n\"\\\x01"), "hidden");
  for (const char* key : {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\x80"}) {
    EXPECT_EQ(record({{key, IconRule::hidden}}, 5).encode(), std::nullopt);
  }
}

RC_GTEST_PROP(OrvoPreferencesProperty, EveryRecordComesBackEqual, ()) {
  // Letters of every length, with the control characters.
  const auto letter = rc::gen::oneOf(
      rc::gen::map(rc::gen::inRange(0, 0x80), [](int code) { return std::string(1, static_cast<char>(code)); }),
      rc::gen::element<std::string>("\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xEF\xBB\xBF"));
  OrvoPreferences preferences;
  for (const auto& letters : *rc::gen::container<std::vector<std::vector<std::string>>>(
           rc::gen::container<std::vector<std::string>>(letter))) {
    std::string key;
    for (const std::string& part : letters) key += part;
    preferences.rules[key] = *rc::gen::element(IconRule::visible, IconRule::hidden);
  }
  preferences.autoRehideSeconds =
      *rc::gen::oneOf(rc::gen::arbitrary<std::int64_t>(), rc::gen::element(least, greatest));
  RC_ASSERT(OrvoPreferences::decode(preferences.encode()) == preferences);
}

}  // namespace
}  // namespace orvo
