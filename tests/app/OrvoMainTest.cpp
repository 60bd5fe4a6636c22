#include "app/OrvoMain.h"

#include "support/MemoryPlatform.h"

#include <gtest/gtest.h>

#include <sstream>

namespace orvo {

TEST(OrvoMainTest, ASecondCopyHandsOverToTheFirstOtherOneAndTheOnlyOneRuns) {
  using Copies = std::vector<std::pair<std::int32_t, std::optional<std::string>>>;
  const std::pair<Copies, std::vector<std::string>> cases[]{
      {{{1000, "/a"}}, {}},
      {{{1000, "/a"}, {7, "/My Apps/O.app"}}, {"file:///My%20Apps/O.app/"}},
      {{{7, "/b"}, {8, "/c"}}, {"file:///b/"}},
      {{{7, std::nullopt}, {8, "/c"}}, {}}};
  for (const auto& [copies, opened] : cases) {
    MemoryPlatform m;
    for (const auto& [pid, path] : copies) m.workspace.running.push_back({"local.orvo.Orvo", pid, std::nullopt, path});
    std::ostringstream out;
    OrvoMain::main({m.bundle, m.bundle, m.accessibility, m.workspace, m.words}, out, [&] { return &m.platform; });
    EXPECT_EQ(m.application.runs, copies.size() == 1 ? 1 : 0);
    EXPECT_EQ(m.application.delegate, nullptr);
    EXPECT_EQ(m.workspace.openedURLs, opened);
  }
}

}  // namespace orvo
