#include "platform/qt/SettingsWindows.h"

#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>

namespace orvo {
namespace {

TEST(SettingsWindowsTest, AMissingModuleIsSaidAndASecondAttemptFindsIt) {
  const auto folder = std::filesystem::temp_directory_path() / ("orvo-module-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  const auto module = folder / "libsettings.so";
  SettingsWindows windows(module.string());
  // The stand-in module looks at no service.
  alignas(Platform) const std::byte noServices[sizeof(Platform)]{};
  windows.setPlatform(reinterpret_cast<const Platform&>(noServices));
  WindowContent content;
  WindowDescription description;
  description.title = "Settings";

  ::testing::internal::CaptureStderr();
  EXPECT_EQ(windows.make(description, content), nullptr);
  EXPECT_NE(::testing::internal::GetCapturedStderr().find(module.string()), std::string::npos);

  std::filesystem::copy_file(SETTINGS_MODULE, module);
  EXPECT_NE(windows.make(description, content), nullptr);

  description.title.clear();
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(windows.make(description, content), nullptr);
  EXPECT_FALSE(::testing::internal::GetCapturedStderr().empty());
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace orvo
