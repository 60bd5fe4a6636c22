#include "platform/common/SettingsWindows.h"

#include <gtest/gtest.h>

namespace orvo {
namespace {

TEST(SettingsWindowsTest, AModuleThatIsMissingOrNoneIsSaid) {
  WindowContent content;
  for (const char* module : {"/nowhere/liborvo-settings.so", "libc.so.6"}) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(SettingsWindows(module).make({}, content), nullptr);
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("could not be loaded"), std::string::npos) << module;
  }
}

}  // namespace
}  // namespace orvo
