#include "platform/linux/desktop/FileUserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace orvo {
namespace {

namespace fs = std::filesystem;

constexpr const char* dataKey = "Quillet.Preferences.v1";
constexpr const char* flagKey = "Orvo.HasOpenedSettings";

class FileUserDefaultsTest : public ::testing::Test {
 protected:
  void write(const std::string& text) const {
    fs::create_directories(file_.parent_path());
    std::ofstream(file_, std::ios::binary) << text;
  }
  std::string read(const fs::path& path) const {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }
  std::set<std::string> names() const {
    std::set<std::string> found;
    for (const auto& entry : fs::directory_iterator(file_.parent_path())) found.insert(entry.path().filename());
    return found;
  }
  FileUserDefaults open() const { return FileUserDefaults(file_.string()); }

  QTemporaryDir folder_;
  const fs::path file_ = fs::path(folder_.path().toStdString()) / "orvo" / "settings.json";
};

TEST_F(FileUserDefaultsTest, EveryByteSurvivesAndReadingAloneWritesNothing) {
  Bytes everyByte;
  for (int byte = 0; byte < 256; ++byte) everyByte += static_cast<char>(byte);
  {
    auto defaults = open();
    EXPECT_EQ(defaults.data(dataKey), std::nullopt);
    EXPECT_FALSE(defaults.boolean(flagKey));
    EXPECT_FALSE(fs::exists(file_.parent_path()));
    defaults.setData(dataKey, everyByte);
    defaults.setData("empty", "");
    defaults.setBoolean(flagKey, true);
  }
  auto defaults = open();
  EXPECT_EQ(defaults.data(dataKey), everyByte);
  EXPECT_EQ(defaults.data("empty"), "");
  EXPECT_TRUE(defaults.boolean(flagKey));
  EXPECT_EQ(names(), std::set<std::string>{"settings.json"});
}

TEST_F(FileUserDefaultsTest, ValuesOfAnotherKindCountAsAbsentAndForeignOnesAreKept) {
  write(
      R"({"text": "true", "number": 1, "flag": true, "broken": {"base64": "!!"}, "odd": {"base64": 7}, "later": [1]})");
  auto defaults = open();
  for (const char* key : {"text", "number", "broken", "odd", "later", "flag"}) {
    EXPECT_EQ(defaults.data(key), std::nullopt) << key;
  }
  for (const char* key : {"text", "number", "broken"}) EXPECT_FALSE(defaults.boolean(key)) << key;
  defaults.setBoolean(flagKey, true);
  EXPECT_NE(read(file_).find("later"), std::string::npos);
}

TEST_F(FileUserDefaultsTest, AFileThatCannotBeReadIsKeptAsideAndSaid) {
  int number = 0;
  for (const std::string contents : {"", "{\"cut", "[1, 2]", "\xFF\xFE nonsense"}) {
    SCOPED_TRACE(contents);
    write(contents);
    auto defaults = open();
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(defaults.boolean(flagKey));
    const std::string aside = file_.string() + ".damaged-" + std::to_string(++number);
    EXPECT_NE(::testing::internal::GetCapturedStderr().find(aside), std::string::npos);
    defaults.setBoolean(flagKey, true);
    EXPECT_EQ(read(aside), contents);
    EXPECT_TRUE(open().boolean(flagKey));
  }
}

TEST_F(FileUserDefaultsTest, WhatCannotBeStoredIsSaidCountsHereAndIsTriedAgain) {
  write("a file where the folder should be");
  FileUserDefaults defaults((file_ / "settings.json").string());
  ::testing::internal::CaptureStderr();
  defaults.setData(dataKey, "rules");
  const std::string said = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(said.find("Not a directory"), std::string::npos) << said;
  EXPECT_EQ(defaults.data(dataKey), "rules");

  fs::remove(file_);
  defaults.setBoolean(flagKey, true);
  FileUserDefaults next((file_ / "settings.json").string());
  EXPECT_EQ(next.data(dataKey), "rules") << "the change that failed belongs to the next attempt";
  EXPECT_TRUE(next.boolean(flagKey));
}

TEST_F(FileUserDefaultsTest, AFullDiskLeavesTheOldFileWhole) {
  open().setData(dataKey, "old");
  std::array<int, 2> said{};
  ASSERT_EQ(pipe(said.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    dup2(said[1], STDERR_FILENO);
    // Stands for a disk with no room: files may not grow at all.
    signal(SIGXFSZ, SIG_IGN);
    const rlimit nothing{0, 0};
    setrlimit(RLIMIT_FSIZE, &nothing);
    auto defaults = open();
    defaults.setData(dataKey, "new");
    _exit(defaults.data(dataKey) == "new" ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  std::array<char, 1000> line{};
  EXPECT_GT(::read(said[0], line.data(), line.size() - 1), 0);
  EXPECT_NE(std::string(line.data()).find("File too large"), std::string::npos) << line.data();
  for (const int descriptor : said) close(descriptor);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(open().data(dataKey), "old");
}

TEST_F(FileUserDefaultsTest, AProcessKilledWhileStoringLeavesTheOldValuesOrTheNew) {
  open().setData(dataKey, Bytes(50000, 'a'));
  for (int round = 0; round < 12; ++round) {
    const pid_t child = fork();
    if (child == 0) {
      auto defaults = open();
      for (char letter = 'a';; letter = static_cast<char>(letter == 'z' ? 'a' : letter + 1)) {
        defaults.setData(dataKey, Bytes(50000, letter));
      }
    }
    usleep(static_cast<useconds_t>(1500 + 700 * round));  // spreads the moments of death, nothing waits for it
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const auto value = open().data(dataKey);
    ASSERT_TRUE(value.has_value());
    EXPECT_EQ(*value, Bytes(50000, value->front()));
  }
}

TEST_F(FileUserDefaultsTest, ALinkedFileStaysALink) {
  const auto target = fs::path(folder_.path().toStdString()) / "elsewhere.json";
  fs::create_directories(file_.parent_path());
  fs::create_symlink(target, file_);
  open().setBoolean(flagKey, true);
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_TRUE(open().boolean(flagKey));
}

}  // namespace
}  // namespace orvo
