#include "agent/rules/MenuBar.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace orvo {
namespace {

const std::vector<std::string> bundles{"one", "two", "three", ""};

// Plays random operations and keeps the books as simply as possible: what a panel that hears every
// announcement shows has to be what the requests in force allow, and no announcement may be idle.
class Books {
 public:
  explicit Books(unsigned seed) : random_(seed) { bar_.protect("three"); }

  void step() {
    const std::string item = ":1." + std::to_string(pick(8));
    const std::string requester = ":2." + std::to_string(pick(3));
    const unsigned choice = pick(5);
    if (choice == 0) arrive(item);
    if (choice == 1) request(requester);
    if (choice == 2) withdraw(requester);
    if (choice > 2) lose(choice == 3 ? item : requester);
  }

  void check() const {
    std::vector<std::string> expected;
    for (const auto& [address, bundle] : items_)
      if (allowed(bundle)) expected.push_back(address);
    std::vector<std::string> shown;
    for (const TrayItem& item : bar_.shownItems()) shown.push_back(item.address());
    EXPECT_EQ(shown, expected);
    EXPECT_EQ(panel_, std::set<std::string>(expected.begin(), expected.end()));
    EXPECT_EQ(bar_.isConcealing(), !requests_.empty());
  }

 private:
  unsigned pick(std::size_t count) { return static_cast<unsigned>(random_() % count); }

  // Nobody hides what nobody can tell, or what is protected.
  bool allowed(const std::string& bundle) const {
    return bundle.empty() || bundle == "three" ||
           std::all_of(requests_.begin(), requests_.end(),
                       [&](const auto& each) { return each.second.second.contains(bundle); });
  }

  void hear(const MenuBarChange& change) {
    for (const std::string& address : change.left) panel_.erase(address);
    for (const std::string& address : change.hidden) EXPECT_EQ(panel_.erase(address), 1U) << address;
    for (const std::string& address : change.shown) EXPECT_TRUE(panel_.insert(address).second) << address;
  }

  void arrive(const std::string& owner) {
    const std::string& bundle = bundles[owner.back() % bundles.size()];
    const bool known =
        std::any_of(items_.begin(), items_.end(), [&](const auto& item) { return item.first == owner + "/i"; });
    EXPECT_TRUE(bar_.isNamed(owner) == known && (bar_.find(owner + "/i") != nullptr) == known);
    if (!known) items_.emplace_back(owner + "/i", bundle);
    const auto change = bar_.add({owner, "/i", 1, {owner}, bundle});
    EXPECT_EQ(change.has_value(), !known);
    if (change) hear(*change);
  }

  void lose(const std::string& name) {
    std::erase_if(items_, [&](const auto& each) { return each.first == name + "/i"; });
    std::erase_if(requests_, [&](const auto& request) { return request.second.first == name; });
    hear(bar_.nameLost(name));
  }

  void request(const std::string& requester) {
    std::set<std::string> all;
    for (const std::string& bundle : bundles)
      if (pick(2) == 0) all.insert(bundle);
    const auto [assertion, change] = bar_.activate(requester, requester.back(), all);
    EXPECT_TRUE(requests_.emplace(assertion, std::pair(requester, all)).second);
    hear(change);
  }

  void withdraw(const std::string& requester) {
    if (requests_.empty()) return;
    const auto request = std::next(requests_.begin(), pick(requests_.size()));
    const auto change = bar_.invalidate(request->first, requester);
    EXPECT_EQ(change.has_value(), request->second.first == requester);
    if (!change) return;
    requests_.erase(request);
    hear(*change);
  }

  std::mt19937 random_;
  MenuBar bar_;
  std::set<std::string> panel_;
  std::vector<std::pair<std::string, std::string>> items_;
  std::map<std::uint32_t, std::pair<std::string, std::set<std::string>>> requests_;
};

TEST(MenuBar, AnnouncesExactlyTheDifferenceWhateverHappens) {
  for (unsigned seed = 1; seed <= 50 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    Books books(seed);
    for (int count = 0; count < 200; ++count) books.step(), books.check();
  }
}

TEST(MenuBar, HasRoomForSoManyItemsOfAProcessAndRequestsOfARequester) {
  MenuBar bar;
  for (std::size_t count = 0; count <= ItemRegistry::mostOfProcess; ++count) {
    const std::string path = "/" + std::to_string(count);
    EXPECT_EQ(bar.add({":1.1", path, 1, {":1.1"}}).has_value(), count < ItemRegistry::mostOfProcess) << count;
  }
  for (std::size_t count = 0; count <= Concealment::mostOfProcess; ++count)
    EXPECT_EQ(bar.activate(":2." + std::to_string(count), 7, {}).assertion != 0, count < Concealment::mostOfProcess);
  // An item goes with the last of its names.
  EXPECT_TRUE(bar.add({":1.2", "/", 2, {"a.b"}}) && !bar.add({":1.2", "/", 2, {"c.d"}}));
  EXPECT_TRUE(bar.nameLost("a.b").left.empty() && bar.isNamed("c.d"));
  EXPECT_EQ(bar.nameLost("c.d").left, std::vector<std::string>{":1.2/"});
}

TEST(MenuBar, ReadsNamesAndPathsThatTheBusKnowsAndNothingElse) {
  const std::string name = "a." + std::string(253, 'b');
  const std::string path = "/" + std::string(1020, 'x');
  using Case = std::pair<std::string, std::string>;
  for (const auto& [text, expected] :
       {Case{":1.5", ":1.5 /StatusNotifierItem"}, Case{"/aZ_09/z", ":1.7 /aZ_09/z"}, Case{"A-z_0.9/", "A-z_0.9 /"},
        Case{name, name + " /StatusNotifierItem"}, Case{"a.b" + path, "a.b " + path}, Case{"", ""},
        Case{name + "b", ""}, Case{"a.b" + path + "x", ""}, Case{"plain", ""}, Case{"a.b c", ""}, Case{"a.b{", ""},
        Case{"/a/", ""}, Case{"//", ""}, Case{"/a-b", ""}, Case{"a.b//c", ""}}) {
    const auto item = parseRegistration(text, text.empty() ? "" : ":1.7");
    EXPECT_EQ(item ? item->name + ' ' + item->path : "", expected) << text;
  }
}

}  // namespace
}  // namespace orvo
