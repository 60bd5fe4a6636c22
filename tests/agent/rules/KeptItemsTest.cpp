#include "agent/rules/KeptItems.h"

#include <gtest/gtest.h>

namespace orvo {

TEST(KeptItemsTest, RestoresWhatIsMissingByANameOfItsOwnAndNothingElse) {
  const std::string path(defaultItemPath);
  const std::string five = keptItems({{":1.5", path, 5, {":1.5"}}});
  const std::string kept = keptItems({{":1.5", path, 5, {":1.5"}},
                                      {":1.6", "/org/ayatana/NotificationItem/six", 6, {":1.6"}},
                                      {":1.7", path, 7, {"org.kde.StatusNotifierItem-7-1"}},
                                      {":1.8", path, 8, {":1.8", "org.example.Eight"}}});
  using Names = std::vector<std::string>;
  const std::tuple<std::string, Names, Names> cases[]{
      {kept, {}, {":1.5", "org.kde.StatusNotifierItem-7-1", "org.example.Eight"}},
      {kept, {":1.5" + path, ":1.7" + path, ":1.8"}, {}},
      {kept,
       {":1.5/elsewhere", "/damaged", "", "org.example.Eight" + path},
       {":1.5", "org.kde.StatusNotifierItem-7-1"}},
      // The agent may be killed in the middle of writing a shorter text over a longer one.
      {five + "1.77 :1.77\n", {}, {":1.5"}},
      {five.substr(0, five.size() - 2), {}, {}},
  };
  for (const auto& [text, listed, missing] : cases) EXPECT_EQ(itemsToRestore(text, listed), missing) << text;
}

}  // namespace orvo
