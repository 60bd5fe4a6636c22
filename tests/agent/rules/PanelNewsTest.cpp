#include "agent/rules/PanelNews.h"

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orvo {
namespace {

// A panel that lists items in the order in which it finished its views of them.
class Panel {
 public:
  explicit Panel(PanelNews& news) : news_(news) {}

  void hear() {
    for (const auto& [address, isShown] : news_.due()) {
      EXPECT_FALSE(busy_.contains(address)) << "news of what the panel is busy with";
      EXPECT_TRUE(isShown ? busy_.insert(address).second : std::erase(views_, address) == 1) << address;
    }
  }
  void finish(std::string address) {  // a copy: it may be one of those that are busy
    if (busy_.erase(address) == 0) return;
    views_.push_back(address);
    news_.viewMade(address);
    hear();
  }
  void finishAll() {
    while (!busy_.empty()) finish(*busy_.rbegin());
  }
  const std::vector<std::string>& views() const { return views_; }

 private:
  PanelNews& news_;
  std::set<std::string> busy_;
  std::vector<std::string> views_;
};

TEST(PanelNewsTest, LeavesThePanelWithWhatIsWantedAndEqualsInTheirOrderWhateverHappens) {
  for (unsigned seed = 1; seed <= 2000 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    PanelNews news;
    Panel panel(news);
    std::set<std::string> wanted;
    for (const char* address : {"a", "b", "c", "d"}) {
      news.add(address);
      news.identify(address, *address == 'd' ? "" : "same");
    }
    for (int count = 0; count < 60; ++count) {
      const std::string address(1, static_cast<char>('a' + random() % 4));
      switch (random() % 4) {
        case 0:
          panel.finish(address);
          continue;
        case 1:
          news.viewDelayed(address);
          break;
        default:
          const bool isWanted = random() % 2 == 0;
          news.want(address, isWanted);
          wanted.erase(address);
          if (isWanted) wanted.insert(address);
      }
      panel.hear();
    }
    panel.finishAll();
    EXPECT_TRUE(news.isSettled());
    EXPECT_EQ(news.told(), std::vector<std::string>(wanted.begin(), wanted.end()));
    auto equals = panel.views();
    std::erase(equals, "d");
    EXPECT_TRUE(std::is_sorted(equals.begin(), equals.end())) << testing::PrintToString(equals);
  }
}

}  // namespace
}  // namespace orvo
