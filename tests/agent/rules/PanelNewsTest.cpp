#include "agent/rules/PanelNews.h"

#include <random>

#include <gtest/gtest.h>

namespace orvo {

// A panel that lists items in the order in which it finished its views of them.
struct Panel {
  Panel() {
    for (const char* address : {"a", "b", "c", "d"}) news.add(address);
    for (const char* address : {"a", "b", "c"}) news.identify(address, "same");
  }
  void hear() {
    for (const auto& [address, isShown] : news.due()) {
      EXPECT_FALSE(busy.contains(address)) << "news of what the panel is busy with";
      EXPECT_TRUE(isShown ? busy.insert(address).second : std::erase(views, address) == 1) << address;
    }
  }
  void finish(const std::string& address) {
    if (busy.erase(address) == 0) return;
    views.push_back(address);
    news.viewMade(address);
    hear();
  }

  PanelNews news;
  std::set<std::string> busy;
  std::vector<std::string> views;
};

TEST(PanelNewsTest, LeavesThePanelWithWhatIsWantedAndEqualsInTheirOrderWhateverHappens) {
  for (unsigned seed = 1; seed <= 2000 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    Panel panel;
    std::set<std::string> wanted;
    for (int count = 0; count < 60; ++count) {
      const std::string address(1, static_cast<char>('a' + random() % 4));
      const auto choice = random() % 8;
      if (choice < 2) panel.finish(address);
      if (choice == 2 || choice == 3) panel.news.viewDelayed(address);
      if (choice > 3) panel.news.want(address, choice > 5);
      if (choice > 3) wanted.erase(address);
      if (choice > 5) wanted.insert(address);
      panel.hear();
    }
    while (!panel.busy.empty()) panel.finish(std::string(*panel.busy.rbegin()));
    EXPECT_TRUE(panel.news.isSettled());
    EXPECT_EQ(panel.news.told(), std::vector<std::string>(wanted.begin(), wanted.end()));
    for (const std::string& each : wanted) EXPECT_EQ(panel.news.forget(each), (std::vector<News>{{each, false}}));
    EXPECT_TRUE(panel.news.told().empty());
    std::erase(panel.views, "d");
    EXPECT_TRUE(std::is_sorted(panel.views.begin(), panel.views.end())) << testing::PrintToString(panel.views);
  }
}

TEST(PanelNewsTest, NobodyWaitsForABusyProgramBehindWhichItsEqualsFollowOnceItIsDone) {
  Panel panel;
  for (const char* address : {"a", "b"}) panel.news.want(address, true);
  panel.hear();
  EXPECT_EQ(panel.busy, std::set<std::string>{"a"});
  panel.news.viewDelayed("a");
  panel.hear();
  EXPECT_EQ(panel.busy, (std::set<std::string>{"a", "b"}));
  for (const char* address : {"b", "a", "b"}) panel.finish(address);
  EXPECT_EQ(panel.views, (std::vector<std::string>{"a", "b"}));
  panel.news.renewAll();
  panel.hear();
  EXPECT_EQ(panel.busy, std::set<std::string>{"a"});
  for (const char* address : {"a", "b"}) panel.finish(address);
  EXPECT_EQ(panel.news.beginAll(), panel.views);
  EXPECT_TRUE(panel.news.beginAll().empty());
}

TEST(PanelNewsTest, AnEqualThatWasQuickerBeforeItsIdWasKnownFollows) {
  PanelNews news;
  for (const char* address : {"a", "b"}) news.add(address), news.want(address, true);
  EXPECT_EQ(news.due().size(), 2U);
  for (const char* address : {"a", "b"}) news.identify(address, "same");
  for (const char* address : {"b", "a"}) news.viewMade(address);
  EXPECT_EQ(news.due(), (std::vector<News>{{"b", false}, {"b", true}}));
}

}  // namespace orvo
