#include "sensing/IconScanner.h"

#include "support/MemoryPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Element = std::shared_ptr<MemoryElement>;
using Frames = std::vector<Rect>;

constexpr std::int32_t host = 100;
const Rect clockFrame{1800, 0, 80, 24};

Element parentOf(const std::vector<Element>& children) { return element(host)->withChildren(children); }
Element control() { return element(host)->withIdentifier("com.apple.menuextra.clock"); }
Element clock() { return control()->withFrame(clockFrame); }

class IconScannerTest : public testing::Test {
 protected:
  IconScannerTest() {
    memory_.workspace.running.clear();
    run(std::string(menuBarHostBundle), host);
  }

  void run(std::optional<std::string> bundle, std::int32_t pid, std::optional<std::string> name = std::nullopt) {
    memory_.workspace.running.push_back({std::move(bundle), pid, std::move(name), std::nullopt});
  }
  MenuBarSnapshot scan(const Element& root) {
    memory_.accessibility.trees[host] = root;
    std::optional<MenuBarSnapshot> answer;
    scanner_->scan([&answer](MenuBarSnapshot snapshot) { answer = std::move(snapshot); });
    memory_.settle();
    return answer.value();
  }

  MemoryPlatform memory_;
  std::optional<IconScanner> scanner_{std::in_place,         memory_.accessibility, memory_.workspace,
                                      memory_.localizedText, memory_.scanExecutor,  memory_.mainQueue};
};

TEST_F(IconScannerTest, WalksTheFirstTrustedHostAloneAndBoundsItsRootAlone) {
  auto& running = memory_.workspace.running;
  running.insert(running.begin(), RunningApplication{});
  run(std::string(menuBarHostBundle), 200);
  const Element child = clock();
  const Element root = parentOf({child});
  EXPECT_THAT(scan(root).systemFrames, ElementsAre(clockFrame));
  EXPECT_TRUE(root->messagingTimeout == 0.2F && !child->messagingTimeout);
  memory_.accessibility.trusted = false;
  EXPECT_THAT(scan(root).systemFrames, IsEmpty());
  memory_.accessibility.trusted = true;
  running.clear();
  run("com.apple.menubaragent", host);
  EXPECT_THAT(scan(root).systemFrames, IsEmpty());
  EXPECT_THAT(memory_.accessibility.asked, ElementsAre(host));
}

TEST_F(IconScannerTest, CollectsAControlByItsIdentifierAndTheFrameItHasOrInherits) {
  const Rect ancestor{0, 0, 500, 30};
  const auto named = [](const char* identifier) { return clock()->withIdentifier(identifier); };
  const std::vector<std::pair<Element, Frames>> cases{
      {control()->withFrame({1, 2, 3, 60}), {{1, 2, 3, 60}}},
      {control()->withFrame({1, 2, 3, 60.5}), {}},
      {control()->withFrame({1, 2, -3, -60}), {{1, 2, -3, -60}}},
      {control()->withFrame({1, 2, 3, -60.5}), {}},
      {control()->withFrame({1, 2, 3, 0}), {{1, 2, 3, 0}}},
      {control()->withFrame({1, 2, 0, 20}), {ancestor}},
      {control(), {ancestor}},
      {control()->with("AXFrame", OtherAttributeValue{}), {ancestor}},
      {named("com.apple.menuextra."), {clockFrame}},
      {named("com.apple.MenuExtra.clock"), {}},
      {named("x.com.apple.menuextra.a"), {}},
      {clock()->with("AXIdentifier", OtherAttributeValue{}), {}},
      {element(host)->withFrame(clockFrame), {}},
  };
  for (const auto& each : cases)
    EXPECT_EQ(scan(parentOf({parentOf({each.first})})->withFrame(ancestor)).systemFrames, each.second)
        << &each - cases.data();
  EXPECT_THAT(scan(parentOf({control()})).systemFrames, IsEmpty()) << "no frame anywhere";
}

TEST_F(IconScannerTest, TakesAnElementForAnotherApplicationsOnlyWhereOneOwnsItAndClosesItsSubtree) {
  run("app", 7);
  run("inner", 9);
  run(std::nullopt, 8, "Nameless bundle");
  for (const auto pid : std::initializer_list<std::optional<std::int32_t>>{std::nullopt, 0, host, 8, 4711, 7}) {
    const auto snapshot =
        scan(parentOf({element(pid)->withIdentifier("com.apple.menuextra.x")->withChildren({clock(), element(9)})}));
    ASSERT_EQ(snapshot.apps.size(), 1U);
    EXPECT_EQ(snapshot.apps[0].bundleID, pid == 7 ? "app" : "inner");
    EXPECT_EQ(snapshot.systemFrames.size(), pid == 7 ? 0U : 1U);
  }
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
  EXPECT_TRUE(snapshot.systemFrames.size() == 397 && snapshot.apps.size() == 1);
  EXPECT_EQ(beyond->reads, 0);
}

TEST_F(IconScannerTest, AnswersOnTheMainThreadInOrderAlsoWhenItIsGone) {
  // Lives as long as the callbacks do and notes where the last one dies.
  std::thread::id diedOn;
  std::shared_ptr<void> held(nullptr, [&diedOn](void*) { diedOn = std::this_thread::get_id(); });
  std::vector<int> order;
  for (int number : {1, 2}) scanner_->scan([number, held, &order](const MenuBarSnapshot&) { order.push_back(number); });
  held.reset();
  scanner_.reset();
  std::thread([this] { memory_.scanExecutor.runPosted(); }).join();
  EXPECT_THAT(order, IsEmpty());
  memory_.mainQueue.runPosted();
  EXPECT_THAT(order, ElementsAre(1, 2));
  EXPECT_EQ(diedOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace orvo
