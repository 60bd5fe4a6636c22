#include "platform/linux/desktop/LinuxFileSystem.h"

#include "support/Files.h"

#include <gtest/gtest.h>

namespace orvo {

TEST(LinuxFileSystemTest, TheHomeFolderIsWhereALinkToItLeads) {
  const TemporaryFolder folder;
  const fs::path link = folder.path / "link";
  fs::create_directory(folder.path / "home");
  fs::create_symlink("home", link);
  setenv("HOME", link.c_str(), 1);
  EXPECT_EQ(LinuxFileSystem().homeDirectoryForCurrentUser(), folder.path / "home");
}

}  // namespace orvo
