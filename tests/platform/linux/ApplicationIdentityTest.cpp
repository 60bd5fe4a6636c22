#include "platform/linux/ApplicationIdentity.h"

#include "platform/linux/DesktopEntries.h"
#include "support/Files.h"

#include <gtest/gtest.h>

namespace orvo {

using Words = std::vector<std::string>;

// A process folder and two data folders of its own making.
class ApplicationIdentityTest : public testing::Test {
 protected:
  static std::string joined(const Words& words) {
    std::string text;
    for (const std::string& word : words) text += word + '\0';
    return text;
  }
  static void writeEntry(const fs::path& path, const std::string& command) {
    write(path.string() + ".desktop", "[Desktop Entry]\nType=Application\nExec=" + command + "\n");
  }
  // The process, as it is from now on.
  std::optional<ApplicationIdentity> started(const std::string& executable, const Words& arguments = {},
                                             const Words& environment = {}) {
    fs::remove_all(process_);
    write(process_ / "cmdline", joined(arguments));
    write(process_ / "environ", joined(environment));
    fs::create_symlink(executable, process_ / "exe");
    fs::create_symlink("/work", process_ / "cwd");
    return identify();
  }
  std::optional<ApplicationIdentity> identify() {
    entries_.refresh();
    return identifyProcess(4242, root_ / "proc", entries_);
  }

  TemporaryFolder folder_;
  const fs::path root_ = folder_.path;
  const fs::path home_ = root_ / "home", system_ = root_ / "system", process_ = root_ / "proc/4242";
  DesktopEntries entries_{{home_, system_}};
};

TEST_F(ApplicationIdentityTest, FindsTheEntryWhicheverWayTheProgramWasStarted) {
  const std::pair<fs::path, std::string> entries[]{
      {system_ / "org.example.Mixer", "mixer --tray %U"},
      {system_ / "org.example.Chat", "/usr/bin/chat-launcher\nStartupWMClass=chat-bin"},
      {system_ / "org.example.Notes", "env LANG=C \"/opt/my notes/notes\" %f"},
      {system_ / "org.example.Script", "python3 -u /usr/share/script/main.py"},
      {system_ / "org.example.Wrapped", (root_ / "bin/wrapped").string() + " --tray"},
      {system_ / "org.example.Electric", "electron --no-sandbox /usr/share/electric/app.asar %U"},
      {system_ / "radio_player", "/snap/bin/radio.player"},
      {system_ / "org.example.Masked", "masked"},
      {home_ / "org.example.Masked", "\nHidden=true"},
  };
  for (const auto& [path, line] : entries) writeEntry(path, line);
  write(root_ / "bin/wrapped", "#!/bin/sh\nexec ...");
  fs::permissions(root_ / "bin/wrapped", fs::perms::owner_all);
  write(root_ / "A.app/Info.json", R"({"CFBundleIdentifier": "org.example.Bundled"})");
  const std::string launched = "GIO_LAUNCHED_DESKTOP_FILE=" + (system_ / "org.example.Mixer.desktop").string();
  const std::string mine = "GIO_LAUNCHED_DESKTOP_FILE_PID=4242";
  const std::string parents = "GIO_LAUNCHED_DESKTOP_FILE_PID=424";
  const std::string python = "/usr/bin/python3.11";
  // The identifier, of this executable with these arguments and environment.
  const std::tuple<std::string, std::string, Words, Words> cases[]{
      {"org.example.Chat", "/usr/lib/chat/chat-bin", {}, {}},
      {"org.example.Mixer", "/usr/lib/wrapped", {}, {launched, mine}},
      {"child", "/usr/bin/child", {}, {launched, parents}},
      {"org.example.Notes", "/opt/my notes/notes", {}, {}},
      {"org.example.Mixer", "/usr/bin/mixer (deleted)", {}, {}},
      {"org.example.Script", python, {"python3", "/usr/share/script/main.py"}, {}},
      {"x.py", python, {"python3", "-W", "ignore", "-X", "dev", "-u", "x.py"}, {}},
      {"player.jar", "/usr/bin/java", {"java", "-cp", "lib.jar", "-jar", "player.jar"}, {}},
      {"org.example.Wrapped", "/usr/lib/wrapped/wrapped-bin", {}, {}},
      {"org.example.Electric", "/usr/lib/electron25/electron", {"electron", "/usr/share/electric/app.asar"}, {}},
      {"signal", "/usr/lib/electron25/electron", {"electron", "-r", "x", "/opt/signal/resources/app"}, {}},
      {"org.example.Chat", "/usr/bin/xdg-dbus-proxy", {"xdg-dbus-proxy", "b", "--own=org.example.Chat.*"}, {}},
      {"tray", python, {"python3", "-m", "tray"}, {}},
      {"python3.11", python, {"my title"}, {}},
      {"radio_player", "/snap/radio/12/bin/player", {}, {}},
      {"masked", "/usr/bin/masked", {}, {}},
      {"org.example.Bundled", root_ / "A.app/bin/program", {}, {}},
      {"caf\uFFFD", "/usr/bin/caf\xe9", {}, {}},
  };
  for (const auto& [expected, executable, arguments, environment] : cases)
    EXPECT_EQ(started(executable, arguments, environment)->bundleIdentifier, expected) << executable;
  write(process_ / "root/.flatpak-info", "[Runtime]\nname=no\n[Application]\nname=org.example.Boxed\n");
  EXPECT_EQ(identify()->bundleIdentifier, "org.example.Boxed");
}

TEST_F(ApplicationIdentityTest, NoticesEntriesThatComeAndGoAndKnowsNothingOfAProcessThatCannotBeLookedAt) {
  EXPECT_EQ(started("/usr/bin/late")->bundleIdentifier, "late");
  writeEntry(system_ / "vendor/org.late", "late\nName=Late\nIcon=late-icon");
  const auto found = identify();
  EXPECT_EQ(found->bundleIdentifier, "vendor-org.late");
  EXPECT_EQ(found->localizedName, "Late");
  EXPECT_EQ(found->iconName, "late-icon");
  fs::remove(system_ / "vendor/org.late.desktop");
  EXPECT_EQ(identify()->bundleIdentifier, "late");
  fs::remove(process_ / "exe");  // a zombie has a folder and a command line, but no executable
  EXPECT_FALSE(identify());
}

}  // namespace orvo
