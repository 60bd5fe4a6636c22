#include "platform/linux/desktop/AutostartLoginItem.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

namespace orvo {
namespace {

namespace fs = std::filesystem;

// Its quoted form is what the session reads back as this path.
constexpr const char* program = R"(/My "Apps"/100% $x\y`/orvo)";
const std::string entry =
    "[Desktop Entry]\nExec="
    R"("/My \\"Apps\\"/100%% \\$x\\\\y\\`/orvo")"
    "\n";

class AutostartLoginItemTest : public ::testing::Test {
 protected:
  LoginItemStatus statusOf(const std::string& text) const {
    fs::create_directories(folder_);
    std::ofstream(file_) << text;
    return item_.status();
  }

  QTemporaryDir home_;
  const std::string folder_ = home_.path().toStdString() + "/autostart";
  const std::string file_ = folder_ + "/local.orvo.Orvo.desktop";
  AutostartLoginItem item_{folder_, "local.orvo.Orvo", program};
};

TEST_F(AutostartLoginItemTest, StatusFollowsTheEntryAndThePersonsOwnSwitch) {
  const std::pair<std::string, LoginItemStatus> cases[]{
      {"", LoginItemStatus::notRegistered},
      {entry, LoginItemStatus::enabled},
      {entry + "Hidden = true\n", LoginItemStatus::requiresApproval},
      {entry + "X-GNOME-Autostart-enabled=false\n", LoginItemStatus::requiresApproval},
      {entry + "Hidden=false\n# Hidden=true\n=\n[Desktop Action x]\nHidden=true\n", LoginItemStatus::enabled},
      {"[Desktop Entry]\nExec=\"/old/Orvo.app/bin/orvo\"\n", LoginItemStatus::notFound},
  };
  for (const auto& [text, status] : cases) EXPECT_EQ(statusOf(text), status) << text;
  fs::remove(file_);
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_EQ(item_.status(), LoginItemStatus::notRegistered) << "nobody writes into the pipe";
}

TEST_F(AutostartLoginItemTest, RegisteringKeepsThePersonsRefusalReplacesAStaleEntryAndSaysWhatFailed) {
  EXPECT_EQ(statusOf(entry + "Hidden=true\n"), LoginItemStatus::requiresApproval);
  EXPECT_EQ(item_.registerItem(), std::nullopt);
  EXPECT_EQ(item_.status(), LoginItemStatus::requiresApproval);
  for (const char* refusal : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n", ""}) {
    statusOf(std::string("[Desktop Entry]\nExec=/old/orvo\n") + refusal);
    EXPECT_EQ(item_.registerItem(), std::nullopt);
    const auto expected = *refusal != '\0' ? LoginItemStatus::requiresApproval : LoginItemStatus::enabled;
    EXPECT_EQ(item_.status(), expected) << refusal;
    std::ifstream file(file_);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(text.find("/old/"), std::string::npos) << "allowed later, it would start what is not there";
  }
  for (int round = 0; round < 2; ++round) EXPECT_EQ(item_.unregisterItem(), std::nullopt);
  EXPECT_EQ(item_.status(), LoginItemStatus::notRegistered);

  fs::create_directories(file_ + "/in-the-way");
  EXPECT_EQ(item_.unregisterItem(), "Directory not empty");
  fs::remove_all(folder_);
  std::ofstream(folder_) << "a file where the folder should be";
  EXPECT_NE(item_.registerItem().value_or("").find("Not a directory"), std::string::npos);
}

}  // namespace
}  // namespace orvo
