#include "sensing/IconScanner.h"

#include "support/AsciiText.h"
#include "support/ManualExecutor.h"
#include "support/ManualMainQueue.h"
#include "support/MemoryAccessibility.h"
#include "support/MemoryWorkspace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Element = std::shared_ptr<MemoryElement>;

constexpr const char* hostBundle = "com.apple.MenuBarAgent";
constexpr std::int32_t host = 100;
const Rect clockFrame{1800, 0, 80, 24};

class IconScannerTest : public testing::Test {
 protected:
  IconScannerTest() { run(hostBundle, host); }

  void run(std::optional<std::string> bundle, std::int32_t pid, std::optional<std::string> name = std::nullopt) {
    workspace_.running.push_back({std::move(bundle), pid, std::move(name), std::nullopt});
  }
  MenuBarSnapshot scan(const Element& root) {
    accessibility_.trees[host] = root;
    std::optional<MenuBarSnapshot> answer;
    scanner_->scan([&answer](MenuBarSnapshot snapshot) { answer = std::move(snapshot); });
    executor_.runAll();
    queue_.runPosted();
    return answer.value();
  }
  static Element parentOf(const std::vector<Element>& children) { return element(host)->withChildren(children); }
  static Element control() { return element(host)->withIdentifier("com.apple.menuextra.clock"); }
  static Element clock() { return control()->withFrame(clockFrame); }

  MemoryAccessibility accessibility_;
  MemoryWorkspace workspace_;
  AsciiText text_;
  ManualExecutor executor_;
  ManualMainQueue queue_;
  std::optional<IconScanner> scanner_{std::in_place, accessibility_, workspace_, text_, executor_, queue_};
};

TEST_F(IconScannerTest, WalksTheFirstTrustedHostAloneAndBoundsItsRootAlone) {
  workspace_.running.insert(workspace_.running.begin(), RunningApplication{});
  run(hostBundle, 200);
  const Element child = clock();
  const Element root = parentOf({child});
  EXPECT_THAT(scan(root).systemFrames, ElementsAre(clockFrame));
  EXPECT_EQ(root->messagingTimeout, 0.2F);
  EXPECT_EQ(child->messagingTimeout, std::nullopt);
  accessibility_.trusted = false;
  EXPECT_THAT(scan(root).systemFrames, IsEmpty());
  accessibility_.trusted = true;
  workspace_.running.clear();
  run("com.apple.menubaragent", host);
  EXPECT_THAT(scan(root).systemFrames, IsEmpty());
  EXPECT_THAT(accessibility_.asked, ElementsAre(host));
}

TEST_F(IconScannerTest, CollectsAControlByItsIdentifierAndTheFrameItHasOrInherits) {
  const Rect ancestor{0, 0, 500, 30};
  const auto named = [](const char* identifier) { return clock()->withIdentifier(identifier); };
  const std::vector<std::pair<Element, std::optional<Rect>>> cases{
      {control()->withFrame({1, 2, 3, 60}), Rect{1, 2, 3, 60}},
      {control()->withFrame({1, 2, 3, 60.5}), std::nullopt},
      {control()->withFrame({1, 2, -3, -60}), Rect{1, 2, -3, -60}},
      {control()->withFrame({1, 2, 3, -60.5}), std::nullopt},
      {control()->withFrame({1, 2, 3, 0}), Rect{1, 2, 3, 0}},
      {control()->withFrame({1, 2, 0, 20}), ancestor},
      {control(), ancestor},
      {control()->with("AXFrame", OtherAttributeValue{}), ancestor},
      {named("com.apple.menuextra."), clockFrame},
      {named("com.apple.MenuExtra.clock"), std::nullopt},
      {named("x.com.apple.menuextra.a"), std::nullopt},
      {clock()->with("AXIdentifier", OtherAttributeValue{}), std::nullopt},
      {element(host)->withFrame(clockFrame), std::nullopt},
  };
  for (const auto& each : cases) {
    const auto& [made, expected] = each;
    EXPECT_EQ(scan(parentOf({parentOf({made})})->withFrame(ancestor)).systemFrames,
              expected ? std::vector<Rect>{*expected} : std::vector<Rect>{})
        << &each - cases.data();
  }
  EXPECT_THAT(scan(parentOf({control()})).systemFrames, IsEmpty()) << "no frame anywhere";
}

TEST_F(IconScannerTest, TakesAnElementForAnotherApplicationsOnlyWhereOneOwnsItAndClosesItsSubtree) {
  run("app", 7);
  run("inner", 9);
  run(std::nullopt, 8, "Nameless bundle");
  for (const auto& pid : {std::optional<std::int32_t>(), std::optional(0), std::optional(host), std::optional(8),
                          std::optional(4711), std::optional(7)}) {
    const auto snapshot =
        scan(parentOf({element(pid)->withIdentifier("com.apple.menuextra.x")->withChildren({clock(), element(9)})}));
    ASSERT_EQ(snapshot.apps.size(), 1U);
    EXPECT_EQ(snapshot.apps[0].bundleID, pid == 7 ? "app" : "inner");
    EXPECT_EQ(snapshot.systemFrames.size(), pid == 7 ? 0U : 1U);
  }
}

TEST_F(IconScannerTest, ListsAnApplicationOnceUnderItsLastElementInLocalizedOrder) {
  run("ten", 10, "Item 10");
  run("two", 2, "Item 2");
  run("beta", 3, "Beta");
  run("two", 22, "Item 2 again");
  run("alpha", 4);
  std::vector<std::string> found;
  for (const DiscoveredApp& app : scan(parentOf({element(10), element(2), element(3), element(4), element(22)})).apps) {
    found.push_back(app.bundleID + "/" + app.name + "/" + std::to_string(app.pid));
  }
  EXPECT_THAT(found, ElementsAre("alpha/alpha/4", "beta/Beta/3", "two/Item 2 again/22", "ten/Item 10/10"));
}

TEST_F(IconScannerTest, StopsBelowDepthFiveAndAfterFourHundredElements) {
  const Element root = clock();
  root->withChildren({root, root, root});
  EXPECT_EQ(scan(root).systemFrames.size(), 364U);  // 1 + 3 + 9 + 27 + 81 + 243
  root->withChildren({});
  // The root, a branch and its 397 leaves make 399.
  run("last", 7);
  const Element beyond = clock();
  const auto snapshot = scan(parentOf({parentOf(std::vector<Element>(397, clock())), element(7), beyond}));
  EXPECT_EQ(snapshot.systemFrames.size(), 397U);
  EXPECT_EQ(snapshot.apps.size(), 1U);
  EXPECT_EQ(beyond->reads, 0);
}

TEST_F(IconScannerTest, AnswersOnTheMainThreadInOrderAlsoWhenItIsGone) {
  // Lives as long as the callbacks do and notes where the last one dies.
  std::thread::id diedOn;
  std::shared_ptr<void> held(nullptr, [&diedOn](void*) { diedOn = std::this_thread::get_id(); });
  std::vector<int> order;
  for (int number : {1, 2}) {
    scanner_->scan([this, number, held, &order](const MenuBarSnapshot&) {
      EXPECT_TRUE(queue_.isMainThread());
      order.push_back(number);
    });
  }
  held.reset();
  scanner_.reset();
  std::thread([this] { executor_.runAll(); }).join();
  EXPECT_THAT(order, IsEmpty());
  queue_.runPosted();
  EXPECT_THAT(order, ElementsAre(1, 2));
  EXPECT_EQ(diedOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace orvo
