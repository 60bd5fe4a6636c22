#include "agent/rules/MenuBar.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::optional<std::string> identify(std::int32_t process) {
  static const std::map<std::int32_t, std::string> bundles = {{1, "one"}, {2, "two"}, {3, "three"}};
  const auto found = bundles.find(process);
  return found == bundles.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> addresses(const std::vector<TrayItem>& items) {
  std::vector<std::string> list;
  list.reserve(items.size());
  for (const TrayItem& item : items) list.push_back(item.address());
  return list;
}

TEST(MenuBar, ReadsEveryFormOfRegistration) {
  const struct {
    const char* text;
    const char* name;
    const char* path;
  } cases[] = {
      {"/org/ayatana/x", ":1.5", "/org/ayatana/x"},
      {":1.7", ":1.7", "/StatusNotifierItem"},
      {"org.kde.StatusNotifierItem-9-1", "org.kde.StatusNotifierItem-9-1", "/StatusNotifierItem"},
      {"org.example.X/Item", "org.example.X", "/Item"},
  };
  for (const auto& each : cases) {
    const auto registration = parseRegistration(each.text, ":1.5");
    ASSERT_TRUE(registration) << each.text;
    EXPECT_EQ(registration->name, each.name);
    EXPECT_EQ(registration->path, each.path);
  }
  EXPECT_FALSE(parseRegistration("", ":1.5"));
}

TEST(MenuBar, KeepsAnItemAsLongAsOneOfItsNames) {
  MenuBar bar(identify);
  bar.add({":1.1", "/i"}, ":1.1", 1);
  EXPECT_THAT(bar.add({"org.x", "/i"}, ":1.1", 1).shown, IsEmpty()) << "the same item under another name";
  bar.add({"org.y", "/i"}, ":1.2", 2);
  EXPECT_THAT(bar.nameLost("org.x").hidden, IsEmpty());
  EXPECT_THAT(bar.nameLost("org.y").hidden, ElementsAre(":1.2/i")) << "its only name, although the process lives on";
  EXPECT_THAT(bar.nameLost(":1.1").hidden, ElementsAre(":1.1/i"));
  EXPECT_THAT(bar.items(), IsEmpty());
}

TEST(MenuBar, ShowsAnOwnerThatNobodyCanIdentify) {
  MenuBar bar(identify);
  bar.add({":1.1", "/i"}, ":1.1", 0);
  bar.add({":1.2", "/i"}, ":1.2", 99);
  bar.add({":1.3", "/i"}, ":1.3", 1);
  EXPECT_THAT(bar.activate(":1.9", {}).change.hidden, ElementsAre(":1.3/i"));
}

TEST(MenuBar, LetsOnlyTheRequesterEndItsRequest) {
  MenuBar bar(identify);
  bar.add({":1.1", "/i"}, ":1.1", 1);
  const auto assertion = bar.activate(":1.8", {}).assertion;
  EXPECT_FALSE(bar.invalidate(assertion, ":1.9"));
  EXPECT_THAT(bar.nameLost(":1.9").shown, IsEmpty());
  EXPECT_THAT(bar.invalidate(assertion, ":1.8")->shown, ElementsAre(":1.1/i"));
  EXPECT_FALSE(bar.invalidate(assertion, ":1.8"));
}

TEST(MenuBar, ForgetsEverythingWithoutAnnouncingWhenThePanelTurnsAway) {
  MenuBar bar(identify);
  bar.add({":1.1", "/i"}, ":1.1", 1);
  const auto assertion = bar.activate(":1.9", {}).assertion;
  const MenuBarChange change = bar.reset();
  EXPECT_THAT(addresses(change.left), ElementsAre(":1.1/i"));
  EXPECT_THAT(change.shown, IsEmpty());
  EXPECT_FALSE(bar.invalidate(assertion, ":1.9"));
  EXPECT_THAT(bar.add({":1.1", "/i"}, ":1.1", 1).shown, ElementsAre(":1.1/i"));
}

// Plays random operations and keeps the books as simply as possible: what a panel that hears every
// announcement shows has to be what the requests in force allow, and no announcement may be idle.
class Books {
 public:
  explicit Books(unsigned seed) : random_(seed) {}

  void step() {
    switch (pick(5)) {
      case 0:
        return arrive(pick(8));
      case 1:
        return leave(pick(8));
      case 2:
        return request(":2." + std::to_string(pick(3)));
      case 3:
        return withdraw();
      default:
        return loseRequester(":2." + std::to_string(pick(3)));
    }
  }

  void check() const {
    std::vector<std::string> expected;
    for (const auto& [address, process] : items_)
      if (allowed(process)) expected.push_back(address);
    EXPECT_EQ(addresses(bar_.shownItems()), expected);
    EXPECT_EQ(panel_, std::set<std::string>(expected.begin(), expected.end()));
  }

 private:
  int pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

  bool allowed(std::int32_t process) const {
    const auto bundle = identify(process);
    return !bundle || std::all_of(requests_.begin(), requests_.end(),
                                  [&](const auto& each) { return each.second.second.contains(*bundle); });
  }

  void hear(const MenuBarChange& change) {
    for (const std::string& address : change.hidden) EXPECT_EQ(panel_.erase(address), 1U) << address;
    for (const std::string& address : change.shown) EXPECT_TRUE(panel_.insert(address).second) << address;
  }

  void arrive(int number) {
    const std::string owner = ":1." + std::to_string(number);
    const bool known =
        std::any_of(items_.begin(), items_.end(), [&](const auto& item) { return item.first == owner + "/i"; });
    if (!known) items_.emplace_back(owner + "/i", number / 2);
    hear(bar_.add({owner, "/i"}, owner, number / 2));
  }

  void leave(int number) {
    const std::string owner = ":1." + std::to_string(number);
    std::erase_if(items_, [&](const auto& item) { return item.first == owner + "/i"; });
    hear(bar_.nameLost(owner));
  }

  void request(const std::string& requester) {
    std::set<std::string> bundles;
    for (const char* bundle : {"one", "two", "three"})
      if (pick(2) == 0) bundles.insert(bundle);
    const auto [assertion, change] = bar_.activate(requester, bundles);
    EXPECT_TRUE(requests_.emplace(assertion, std::pair(requester, bundles)).second);
    hear(change);
  }

  void withdraw() {
    if (requests_.empty()) return;
    const auto request = std::next(requests_.begin(), pick(static_cast<int>(requests_.size())));
    const auto change = bar_.invalidate(request->first, request->second.first);
    requests_.erase(request);
    ASSERT_TRUE(change);
    hear(*change);
  }

  void loseRequester(const std::string& requester) {
    std::erase_if(requests_, [&](const auto& request) { return request.second.first == requester; });
    hear(bar_.nameLost(requester));
  }

  std::mt19937 random_;
  MenuBar bar_{identify};
  std::set<std::string> panel_;
  std::vector<std::pair<std::string, std::int32_t>> items_;
  std::map<std::uint32_t, std::pair<std::string, std::set<std::string>>> requests_;
};

TEST(MenuBar, AnnouncesExactlyTheDifferenceWhateverHappens) {
  for (unsigned seed = 1; seed <= 50 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    Books books(seed);
    for (int count = 0; count < 200; ++count) {
      books.step();
      books.check();
    }
  }
}

}  // namespace
}  // namespace orvo
