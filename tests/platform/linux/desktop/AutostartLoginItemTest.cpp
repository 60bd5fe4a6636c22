#include "platform/linux/desktop/AutostartLoginItem.h"

#include "support/Files.h"

#include <gtest/gtest.h>

namespace orvo {

// Its quoted form is what the session reads back as this path.
constexpr const char* program = R"(/My "Apps"/100% $x\y`/orvo)";
const std::string entry = R"([Desktop Entry]
Exec="/My \\"Apps\\"/100%% \\$x\\\\y\\`/orvo"
)";
const std::string stale = "[Desktop Entry]\nExec=/old/orvo\n";

TEST(AutostartLoginItemTest, ThePersonsOwnSwitchIsKeptAStaleEntryReplacedAndWhatFailedIsSaid) {
  using enum LoginItemStatus;
  TemporaryFolder home;
  const std::string folder = home.path / "autostart";
  const std::string file = folder + "/local.orvo.Orvo.desktop";
  AutostartLoginItem item(folder, "local.orvo.Orvo", program);
  // What the file holds, and the status before and after the person has Orvo registered.
  const std::tuple<std::string, LoginItemStatus, LoginItemStatus> cases[]{
      {"", notRegistered, enabled},
      {entry, enabled, enabled},
      {entry + "Hidden = true\n", requiresApproval, requiresApproval},
      {entry + "X-GNOME-Autostart-enabled=false\n", requiresApproval, requiresApproval},
      {entry + "Hidden=false\n# Hidden=true\n=\n[Desktop Action x]\nHidden=true\n", enabled, enabled},
      {stale, notFound, enabled},
      {stale + "Hidden=true\n", requiresApproval, requiresApproval},
      {stale + "X-GNOME-Autostart-enabled=false\n", requiresApproval, requiresApproval}};
  for (const auto& [text, before, after] : cases) {
    write(file, text);
    EXPECT_EQ(item.status(), before) << text;
    EXPECT_EQ(item.setRegistered(true), std::nullopt);
    EXPECT_EQ(item.status(), after) << text;
    EXPECT_EQ(read(file).find("/old/"), std::string::npos) << "allowed later, it would start what is not there";
  }
  for (int round = 0; round < 2; ++round) EXPECT_EQ(item.setRegistered(false), std::nullopt);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_EQ(item.status(), notRegistered) << "nobody writes into the pipe";
  fs::remove(file);
  fs::create_directories(file + "/in-the-way");
  EXPECT_EQ(item.setRegistered(false), "Directory not empty");
  fs::remove_all(folder);
  write(folder, "a file where the folder should be");
  EXPECT_NE(item.setRegistered(true).value_or("").find("Not a directory"), std::string::npos);
}

TEST(AutostartLoginItemTest, AProgramBehindALinkIsTheSameHoweverItIsSpelled) {
  const TemporaryFolder home;
  write(home.path / "real/orvo", "");
  fs::create_directory_symlink("real", home.path / "link");
  const auto item = [&](const char* folder) {
    return AutostartLoginItem(home.path / "autostart", "orvo", home.path / folder / "orvo");
  };
  EXPECT_EQ(item("link").setRegistered(true), std::nullopt);
  EXPECT_EQ(item("real").status(), LoginItemStatus::enabled);
  write(home.path / "autostart/orvo.desktop", "[Desktop Entry]\nExec=\"" + (home.path / "link/orvo").string() + "\"\n");
  EXPECT_EQ(item("link").status(), LoginItemStatus::enabled) << "written when links were not followed yet";
}

}  // namespace orvo
