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

TEST(FolderBundleTest, TheBundleIsTheFolderThatWasLaunchedAndANameThatLiesIsNotBelieved) {
  // Beside the test program, so that a hard link to it can be made.
  const fs::path self = fs::read_symlink("/proc/self/exe");
  const QTemporaryDir folder(QString::fromStdString(self.parent_path() / "bundle-XXXXXX"));
  const fs::path root = folder.path().toStdString();
  const fs::path bundle = root / "Orvo.app";
  const fs::path program = bundle / "bin" / "orvo";
  const fs::path other = root / "Other.app";
  fs::create_directories(bundle / "bin");
  fs::create_directories(other / "bin");
  fs::create_hard_link(self, program);
  fs::create_directory_symlink(bundle, root / "Linked.app");
  fs::create_symlink(program, root / "orvo");
  EXPECT_EQ(FolderBundle(program).path(), program.parent_path()) << "without its Info.json it is no bundle";
  std::ofstream(other / "Info.json") << R"({"CFBundleIdentifier": "other"})";
  for (const char* broken : {"{", "[]", R"({"CFBundleIdentifier": 7})"}) {
    std::ofstream(bundle / "Info.json") << broken;
    EXPECT_EQ(FolderBundle(program).identifier(), std::nullopt) << broken;
  }
  std::ofstream(bundle / "Info.json") << R"({"CFBundleIdentifier": "orvo", "CFBundleShortVersionString": 2})";
  EXPECT_EQ(FolderBundle(program).infoValue("CFBundleShortVersionString"), InfoValue(2.0));

  const std::pair<fs::path, fs::path> launches[]{{bundle / "bin" / ".." / "bin" / "orvo", bundle},
                                                 {root / "Linked.app" / "bin" / "orvo", root / "Linked.app"},
                                                 {root / "orvo", bundle},
                                                 {other / "bin" / "orvo", self.parent_path()},
                                                 {"/bin/sh", self.parent_path()},
                                                 {"", self.parent_path()}};
  for (const auto& [launched, found] : launches) {
    EXPECT_EQ(FolderBundle(launched).path(), found) << launched;
    EXPECT_EQ(FolderBundle(launched).identifier().has_value(), found != self.parent_path()) << launched;
  }
}

TEST(LinuxProcessInfoTest, TheSystemsNameIsOneShellWord) {
  const std::pair<const char*, const char*> cases[]{
      {"PRETTY_NAME=Plain", "Plain"},
      {R"(PRETTY_NAME='Single \ "quoted"')", R"(Single \ "quoted")"},
      {R"(PRETTY_NAME="Costs \$5 \"now\"")", R"(Costs $5 "now")"},
      {"#PRETTY_NAME=no\nX_PRETTY_NAME=no\n", ""},
  };
  for (const auto& [text, name] : cases) {
    std::istringstream stream(text);
    EXPECT_EQ(prettyName(stream), name) << text;
  }
}

TEST(LinuxFileSystemTest, PathsComeAbsoluteAndWithoutDetours) {
  const std::pair<const char*, const char*> cases[]{{"/a//b/./c/../d/", "/a/b/d"}, {"//", "/"}, {"//a", "/a"}};
  for (const auto& [path, standard] : cases) EXPECT_EQ(LinuxFileSystem().standardizing(path), standard) << path;
  EXPECT_EQ(LinuxFileSystem().resolvingSymbolicLinks("/usr/lib/orvo/Orvo.app"), "/Applications/Orvo.app");
}

TEST(IcuTextTest, OrderAndContainmentIgnoreCaseInEveryLanguage) {
  const std::pair<const char*, const char*> ascending[]{{"alpha", "Beta"}, {"Alpha", "beta"}, {"app 2", "App 10"},
                                                        {"", "a"},         {"e", "é"},        {"éa", "eb"}};
  for (const char* language : {"en_US", "tr_TR", "en_US_POSIX", "ja_JP"}) {
    const IcuText text{icu::Locale(language)};
    for (const auto& [left, right] : ascending) EXPECT_LT(text.standardCompare(left, right), 0) << language << left;
    EXPECT_EQ(text.standardCompare("CopyQ", "copyq"), 0);
  }
  const IcuText text{icu::Locale("en_US")};
  const IcuText turkish{icu::Locale("tr_TR")};
  const std::pair<const char*, const char*> contained[]{
      {"Network Manager", "work m"}, {"STRASSE", "straße"}, {"Caf\xC3\xA9", "CAFE\xCC\x81"}};
  for (const auto& [whole, part] : contained) {
    EXPECT_TRUE(text.caseInsensitiveContains(whole, part) && turkish.caseInsensitiveContains(whole, part)) << whole;
  }
  for (const auto& [whole, part] : {std::pair{"İstanbul", "istanbul"}, {"IŞIK", "ışık"}, {"ışık", "IŞIK"}}) {
    EXPECT_TRUE(turkish.caseInsensitiveContains(whole, part)) << whole;
    EXPECT_FALSE(text.caseInsensitiveContains(whole, part)) << whole;
  }
  for (const char* absent : {"", "cafe", "\xFF"}) EXPECT_FALSE(text.caseInsensitiveContains("Caf\xC3\xA9", absent));
}

}  // namespace
}  // namespace orvo
