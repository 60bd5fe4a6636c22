#include "platform/linux/desktop/IcuText.h"
#include "platform/linux/desktop/LinuxFileSystem.h"
#include "platform/linux/desktop/LinuxProcessInfo.h"

#include <gtest/gtest.h>

#include <sstream>

namespace orvo {
namespace {

TEST(SurroundingsTest, TheSystemsNameIsOneShellWordAndPathsComeWithoutDetours) {
  const std::pair<const char*, const char*> names[]{{R"(PRETTY_NAME='Single \ "quoted"')", R"(Single \ "quoted")"},
                                                    {R"(PRETTY_NAME="Costs \$5 \"now\"")", R"(Costs $5 "now")"},
                                                    {"#PRETTY_NAME=no\nX_PRETTY_NAME=no\n", ""}};
  for (const auto& [text, name] : names) {
    std::istringstream stream(text);
    EXPECT_EQ(prettyName(stream), name) << text;
  }
  for (const auto& [path, standard] : {std::pair("/a//b/./c/../d/", "/a/b/d"), std::pair("//", "/")})
    EXPECT_EQ(LinuxFileSystem().standardizing(path), standard) << path;
}

TEST(IcuTextTest, OrderAndContainmentIgnoreCaseInEveryLanguage) {
  const IcuText text{icu::Locale("en_US_POSIX")};
  const IcuText turkish{icu::Locale("tr_TR")};
  for (const auto& [left, right] : {std::pair("alpha", "Beta"), {"app 2", "App 10"}, {"éa", "eb"}})
    EXPECT_LT(text.standardCompare(left, right), 0) << left;
  // In Turkish alone, in both, in neither.
  for (const auto& [whole, part, inTurkish, elsewhere] : {std::tuple("İstanbul", "istanbul", true, false),
                                                          {"ışık", "IŞIK", true, false},
                                                          {"Network Manager", "work m", true, true},
                                                          {"STRASSE", "straße", true, true},
                                                          {"Café", "CAFE\xCC\x81", true, true},
                                                          {"Café", "cafe", false, false},
                                                          {"Café", "\xFF", false, false},
                                                          {"Café", "", false, false}}) {
    EXPECT_EQ(turkish.caseInsensitiveContains(whole, part), inTurkish) << whole << part;
    EXPECT_EQ(text.caseInsensitiveContains(whole, part), elsewhere) << whole << part;
  }
}

}  // namespace
}  // namespace orvo
