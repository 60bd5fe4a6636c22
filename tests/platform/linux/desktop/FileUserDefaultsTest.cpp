#include "platform/linux/desktop/FileUserDefaults.h"

#include "support/Files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

namespace orvo {

class FileUserDefaultsTest : public ::testing::Test {
 protected:
  FileUserDefaults open() const { return FileUserDefaults(file_.string()); }

  TemporaryFolder folder_;
  const fs::path file_ = folder_.path / "orvo" / "settings.json";
};

TEST_F(FileUserDefaultsTest, EveryByteSurvivesAndWhatIsOfAnotherKindCountsAsAbsentAndIsKept) {
  Bytes everyByte;
  for (int byte = 0; byte < 256; ++byte) everyByte += static_cast<char>(byte);
  // Through a link to a file that is not there yet: settings kept elsewhere stay there.
  fs::create_directories(file_.parent_path());
  fs::create_symlink("elsewhere.json", file_);
  open().setBoolean("flag", true);
  write(file_, R"({"number": 1, "broken": {"base64": "!!"}, "odd": {"base64": 7}, "later": [1]})");
  auto defaults = open();
  for (const char* key : {"number", "broken", "odd", "later", "missing"})
    EXPECT_TRUE(!defaults.data(key) && !defaults.boolean(key)) << key;
  defaults.setData("data", everyByte);
  defaults.setBoolean("flag", true);
  EXPECT_EQ(open().data("data"), everyByte);
  EXPECT_TRUE(open().boolean("flag"));
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_NE(read(file_).find("later"), std::string::npos);
}

TEST_F(FileUserDefaultsTest, WhatIsNoReasonableFileHoldsNobodyUpAndIsKeptAside) {
  const std::string deep(100'000, '[');
  const std::function<void()> kinds[]{
      [&] { write(file_, "{\"cut"); },
      [&] { EXPECT_EQ(mkfifo(file_.c_str(), 0600), 0); },
      [&] { fs::create_symlink("/dev/zero", file_); },
      [&] { fs::create_directory(file_); },
      [&] { write(file_, R"({"text": ")" + std::string(5'000'000, 'x') + "\"}"); },
      [&] { write(file_, R"({"text": )" + deep + std::string(deep.size(), ']') + "}"); },
  };
  fs::create_directories(file_.parent_path());
  int number = 0;
  for (const auto& make : kinds) {
    fs::remove(file_);
    make();
    const auto type = fs::symlink_status(file_).type();
    const auto content = type == fs::file_type::regular ? read(file_) : "";
    open().setBoolean("flag", true);
    const auto kept = file_.string() + ".damaged-" + std::to_string(++number);
    EXPECT_EQ(fs::symlink_status(kept).type(), type) << number;
    EXPECT_EQ(type == fs::file_type::regular ? read(kept) : "", content) << number;
    EXPECT_TRUE(open().boolean("flag"));
  }
}

TEST_F(FileUserDefaultsTest, TwoCopiesKeepEachOthersValuesAndSeeThem) {
  auto one = open();
  auto other = open();
  one.setData("data", "mine");
  EXPECT_EQ(other.data("data"), "mine");
  other.setBoolean("flag", true);
  one.setData("data", "changed");
  EXPECT_TRUE(open().boolean("flag"));
  EXPECT_EQ(other.data("data"), "changed");
  write(file_, "{\"cut");
  EXPECT_EQ(one.data("data"), "changed") << "half of somebody's writing";
  EXPECT_TRUE(fs::exists(file_));
}

TEST_F(FileUserDefaultsTest, WhatCannotBeStoredDamagesNothingCountsHereAndBelongsToTheNextAttempt) {
  open().setData("data", Bytes(50000, 'a'));
  auto defaults = open();
  // Stands for a disk with no room: files may not grow at all.
  signal(SIGXFSZ, SIG_IGN);
  rlimit usual{};
  getrlimit(RLIMIT_FSIZE, &usual);
  const rlimit nothing{0, usual.rlim_max};
  setrlimit(RLIMIT_FSIZE, &nothing);
  defaults.setData("data", Bytes(50000, 'b'));
  setrlimit(RLIMIT_FSIZE, &usual);
  EXPECT_EQ(open().data("data"), Bytes(50000, 'a'));
  open().setBoolean("another copy's", true);
  EXPECT_EQ(defaults.data("data"), Bytes(50000, 'b'));
  fs::remove_all(file_.parent_path());
  write(file_.parent_path(), "a file where the folder should be");
  defaults.setData("other", "rules");
  EXPECT_NE(defaults.storageFailure(), std::nullopt);
  fs::remove(file_.parent_path());
  defaults.setBoolean("flag", true);
  EXPECT_EQ(defaults.storageFailure(), std::nullopt);
  EXPECT_EQ(open().data("other"), "rules");
}

}  // namespace orvo
