#include "agent/rules/MenuBar.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace orvo {

// Random operations, with the books kept as simply as possible: what a panel that hears every announcement shows has
// to be what the requests in force allow, and no announcement may be idle.
RC_GTEST_PROP(MenuBar, AnnouncesExactlyTheDifferenceWhateverHappens, ()) {
  const std::vector<std::string> bundles{"one", "two", "three", ""};
  const auto pick = [](std::size_t count) { return *rc::gen::resize(100, rc::gen::inRange<std::size_t>(0, count)); };
  MenuBar bar;
  bar.protect("three");
  std::set<std::string> panel;
  std::map<std::uint32_t, std::pair<std::string, std::set<std::string>>> requests;
  const auto hear = [&](const MenuBarChange& change) {
    for (const std::string& address : change.left) panel.erase(address);
    for (const std::string& address : change.hidden) RC_ASSERT(panel.erase(address) == 1U);
    for (const std::string& address : change.shown) RC_ASSERT(panel.insert(address).second);
  };
  for (int count = 0; count < 200; ++count) {
    const std::string owner = ":1." + std::to_string(pick(8));
    const std::string requester = ":2." + std::to_string(pick(3));
    const auto choice = pick(5);
    if (choice == 0) {
      const bool known = bar.isNamed(owner);
      const auto change = bar.add({owner, "/i", 1, {owner}, bundles[owner.back() % bundles.size()]});
      RC_ASSERT(change.has_value() != known && bar.find(owner + "/i") != nullptr);
      if (change) hear(*change);
    } else if (choice == 1) {
      std::set<std::string> allowed(bundles.begin(), bundles.end());
      std::erase_if(allowed, [&](const auto&) { return pick(2) == 0; });
      const auto [assertion, change] = bar.activate(requester, requester.back(), allowed);
      RC_ASSERT(requests.emplace(assertion, std::pair(requester, allowed)).second);
      hear(change);
    } else if (choice == 2 && !requests.empty()) {
      const auto request = std::next(requests.begin(), static_cast<std::ptrdiff_t>(pick(requests.size())));
      const auto change = bar.invalidate(request->first, requester);
      RC_ASSERT(change.has_value() == (request->second.first == requester));
      if (change) requests.erase(request), hear(*change);
    } else if (choice > 2) {
      const std::string& lost = choice == 3 ? owner : requester;
      std::erase_if(requests, [&](const auto& each) { return each.second.first == lost; });
      const std::size_t kept = bar.items().size() - (bar.isNamed(lost) ? 1 : 0);
      hear(bar.nameLost(lost));
      RC_ASSERT(bar.items().size() == kept && !bar.isNamed(lost));
    }
    std::set<std::string> expected;
    for (const TrayItem& item : bar.items()) {
      // Nobody hides what nobody can tell, or what is protected.
      const auto allows = [&](const auto& each) { return each.second.second.contains(item.bundle); };
      if (item.bundle.empty() || item.bundle == "three" || std::ranges::all_of(requests, allows))
        expected.insert(item.address());
    }
    RC_ASSERT(panel == expected);
    RC_ASSERT(bar.isConcealing() == !requests.empty());
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

}  // namespace orvo
