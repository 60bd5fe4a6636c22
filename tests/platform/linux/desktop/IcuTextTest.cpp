#include "platform/linux/desktop/IcuText.h"

#include <gtest/gtest.h>

namespace orvo {

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

}  // namespace orvo
