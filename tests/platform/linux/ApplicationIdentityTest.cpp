#include "platform/linux/ApplicationIdentity.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/DesktopEntries.h"

namespace orvo {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t pid = 4242;

struct Case {
  std::string name;
  std::string executable;
  std::vector<std::string> arguments;
  std::vector<std::string> environment;
  std::string expected;
};

// A process folder and two data folders of its own making.
class ApplicationIdentityTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = testing::TempDir() + "identity-XXXXXX";
    root_ = ::mkdtemp(name.data());
    fs::create_directories(home());
    fs::create_directories(system());
  }
  void TearDown() override { fs::remove_all(root_); }

  fs::path home() const { return root_ / "home/applications"; }
  fs::path system() const { return root_ / "system/applications"; }
  fs::path process() const { return root_ / "proc" / std::to_string(pid); }

  static void write(const fs::path& path, const std::string& content) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
  }
  static void writeEntry(const fs::path& path, const std::string& lines) {
    write(path, "[Desktop Entry]\nType=Application\n" + lines + "\n");
  }
  static std::string joined(const std::vector<std::string>& list) {
    std::string content;
    for (const std::string& item : list) content += item + '\0';
    return content;
  }

  void start(const std::string& executable, const std::vector<std::string>& arguments = {},
             const std::vector<std::string>& environment = {}) {
    fs::remove_all(process());
    fs::create_directories(process());
    fs::create_symlink(executable, process() / "exe");
    fs::create_symlink("/work", process() / "cwd");
    write(process() / "cmdline", joined(arguments));
    write(process() / "environ", joined(environment));
  }
  std::optional<ApplicationIdentity> identify() {
    entries_.refresh();
    return identifyProcess(pid, root_ / "proc", entries_);
  }

  fs::path root_;
  DesktopEntries entries_{{}};
};

TEST_F(ApplicationIdentityTest, FindsTheEntryWhicheverWayTheProgramWasStarted) {
  entries_ = DesktopEntries({home(), system()});
  writeEntry(system() / "org.example.Mixer.desktop", "Exec=mixer --tray %U");
  writeEntry(system() / "mixer-settings.desktop", "Exec=mixer --settings");
  writeEntry(system() / "org.example.Chat.desktop", "Exec=/usr/bin/chat-launcher\nStartupWMClass=chat-bin");
  writeEntry(system() / "org.example.Notes.desktop", "Exec=env LANG=C \"/opt/my notes/notes\" %f");
  writeEntry(system() / "org.example.Script.desktop", "Exec=python3 -u /usr/share/script/main.py");
  writeEntry(system() / "org.example.Shell.desktop", "Exec=sh -c 'exec something'");
  writeEntry(system() / "kde/old.desktop", "Exec=old");
  writeEntry(system() / "radio_player.desktop", "Exec=/snap/bin/radio.player");
  writeEntry(system() / "org.example.Masked.desktop", "Exec=masked");
  writeEntry(home() / "org.example.Masked.desktop", "Hidden=true");
  const std::string launched = "GIO_LAUNCHED_DESKTOP_FILE=" + (system() / "org.example.Mixer.desktop").string();
  const std::string mine = "GIO_LAUNCHED_DESKTOP_FILE_PID=4242";
  const std::string parents = "GIO_LAUNCHED_DESKTOP_FILE_PID=424";
  const Case cases[] = {
      {"the entry named after the program wins over others", "/usr/bin/mixer", {"mixer"}, {}, "org.example.Mixer"},
      {"window class", "/usr/lib/chat/chat-bin", {}, {}, "org.example.Chat"},
      {"launch environment", "/usr/lib/wrapped", {}, {launched, mine}, "org.example.Mixer"},
      {"inherited launch environment", "/usr/bin/child", {}, {launched, parents}, "child"},
      {"launched from a file that is not installed",
       "/usr/bin/x",
       {},
       {"GIO_LAUNCHED_DESKTOP_FILE=/x.desktop", mine},
       "x"},
      {"quoted command behind env", "/opt/my notes/notes", {}, {}, "org.example.Notes"},
      {"another file of the same name", "/home/me/notes", {}, {}, "notes"},
      {"deleted by an upgrade", "/usr/bin/mixer (deleted)", {}, {}, "org.example.Mixer"},
      {"installed script", "/usr/bin/python3.11", {"python3", "/usr/share/script/main.py"}, {}, "org.example.Script"},
      {"another script of that name", "/usr/bin/python3.11", {"python3", "main.py"}, {}, "main.py"},
      {"script behind options", "/usr/bin/perl", {"perl", "-w", "./tray.pl", "x"}, {}, "tray.pl"},
      {"module", "/usr/bin/python3", {"python3", "-m", "tray"}, {}, "tray"},
      {"shell without a script", "/usr/bin/dash", {"sh", "-c", "old"}, {}, "dash"},
      {"interpreter with a title of its own", "/usr/bin/python3", {"my title"}, {}, "python3"},
      {"entry in a folder", "/usr/bin/old", {}, {}, "kde-old"},
      {"snap", "/snap/radio/12/bin/player", {}, {}, "radio_player"},
      {"snap's other program", "/snap/radio/12/bin/helper", {}, {}, "radio_player"},
      {"snap without an entry", "/snap/lamp/1/lamp", {}, {}, "lamp"},
      {"entry masked at home", "/usr/bin/masked", {}, {}, "masked"},
      {"agent", "/anywhere/Orvo.app/bin/orvo-agent", {}, {}, "com.apple.MenuBarAgent"},
  };
  for (const Case& each : cases) {
    start(each.executable, each.arguments, each.environment);
    const auto identity = identify();
    ASSERT_TRUE(identity) << each.name;
    EXPECT_EQ(identity->bundleIdentifier, each.expected) << each.name;
    EXPECT_EQ(identity->desktopFile.has_value(), entries_.withIdentifier(each.expected) != nullptr) << each.name;
  }
}

TEST_F(ApplicationIdentityTest, GoesByTheSandboxsNameForEveryProgramInside) {
  start("/app/bin/anything");
  write(process() / "root/.flatpak-info",
        "[Runtime]\nname=wrong\n[Application]\nname=org.example.Boxed\n[Instance]\nname=no\n");
  EXPECT_EQ(identify()->bundleIdentifier, "org.example.Boxed");
}

TEST_F(ApplicationIdentityTest, GoesByTheBundleForAProgramInItsBinFolderOnly) {
  write(root_ / "A.app/Info.json", R"({"CFBundleIdentifier": "org.example.Bundled", "CFBundleName": "Bundled"})");
  write(root_ / "B.app/Info.json", "not an object");
  start(root_ / "A.app/bin/program");
  EXPECT_EQ(identify()->bundleIdentifier, "org.example.Bundled");
  EXPECT_EQ(identify()->localizedName, "Bundled");
  start(root_ / "A.app/lib/program");
  EXPECT_EQ(identify()->bundleIdentifier, "program");
  start(root_ / "B.app/bin/program");
  EXPECT_EQ(identify()->bundleIdentifier, "program");
}

TEST_F(ApplicationIdentityTest, KnowsNothingOfAProcessThatCannotBeLookedAt) {
  EXPECT_FALSE(identify());
  fs::create_directories(process());  // a zombie has a folder and a command line, but no executable
  write(process() / "cmdline", "");
  EXPECT_FALSE(identify());
  EXPECT_FALSE(identifyProcess(-1));
}

TEST_F(ApplicationIdentityTest, NoticesEntriesThatComeAndGo) {
  entries_ = DesktopEntries({home(), system()});
  start("/usr/bin/late");
  EXPECT_EQ(identify()->bundleIdentifier, "late");
  writeEntry(system() / "vendor/org.late.desktop", "Exec=late\nName=Late\nIcon=late-icon");
  const auto found = identify();
  EXPECT_EQ(found->bundleIdentifier, "vendor-org.late");
  EXPECT_EQ(found->localizedName, "Late");
  EXPECT_EQ(found->iconName, "late-icon");
  fs::remove(system() / "vendor/org.late.desktop");
  EXPECT_EQ(identify()->bundleIdentifier, "late");
}

TEST(ApplicationIdentity, IdentifiesARealProcess) {
  EXPECT_EQ(identifyProcess(static_cast<std::int32_t>(::getpid()))->bundleIdentifier, "identity_test");
}

}  // namespace
}  // namespace orvo
