#include "platform/linux/desktop/AutostartLoginItem.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace orvo {
namespace {

namespace fs = std::filesystem;

class AutostartLoginItemTest : public ::testing::Test {
 protected:
  void write(const std::string& text) const {
    fs::create_directories(folder_);
    std::ofstream(file_) << text;
  }
  std::string read() const {
    std::ostringstream text;
    text << std::ifstream(file_).rdbuf();
    return text.str();
  }

  QTemporaryDir home_;
  const std::string folder_ = home_.path().toStdString() + "/autostart";
  const std::string file_ = folder_ + "/local.orvo.Orvo.desktop";
  AutostartLoginItem item_{folder_, "local.orvo.Orvo", "/Applications/Orvo.app/bin/orvo"};
};

TEST_F(AutostartLoginItemTest, StatusFollowsTheEntryAndThePersonsOwnSwitch) {
  const std::string ours = "[Desktop Entry]\nExec=\"/Applications/Orvo.app/bin/orvo\"\n";
  struct Case {
    std::string text;
    LoginItemStatus status;
  };
  const std::vector<Case> cases{
      {"", LoginItemStatus::notRegistered},
      {ours, LoginItemStatus::enabled},
      {ours + "Hidden=false\n", LoginItemStatus::enabled},
      {ours + "Hidden=true\n", LoginItemStatus::requiresApproval},
      {ours + "Hidden = true\n", LoginItemStatus::requiresApproval},
      {ours + "X-GNOME-Autostart-enabled=false\n", LoginItemStatus::requiresApproval},
      {"[Desktop Entry]\nHidden=true\n", LoginItemStatus::requiresApproval},
      {ours + "[Desktop Action x]\nHidden=true\n", LoginItemStatus::enabled},
      {ours + "# Hidden=true\n=\n", LoginItemStatus::enabled},
      {"[Desktop Entry]\nExec=\"/old/Orvo.app/bin/orvo\"\n", LoginItemStatus::notFound},
  };
  EXPECT_EQ(item_.status(), LoginItemStatus::notRegistered);
  for (const Case& entry : cases) {
    write(entry.text);
    EXPECT_EQ(item_.status(), entry.status) << entry.text;
  }
}

TEST_F(AutostartLoginItemTest, RegisteringKeepsThePersonsRefusalAndReplacesAStaleEntry) {
  EXPECT_EQ(item_.registerItem(), std::nullopt);
  EXPECT_EQ(item_.status(), LoginItemStatus::enabled);
  const std::string refused = read() + "Hidden=true\n";
  write(refused);
  EXPECT_EQ(item_.registerItem(), std::nullopt);
  EXPECT_EQ(read(), refused);
  EXPECT_EQ(item_.unregisterItem(), std::nullopt);
  EXPECT_EQ(item_.unregisterItem(), std::nullopt);
  EXPECT_EQ(item_.status(), LoginItemStatus::notRegistered);
  write("[Desktop Entry]\nExec=/old/orvo\n");
  EXPECT_EQ(item_.registerItem(), std::nullopt);
  EXPECT_EQ(item_.status(), LoginItemStatus::enabled);
}

TEST_F(AutostartLoginItemTest, FailuresComeInTheSystemsOwnWords) {
  std::ofstream(folder_) << "a file where the folder should be";
  const auto error = item_.registerItem();
  ASSERT_TRUE(error.has_value());
  EXPECT_NE(error->find("Not a directory"), std::string::npos) << *error;
  fs::remove(folder_);
  fs::create_directories(file_ + "/in-the-way");
  EXPECT_EQ(item_.unregisterItem(), "Directory not empty");
}

TEST_F(AutostartLoginItemTest, AnyPathIsQuotedAsTheSessionReadsIt) {
  AutostartLoginItem odd(folder_, "local.orvo.Orvo", R"(/My "Apps"/100% $x\y`/orvo)");
  EXPECT_EQ(odd.registerItem(), std::nullopt);
  EXPECT_EQ(odd.status(), LoginItemStatus::enabled);
  EXPECT_NE(read().find(R"(Exec="/My \\"Apps\\"/100%% \\$x\\\\y\\`/orvo")"), std::string::npos) << read();
}

}  // namespace
}  // namespace orvo
