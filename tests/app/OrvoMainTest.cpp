#include "app/OrvoMain.h"

#include "bridge/FrameworkEntry.h"
#include "support/MemoryPlatform.h"

#include <gtest/gtest.h>

#include <sstream>

namespace orvo {
namespace {

class OrvoMainTest : public testing::Test {
 protected:
  // What was printed.
  std::string main() {
    std::ostringstream out;
    OrvoMain::main({memory.bundle, memory.processInfo, memory.accessibility, memory.workspace}, out,
                   [this]() -> const Platform& {
                     ++platformsMade;
                     return memory.platform;
                   });
    return out.str();
  }

  MemoryPlatform memory;
  int platformsMade = 0;
};

TEST_F(OrvoMainTest, TheReportIsCompleteWhateverIsMissing) {
  struct Case {
    const char* name;
    std::optional<InfoValue> version;
    std::optional<std::string> identifier;
    std::optional<std::string> registered;
    bool trusted;
    bool backend;
    const char* report;
  };
  const std::vector<Case> cases{
      {"everything there", "1.4", "local.orvo.Orvo", "/Applications/Orvo.app", true, true,
       "Orvo 1.4\nOS: Version 27.0 (Build 26A100)\nBackend: macOS 27 native concealment protocol is available.\n"
       "Accessibility: enabled\nBundle: local.orvo.Orvo\nApplication path: /Applications/Orvo.app\n"
       "LaunchServices path: /Applications/Orvo.app\n"},
      {"a version that is a number, nothing registered", 2.0, "local.orvo.Orvo", std::nullopt, false, true,
       "Orvo 0.2.0\nOS: Version 27.0 (Build 26A100)\nBackend: macOS 27 native concealment protocol is available.\n"
       "Accessibility: not granted to this process\nBundle: local.orvo.Orvo\n"
       "Application path: /Applications/Orvo.app\nLaunchServices path: not registered\n"},
      {"outside any bundle, without the framework", std::nullopt, std::nullopt, std::nullopt, true, false,
       "Orvo 0.2.0\nOS: Version 27.0 (Build 26A100)\nBackend: This macOS build does not expose the expected menu bar "
       "protocol. Icons will remain visible.\nAccessibility: enabled\nBundle: unbundled command line process\n"
       "Application path: /Applications/Orvo.app\n"}};
  memory.processInfo.argumentList = {"orvo", "--verbose", "--diagnose"};
  memory.workspace.launch("local.orvo.Orvo", 7);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    memory.bundle.info.clear();
    if (c.version) memory.bundle.info["CFBundleShortVersionString"] = *c.version;
    memory.bundle.bundleIdentifier = c.identifier;
    memory.workspace.registered.clear();
    if (c.registered) memory.workspace.registered["local.orvo.Orvo"] = *c.registered;
    memory.accessibility.trusted = c.trusted;
    setConcealmentFramework(c.backend ? &memory.framework : nullptr);
    EXPECT_EQ(main(), c.report);
  }
  EXPECT_EQ(platformsMade, 0);
  EXPECT_TRUE(memory.workspace.openedURLs.empty());
}

TEST_F(OrvoMainTest, OnlyTheExactArgumentDiagnoses) {
  for (const char* argument : {"--Diagnose", "--diagnose=1", "-diagnose", "--diag", " --diagnose"}) {
    SCOPED_TRACE(argument);
    memory.processInfo.argumentList = {"orvo", argument};
    EXPECT_EQ(main(), "");
  }
  EXPECT_EQ(platformsMade, 5);
  memory.processInfo.argumentList = {"--diagnose"};
  EXPECT_NE(main(), "");
}

TEST_F(OrvoMainTest, ASecondCopyHandsOverToTheFirstOtherOne) {
  constexpr std::int32_t own = 1000;
  struct Copy {
    std::int32_t pid;
    std::optional<std::string> path;
  };
  struct Case {
    const char* name;
    bool bundled;
    std::vector<Copy> copies;
    bool runs;
    std::vector<std::string> opened;
  };
  const std::vector<Case> cases{
      {"no copy at all", true, {}, true, {}},
      {"this process alone", true, {{own, "/a"}}, true, {}},
      {"another one after this process",
       true,
       {{own, "/a"}, {7, "/My Apps/Orvo.app"}},
       false,
       {"file:///My%20Apps/Orvo.app/"}},
      {"the first other one decides", true, {{7, "/b"}, {8, "/c"}}, false, {"file:///b/"}},
      {"a first one without a bundle ends it all the same", true, {{7, std::nullopt}, {8, "/c"}}, false, {}},
      {"no identifier, nothing to look for", false, {{7, "/b"}}, true, {}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    memory.bundle.bundleIdentifier = c.bundled ? std::optional("local.orvo.Orvo") : std::nullopt;
    memory.workspace.running.clear();
    for (const Copy& copy : c.copies) {
      memory.workspace.running.push_back({"local.orvo.Orvo", copy.pid, std::nullopt, copy.path});
    }
    memory.workspace.openedURLs.clear();
    platformsMade = memory.application.runs = 0;
    EXPECT_EQ(main(), "");
    EXPECT_EQ(platformsMade, c.runs ? 1 : 0);
    EXPECT_EQ(memory.application.runs, c.runs ? 1 : 0);
    EXPECT_EQ(memory.workspace.openedURLs, c.opened);
  }
}

TEST_F(OrvoMainTest, TheDelegateIsThereWhileTheApplicationRunsAndNotAfterwards) {
  bool hadDelegate = false;
  memory.application.whileRunning = [&] { hadDelegate = memory.application.delegate != nullptr; };
  main();
  EXPECT_TRUE(hadDelegate);
  EXPECT_EQ(memory.application.delegate, nullptr);
  EXPECT_EQ(memory.statusBar.items, 0);
}

}  // namespace
}  // namespace orvo
