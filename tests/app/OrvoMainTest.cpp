#include "app/OrvoMain.h"

#include "bridge/FrameworkEntry.h"
#include "support/MemoryPlatform.h"

#include <gtest/gtest.h>

#include <sstream>
#include <tuple>

namespace orvo {
namespace {

class OrvoMainTest : public testing::Test {
 protected:
  // What was printed.
  std::string main(const std::vector<std::string>& arguments) {
    std::ostringstream out;
    memory.processInfo.argumentList = arguments;
    OrvoMain::main({memory.bundle, memory.processInfo, memory.accessibility, memory.workspace, memory.words}, out,
                   [this]() -> const Platform* { return ++platformsMade, &memory.platform; });
    return out.str();
  }

  MemoryPlatform memory;
  int platformsMade = 0;
};

TEST_F(OrvoMainTest, TheReportIsCompleteWhateverIsMissing) {
  memory.workspace.launch("local.orvo.Orvo", 7);
  memory.bundle.info["CFBundleShortVersionString"] = "1.4";
  memory.workspace.registered["local.orvo.Orvo"] = "/opt/Orvo.app";
  EXPECT_EQ(main({"orvo", "--verbose", "--diagnose"}),
            "Orvo 1.4\nOS: Version 27.0 (Build 26A100)\nBackend: macOS 27 native concealment protocol is available.\n"
            "Accessibility: enabled\nBundle: local.orvo.Orvo\nApplication path: /Applications/Orvo.app\n"
            "LaunchServices path: /opt/Orvo.app\n");
  memory.workspace.registered.clear();
  EXPECT_TRUE(main({"--diagnose"}).ends_with("LaunchServices path: not registered\n"));
  memory.bundle.info["CFBundleShortVersionString"] = 2.0;
  memory.bundle.bundleIdentifier.reset();
  memory.accessibility.trusted = false;
  setConcealmentFramework(nullptr);
  EXPECT_EQ(main({"--diagnose"}),
            "Orvo 0.2.0\nOS: Version 27.0 (Build 26A100)\nBackend: This macOS build does not expose the expected menu "
            "bar protocol. Icons will remain visible.\nAccessibility: not granted to this process\n"
            "Bundle: unbundled command line process\nApplication path: /Applications/Orvo.app\n");
  EXPECT_TRUE(platformsMade == 0 && memory.workspace.openedURLs.empty());
}

TEST_F(OrvoMainTest, ASecondCopyHandsOverToTheFirstOtherOneAndTheOnlyOneRuns) {
  constexpr std::int32_t own = 1000;
  using Copies = std::vector<std::pair<std::int32_t, std::optional<std::string>>>;
  const std::vector<std::tuple<const char*, Copies, bool, std::vector<std::string>>> cases{
      {"this process alone", {{own, "/a"}}, true, {}},
      {"another one after it", {{own, "/a"}, {7, "/My Apps/O.app"}}, false, {"file:///My%20Apps/O.app/"}},
      {"the first other one decides", {{7, "/b"}, {8, "/c"}}, false, {"file:///b/"}},
      {"a first one without a bundle ends it all the same", {{7, std::nullopt}, {8, "/c"}}, false, {}},
      {"no identifier, nothing to look for", {{7, "/b"}}, true, {}}};
  for (const auto& [name, copies, runs, opened] : cases) {
    SCOPED_TRACE(name);
    if (name == std::get<0>(cases.back())) memory.bundle.bundleIdentifier.reset();
    memory.workspace.running.clear();
    for (const auto& [pid, path] : copies)
      memory.workspace.running.push_back({"local.orvo.Orvo", pid, std::nullopt, path});
    memory.workspace.openedURLs.clear();
    platformsMade = memory.application.runs = 0;
    EXPECT_EQ(main({"orvo", "--diagnose=1"}), "");
    EXPECT_TRUE(platformsMade == (runs ? 1 : 0) && memory.application.runs == platformsMade);
    EXPECT_EQ(memory.application.delegate, nullptr);
    EXPECT_EQ(memory.workspace.openedURLs, opened);
  }
}

}  // namespace
}  // namespace orvo
