#include "platform/linux/desktop/FolderBundle.h"
#include "platform/linux/desktop/IcuText.h"
#include "platform/linux/desktop/LinuxFileSystem.h"
#include "platform/linux/desktop/LinuxProcessInfo.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace orvo {
namespace {

namespace fs = std::filesystem;

// Beside the test program, so that hard links to it can be made.
fs::path testProgram() { return fs::read_symlink("/proc/self/exe"); }

class FolderBundleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(bundle_ / "bin");
    fs::create_hard_link(testProgram(), program_);
  }
  void writeInfo(const std::string& text) const { std::ofstream(bundle_ / "Info.json") << text; }

  QTemporaryDir folder_{QString::fromStdString(testProgram().parent_path() / "bundle-XXXXXX")};
  const fs::path root_ = folder_.path().toStdString();
  const fs::path bundle_ = root_ / "Orvo.app";
  const fs::path program_ = bundle_ / "bin" / "orvo";
};

TEST_F(FolderBundleTest, TheBundleIsTheFolderThatWasLaunchedLinksIncluded) {
  writeInfo(R"({"CFBundleIdentifier": "local.orvo.Orvo"})");
  fs::create_directory_symlink(bundle_, root_ / "Linked.app");
  EXPECT_EQ(FolderBundle(program_).path(), bundle_);
  EXPECT_EQ(FolderBundle(root_ / "Linked.app" / "bin" / "orvo").path(), root_ / "Linked.app");
  EXPECT_EQ(FolderBundle((bundle_ / "bin" / ".." / "bin" / "orvo").string()).path(), bundle_);
  fs::create_symlink(program_, root_ / "orvo");
  EXPECT_EQ(FolderBundle(root_ / "orvo").path(), bundle_) << "a link on the search path leads into the bundle";
}

TEST_F(FolderBundleTest, OutsideABundleThereIsNoIdentifierAndANameThatLiesIsNotBelieved) {
  EXPECT_EQ(FolderBundle(program_).path(), program_.parent_path());
  EXPECT_EQ(FolderBundle(program_).identifier(), std::nullopt);
  writeInfo(R"({"CFBundleIdentifier": "local.orvo.Orvo"})");
  fs::create_directories(root_ / "Other.app" / "bin");
  std::ofstream(root_ / "Other.app" / "Info.json") << R"({"CFBundleIdentifier": "other"})";
  for (const std::string& lie : {std::string(root_ / "Other.app" / "bin" / "orvo"), std::string("/bin/sh"),
                                 std::string(), std::string("orvo")}) {
    EXPECT_EQ(FolderBundle(lie).path(), testProgram().parent_path()) << lie;
    EXPECT_EQ(FolderBundle(lie).identifier(), std::nullopt) << lie;
  }
}

TEST_F(FolderBundleTest, InfoKeepsTextsAndNumbersApart) {
  writeInfo(R"({"CFBundleShortVersionString": 2, "CFBundleIdentifier": 7, "list": [1], "text": "t"})");
  const FolderBundle bundle(program_);
  EXPECT_EQ(bundle.infoValue("CFBundleShortVersionString"), InfoValue(2.0));
  EXPECT_EQ(bundle.identifier(), std::nullopt);
  EXPECT_EQ(bundle.infoValue("list"), InfoValue(std::monostate{}));
  EXPECT_EQ(bundle.infoValue("text"), InfoValue("t"));
  EXPECT_EQ(bundle.infoValue("missing"), std::nullopt);
  for (const char* broken : {"", "{", "[]"}) {
    writeInfo(broken);
    EXPECT_EQ(FolderBundle(program_).identifier(), std::nullopt);
  }
}

TEST(LinuxProcessInfoTest, TheSystemsNameIsOneShellWord) {
  const std::pair<const char*, const char*> cases[]{
      {"NAME=x\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n", "Debian GNU/Linux 12 (bookworm)"},
      {"PRETTY_NAME=Plain", "Plain"},
      {"PRETTY_NAME='Single \\ \"quoted\"'\n", "Single \\ \"quoted\""},
      {"PRETTY_NAME=\"Costs \\$5 \\\"now\\\"\"\n", "Costs $5 \"now\""},
      {"PRETTY_NAME=First\nPRETTY_NAME=\"\"\n", ""},
      {"#PRETTY_NAME=no\nX_PRETTY_NAME=no\n", ""},
      {"", ""},
  };
  for (const auto& [text, name] : cases) {
    std::istringstream stream(text);
    EXPECT_EQ(prettyName(stream), name) << text;
  }
}

TEST(LinuxFileSystemTest, PathsComeAbsoluteAndWithoutDetours) {
  const LinuxFileSystem files;
  const std::pair<std::string, std::string> cases[]{
      {"/a//b/./c/../d/", "/a/b/d"},   {"/", "/"}, {"//", "/"}, {"//a", "/a"}, {"/..", "/"},
      {"x", fs::current_path() / "x"},
  };
  for (const auto& [path, standard] : cases) EXPECT_EQ(files.standardizing(path), standard) << path;

  const QTemporaryDir folder;
  const fs::path root = fs::canonical(folder.path().toStdString());
  fs::create_directory(root / "real");
  fs::create_directory_symlink(root / "real", root / "link");
  fs::create_symlink(root / "loop", root / "loop");
  EXPECT_EQ(files.resolvingSymbolicLinks(root / "link" / "missing"), root / "real" / "missing");
  EXPECT_EQ(files.resolvingSymbolicLinks(root / "loop"), root / "loop");
}

TEST(IcuTextTest, OrderIgnoresCaseAndCountsNumbersInEveryLanguage) {
  for (const char* language : {"en_US", "de_DE", "tr_TR", "en_US_POSIX", "ja_JP"}) {
    SCOPED_TRACE(language);
    const IcuText text{icu::Locale(language)};
    const std::pair<const char*, const char*> ascending[]{
        {"alpha", "Beta"}, {"Alpha", "beta"}, {"app 2", "App 10"},       {"", "a"},
        {"e", "é"},        {"éa", "eb"},      {"Zebra", "\xE5\xAD\x97"},
    };
    for (const auto& [left, right] : ascending) {
      EXPECT_LT(text.standardCompare(left, right), 0) << left << " " << right;
      EXPECT_GT(text.standardCompare(right, left), 0) << left << " " << right;
    }
    EXPECT_EQ(text.standardCompare("CopyQ", "copyq"), 0);
    EXPECT_EQ(text.standardCompare("\xFF\xC3", "\xFF\xC3"), 0) << "broken UTF-8 must still be ordered";
  }
  EXPECT_GT(IcuText(icu::Locale("sv_SE")).standardCompare("ö", "z"), 0);
  EXPECT_LT(IcuText(icu::Locale("de_DE")).standardCompare("ö", "z"), 0);
}

TEST(IcuTextTest, ContainmentFoldsCaseAndComposition) {
  struct Case {
    const char* text;
    const char* needle;
    bool contained;
  };
  const Case cases[]{
      {"Network Manager", "work m", true},
      {"STRASSE", "straße", true},
      {"Stra\xC3\x9F"
       "e",
       "SS", true},
      {"Caf\xC3\xA9", "CAFE\xCC\x81", true},
      {"Caf\xC3\xA9", "cafe", false},
      {"abc", "", false},
      {"", "", false},
      {"", "a", false},
      {"org.kde.x", "KDE.", true},
      {"\xFF", "a", false},
  };
  const IcuText text;
  for (const Case& pair : cases) {
    EXPECT_EQ(text.caseInsensitiveContains(pair.text, pair.needle), pair.contained) << pair.text << " " << pair.needle;
  }
}

}  // namespace
}  // namespace orvo
