#include "platform/linux/desktop/ConfigFolder.h"

#include <gtest/gtest.h>

namespace orvo {

TEST(ConfigFolderTest, NothingButAnAbsolutePathStandsInForTheUsualFolder) {
  constexpr const char* usual = "/home/person/.config";
  setenv("HOME", "/home/person", 1);
  for (const auto& [told, expected] :
       {std::pair("/elsewhere", "/elsewhere"), {"", usual}, {"conf", usual}, {"~/.config", usual}}) {
    setenv("XDG_CONFIG_HOME", told, 1);
    EXPECT_EQ(configFolder(), expected) << told;
  }
  unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(configFolder(), usual);
}

}  // namespace orvo
