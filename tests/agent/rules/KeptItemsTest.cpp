#include "agent/rules/KeptItems.h"

#include <gtest/gtest.h>

namespace orvo {
namespace {

const std::string path(defaultItemPath);

TEST(KeptItemsTest, RestoresWhatIsMissingByANameOfItsOwnAndNothingElse) {
  const std::string kept = keptItems({{":1.5", path, 5, {":1.5"}},
                                      {":1.6", "/org/ayatana/NotificationItem/six", 6, {":1.6"}},
                                      {":1.7", path, 7, {"org.kde.StatusNotifierItem-7-1"}},
                                      {":1.8", path, 8, {":1.8", "org.example.Eight"}}});
  using Names = std::vector<std::string>;
  const std::vector<std::pair<Names, Names>> cases = {
      {{}, {":1.5", "org.kde.StatusNotifierItem-7-1", "org.example.Eight"}},
      {{":1.5" + path, ":1.7" + path, ":1.8"}, {}},
      {{":1.5/elsewhere", "/damaged", "", "org.example.Eight" + path}, {":1.5", "org.kde.StatusNotifierItem-7-1"}},
  };
  for (const auto& [listed, missing] : cases) EXPECT_EQ(itemsToRestore(kept, listed), missing);
}

// The agent may be killed in the middle of writing a shorter text over a longer one.
TEST(KeptItemsTest, ReadsNoLineBehindTheEndOrWithoutOne) {
  const std::string kept = keptItems({{":1.5", path, 5, {":1.5"}}});
  EXPECT_EQ(itemsToRestore(kept + "1.77 :1.77\n", {}), std::vector<std::string>{":1.5"});
  EXPECT_TRUE(itemsToRestore(kept.substr(0, kept.size() - 2), {}).empty());
  EXPECT_TRUE(keptItems({}).empty());
}

}  // namespace
}  // namespace orvo
