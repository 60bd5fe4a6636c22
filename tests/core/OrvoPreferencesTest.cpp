#include "core/OrvoPreferences.h"

#include <gtest/gtest.h>

namespace orvo {

using namespace std::string_literals;
using enum IconRule;

std::string document(const std::string& rules, const std::string& seconds) {
  return R"({"rules":)" + rules + R"(,"autoRehideSeconds":)" + seconds + "}";
}
std::string withSeconds(const std::string& seconds) { return document(R"({"a":"hidden"})", seconds); }

TEST(OrvoPreferencesTest, ReadsEveryCorrectDocument) {
  const std::string deep = R"({"other":)" + std::string(100'000, '[') + std::string(100'000, ']');
  const std::pair<std::string, OrvoPreferences> cases[]{
      {R"( {"autoRehideSeconds":      -30000, "rules":{"b":"visible","a":"hidden"}} )",
       {{{"a", hidden}, {"b", visible}}, -30000}},
      {R"({"other":{"rules":{"x":7},"autoRehideSeconds":[{}]},"rules":{},"autoRehideSeconds":5,"more":null})", {{}, 5}},
      {document(R"({"":"hidden","rules":"hidden"})", "0"), {{{"", hidden}, {"rules", hidden}}, 0}},
      {R"({"more":[-1e999,{"\"1e999":"\\\"1e999"}],"rules":{"1e999\\":"hidden"},"autoRehideSeconds":5,"x":)" +
           std::string(400, '9') + "}",
       {{{"1e999\\", hidden}}, 5}},
      {deep + R"(,"rules":{"a":"hidden"},"autoRehideSeconds":5})", {{{"a", hidden}}, 5}},
      {withSeconds("-0.0"), {{{"a", hidden}}, 0}},
      {withSeconds("9223372036854775807"), {{{"a", hidden}}, 9223372036854775807}},
      {withSeconds("50E-1"), {{{"a", hidden}}, 5}}};
  for (const auto& [bytes, read] : cases) EXPECT_EQ(OrvoPreferences::decode(bytes), read) << bytes.substr(0, 99);
  for (const auto& each : cases) EXPECT_EQ(OrvoPreferences::decode(each.second.encode()), each.second);
}

TEST(OrvoPreferencesTest, DropsTheWholeRecordForOneFault) {
  EXPECT_EQ(OrvoPreferences::decode(std::nullopt), OrvoPreferences{});
  const std::string good = withSeconds("5");
  std::vector<std::string> cases{"", "null", "[" + good + "]", good + "\0garbage"s, good.substr(1)};
  for (const char* half : {R"({"rules":{"a":"hidden"}})", R"({"autoRehideSeconds":5})"}) cases.emplace_back(half);
  cases.push_back(document(R"(["hidden"])", "5"));
  for (const char* rule : {R"("Hidden")", R"("hidden ")", "null", "1", R"({"c":"hidden"})"})
    cases.push_back(document(R"({"a":"hidden","b":)"s + rule + "}", "5"));
  for (const char* seconds : {R"("5")", "true", "null", "{}", "5.5", "1e-1", "9223372036854775808",
                              "-9223372036854775809", "9223372036854775808.0", "1e999"})
    cases.push_back(withSeconds(seconds));
  for (const std::string& bytes : cases) EXPECT_EQ(OrvoPreferences::decode(bytes), OrvoPreferences{}) << bytes;
  EXPECT_EQ((OrvoPreferences{{{"\xFF", hidden}}, 5}).encode(), std::nullopt);
}

}  // namespace orvo
