#include "core/OrvoPreferences.h"

#include <gtest/gtest.h>
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

TEST(OrvoPreferencesTest, ReadsEveryCorrectDocument) {
  const std::string deep = R"({"other":)" + std::string(100'000, '[') + std::string(100'000, ']');
  const std::vector<std::pair<std::string, OrvoPreferences>> cases{
      {R"( {"autoRehideSeconds" : -3, "rules":{"b":"visible","a":"hidden"}} )",
       record({{"a", IconRule::hidden}, {"b", IconRule::visible}}, -3)},
      {R"({"other":{"rules":{"x":7},"autoRehideSeconds":[{}]},"rules":{},"autoRehideSeconds":5,"more":null})",
       record({}, 5)},
      {R"({"rules":{"":"hidden","rules":"hidden","autoRehideSeconds":"visible"},"autoRehideSeconds":0})",
       record({{"", IconRule::hidden}, {"rules", IconRule::hidden}, {"autoRehideSeconds", IconRule::visible}}, 0)},
      {R"({"more":[-1e999,{"\"1e999":"\\\"1e999"}],"rules":{"1e999\\":"hidden"},"autoRehideSeconds":5,"x":)" +
           std::string(400, '9') + "}",
       record({{"1e999\\", IconRule::hidden}}, 5)},
      {deep + R"(,"rules":{"a":"hidden"},"autoRehideSeconds":5})", record({{"a", IconRule::hidden}}, 5)}};
  for (const auto& [bytes, expected] : cases) {
    EXPECT_EQ(OrvoPreferences::decode(bytes), expected) << bytes.substr(0, 99);
  }
  using Number = std::pair<const char*, std::int64_t>;
  for (const auto& [text, value] : {Number{"-0.0", 0}, Number{"5.0", 5}, Number{"1e1", 10}, Number{"50E-1", 5}}) {
    EXPECT_EQ(OrvoPreferences::decode(R"({"rules":{},"autoRehideSeconds":)"s + text + "}"), record({}, value)) << text;
  }
}

TEST(OrvoPreferencesTest, DropsTheWholeRecordForOneFault) {
  EXPECT_EQ(OrvoPreferences::decode(std::nullopt), OrvoPreferences{});
  const std::string good = R"({"rules":{"a":"hidden"},"autoRehideSeconds":5})";
  std::vector<std::string> cases{"", "null", "[]", "[" + good + "]", good + "\0garbage"s, good.substr(1)};
  for (const char* members :
       {R"("rules":{"a":"hidden"})", R"("autoRehideSeconds":5)", R"("rules":{"a":"hidden"},"autorehideseconds":5)",
        R"("rules":["hidden"],"autoRehideSeconds":5)"}) {
    cases.push_back("{"s + members + "}");
  }
  for (const char* rule : {R"("Hidden")", R"("hidden ")", "null", "1", R"(["hidden"])", R"({"c":"hidden"})"}) {
    cases.push_back(R"({"rules":{"a":"hidden","b":)"s + rule + R"(},"autoRehideSeconds":5})");
  }
  for (const char* seconds : {R"("5")", "true", "null", "{}", "[5]", "5.5", "1e-1", "9223372036854775808",
                              "-9223372036854775809", "9223372036854775808.0", "1e19", "1e999"}) {
    cases.push_back(R"({"rules":{"a":"hidden"},"autoRehideSeconds":)"s + seconds + "}");
  }
  for (const std::string& bytes : cases) EXPECT_EQ(OrvoPreferences::decode(bytes), OrvoPreferences{}) << bytes;
  EXPECT_EQ(record({{"\xFF", IconRule::hidden}}, 5).encode(), std::nullopt);
}

RC_GTEST_PROP(OrvoPreferencesProperty, EveryRecordComesBackEqual, ()) {
  const auto letter = rc::gen::oneOf(
      rc::gen::map(rc::gen::inRange(0, 0x80), [](int code) { return std::string(1, static_cast<char>(code)); }),
      rc::gen::element<std::string>("\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xEF\xBB\xBF"));
  OrvoPreferences preferences;
  for (int count = *rc::gen::inRange(0, 20); count > 0; --count) {
    std::string key;
    for (const std::string& part : *rc::gen::container<std::vector<std::string>>(letter)) key += part;
    preferences.rules[key] = *rc::gen::element(IconRule::visible, IconRule::hidden);
  }
  preferences.autoRehideSeconds =
      *rc::gen::oneOf(rc::gen::arbitrary<std::int64_t>(), rc::gen::element(least, greatest));
  RC_ASSERT(OrvoPreferences::decode(preferences.encode()) == preferences);
  RC_ASSERT(preferences.encode()->starts_with(R"({"autoRehideSeconds":)"));
}

}  // namespace
}  // namespace orvo
