#include "sensing/IconScanner.h"

#include "support/AsciiText.h"
#include "support/ManualExecutor.h"
#include "support/ManualMainQueue.h"
#include "support/MemoryAccessibility.h"
#include "support/MemoryWorkspace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Element = std::shared_ptr<MemoryElement>;

constexpr const char* hostBundle = "com.apple.MenuBarAgent";
constexpr std::int32_t host = 100;
const Rect clockFrame{1800, 0, 80, 24};

class CountingWorkspace : public MemoryWorkspace {
 public:
  using MemoryWorkspace::runningApplications;
  std::vector<RunningApplication> runningApplications() const override {
    ++asked;
    return MemoryWorkspace::runningApplications();
  }
  mutable int asked = 0;
};

class IconScannerTest : public testing::Test {
 protected:
  IconScannerTest() { run(hostBundle, host); }

  void run(std::optional<std::string> bundle, std::int32_t pid, std::optional<std::string> name = std::nullopt) {
    workspace_.running.push_back({std::move(bundle), pid, std::move(name), std::nullopt});
  }
  MenuBarSnapshot scan(Element root) {
    accessibility_.setTree(host, std::move(root));
    return scan();
  }
  MenuBarSnapshot scan() {
    std::optional<MenuBarSnapshot> answer;
    scanner_->scan([&answer](MenuBarSnapshot snapshot) { answer = std::move(snapshot); });
    executor_.runAll();
    queue_.runPosted();
    return answer.value();
  }
  static std::vector<std::string> names(const MenuBarSnapshot& snapshot) {
    std::vector<std::string> all;
    for (const DiscoveredApp& app : snapshot.apps) all.push_back(app.name);
    return all;
  }
  static Element control() { return element(host)->withIdentifier("com.apple.menuextra.clock"); }

  MemoryAccessibility accessibility_;
  CountingWorkspace workspace_;
  AsciiText text_;
  ManualExecutor executor_;
  ManualMainQueue queue_;
  std::unique_ptr<IconScanner> scanner_ =
      std::make_unique<IconScanner>(accessibility_, workspace_, text_, executor_, queue_);
};

TEST_F(IconScannerTest, LooksAtNothingWithoutTrustOrWithoutTheHost) {
  run("app", 7);
  accessibility_.setTree(host, element(host)->withChildren({element(7), control()->withFrame(clockFrame)}));
  accessibility_.trusted = false;
  EXPECT_THAT(scan().apps, IsEmpty());
  EXPECT_EQ(workspace_.asked, 0);
  accessibility_.trusted = true;
  workspace_.running.front().bundleIdentifier = "com.apple.menubaragent";
  EXPECT_THAT(scan().systemFrames, IsEmpty());
  EXPECT_THAT(accessibility_.asked(), IsEmpty());
}

TEST_F(IconScannerTest, WalksTheFirstHostAloneAndBoundsItsRootAlone) {
  workspace_.running.insert(workspace_.running.begin(), RunningApplication{});
  run(hostBundle, 200);
  const Element child = control()->withFrame(clockFrame);
  const Element root = element(host)->withChildren({child});
  EXPECT_THAT(scan(root).systemFrames, ElementsAre(clockFrame));
  EXPECT_THAT(accessibility_.asked(), ElementsAre(host));
  EXPECT_EQ(root->messagingTimeout, 0.2F);
  EXPECT_EQ(child->messagingTimeout, std::nullopt);
}

TEST_F(IconScannerTest, CollectsAControlByItsIdentifierAndTheFrameItHasOrInherits) {
  const Rect parent{0, 0, 500, 30};
  const Rect tall{1, 2, 3, 60.5};
  struct Case {
    const char* what;
    Element control;
    std::optional<Rect> expected;
  };
  const auto other = [](const Element& made, const char* name) {
    made->attributes[name] = OtherAttributeValue{};
    return made;
  };
  const std::vector<Case> cases{
      {"height 60", control()->withFrame({1, 2, 3, 60}), Rect{1, 2, 3, 60}},
      {"height 60.5", control()->withFrame(tall), std::nullopt},
      {"height -60", control()->withFrame({1, 2, 3, -60}), Rect{1, 2, 3, -60}},
      {"height -60.5", control()->withFrame({1, 2, 3, -60.5}), std::nullopt},
      {"height 0", control()->withFrame({1, 2, 3, 0}), Rect{1, 2, 3, 0}},
      {"width -3", control()->withFrame({1, 2, -3, 20}), Rect{1, 2, -3, 20}},
      {"width 0", control()->withFrame({1, 2, 0, 20}), parent},
      {"no frame", control(), parent},
      {"frame of another kind", other(control(), "AXFrame"), parent},
      {"prefix alone", element(host)->withIdentifier("com.apple.menuextra.")->withFrame(clockFrame), clockFrame},
      {"other case", element(host)->withIdentifier("com.apple.MenuExtra.clock")->withFrame(clockFrame), std::nullopt},
      {"prefix inside", element(host)->withIdentifier("x.com.apple.menuextra.a")->withFrame(clockFrame), std::nullopt},
      {"identifier of another kind", other(element(host)->withFrame(clockFrame), "AXIdentifier"), std::nullopt},
      {"no identifier", element(host)->withFrame(clockFrame), std::nullopt},
  };
  for (const Case& each : cases) {
    const auto frames = scan(element(host)->withFrame(parent)->withChildren({each.control})).systemFrames;
    EXPECT_EQ(frames, each.expected ? std::vector<Rect>{*each.expected} : std::vector<Rect>{}) << each.what;
  }
  EXPECT_THAT(scan(element(host)->withChildren({control()})).systemFrames, IsEmpty());
  const Element nested = control()->withChildren({control()->withFrame(clockFrame)->withChildren({control()})});
  EXPECT_THAT(scan(element(host)->withFrame(parent)->withChildren({nested})).systemFrames,
              ElementsAre(parent, clockFrame, clockFrame));
}

TEST_F(IconScannerTest, TreatsAnElementWithoutAnotherOwnerAsTheHostsOwn) {
  run(std::nullopt, 8, "Nameless bundle");
  for (const auto& pid : {std::optional<std::int32_t>(), std::optional(0), std::optional(-7), std::optional(host),
                          std::optional(8), std::optional(4711)}) {
    const auto snapshot =
        scan(element(host)->withChildren({element(pid)->withChildren({control()->withFrame(clockFrame)})}));
    EXPECT_THAT(snapshot.apps, IsEmpty());
    EXPECT_THAT(snapshot.systemFrames, ElementsAre(clockFrame));
  }
}

TEST_F(IconScannerTest, ClosesTheSubtreeOfAnotherApplication) {
  run("app", 7);
  run("inner", 9);
  const Element inside = control()->withFrame(clockFrame);
  const Element owned =
      element(7)->withIdentifier("com.apple.menuextra.fake")->withFrame(clockFrame)->withChildren({inside, element(9)});
  const auto snapshot = scan(element(host)->withChildren({owned}));
  ASSERT_EQ(snapshot.apps.size(), 1U);
  EXPECT_EQ(snapshot.apps[0].bundleID, "app");
  EXPECT_THAT(snapshot.systemFrames, IsEmpty());
  EXPECT_THAT(inside->reads, IsEmpty());
}

TEST_F(IconScannerTest, ListsAnApplicationOnceUnderItsLastElementInLocalizedOrder) {
  run("ten", 10, "Item 10");
  run("two", 2, "Item 2");
  run("beta", 3, "Beta");
  run("alpha", 4, "alpha");
  run("two", 22, "Item 2 again");
  run("org.nameless", 5);
  const auto snapshot = scan(element(host)->withChildren(
      {element(10), element(2), element(3), element(4), element(22), element(5), element(3)}));
  EXPECT_THAT(names(snapshot), ElementsAre("alpha", "Beta", "Item 2 again", "Item 10", "org.nameless"));
  EXPECT_EQ(snapshot.apps[2].pid, 22);
  EXPECT_EQ(snapshot.apps[4].bundleID, "org.nameless");
}

TEST_F(IconScannerTest, SeesDepthFiveButNotSix) {
  Element tree = control()->withFrame({6, 0, 1, 1});
  for (int depth = 5; depth >= 0; --depth) {
    tree = control()->withFrame({static_cast<double>(depth), 0, 1, 1})->withChildren({tree});
  }
  const auto frames = scan(tree).systemFrames;
  ASSERT_EQ(frames.size(), 6U);
  EXPECT_EQ(frames.back().x, 5);
}

TEST_F(IconScannerTest, StopsAfterFourHundredElementsWhereverTheyAre) {
  run("last", 7);
  // The root, a branch and its 397 leaves make 399.
  const std::vector<Element> leaves(397, control()->withFrame(clockFrame));
  const Element beyond = control()->withFrame(clockFrame);
  const auto snapshot = scan(element(host)->withChildren({element(host)->withChildren(leaves), element(7), beyond}));
  EXPECT_EQ(snapshot.systemFrames.size(), 397U);
  EXPECT_THAT(names(snapshot), ElementsAre("last"));
  EXPECT_THAT(beyond->reads, IsEmpty());
}

TEST_F(IconScannerTest, SurvivesATreeThatContainsItself) {
  const Element root = control()->withFrame(clockFrame);
  root->withChildren({root, root, root});
  EXPECT_EQ(scan(root).systemFrames.size(), 364U);  // 1 + 3 + 9 + 27 + 81 + 243
  root->withChildren(std::vector<Element>(4, root));
  EXPECT_EQ(scan(root).systemFrames.size(), 400U);
  root->withChildren({});
}

TEST_F(IconScannerTest, AnswersOnTheMainThreadInOrderAlsoWhenItIsGone) {
  run("app", 7, "App");
  accessibility_.setTree(host, element(host)->withChildren({element(7)}));
  // Lives as long as the callbacks do and notes where the last one dies.
  const auto diedOn = std::make_shared<std::optional<std::thread::id>>();
  std::shared_ptr<void> held(nullptr, [diedOn](void*) { *diedOn = std::this_thread::get_id(); });
  std::vector<int> order;
  ThreadExecutor executor;
  auto scanner = std::make_unique<IconScanner>(accessibility_, workspace_, text_, executor, queue_);
  for (int number : {1, 2}) {
    scanner->scan([this, number, held, &order](const MenuBarSnapshot& snapshot) {
      EXPECT_TRUE(queue_.isMainThread());
      EXPECT_THAT(names(snapshot), ElementsAre("App"));
      order.push_back(number);
    });
  }
  held.reset();
  scanner.reset();
  EXPECT_THAT(order, IsEmpty());
  while (order.size() < 2) {
    ASSERT_TRUE(queue_.waitUntilPosted(std::chrono::seconds(20)));
    queue_.runPosted();
  }
  EXPECT_THAT(order, ElementsAre(1, 2));
  EXPECT_EQ(*diedOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace orvo
