#include "sensing/IconScanner.h"

#include "sensing/MenuBarWalk.h"
#include "support/MemoryPlatform.h"

#include <gtest/gtest.h>

namespace orvo {

using Element = std::shared_ptr<MemoryElement>;
using Frames = std::vector<Rect>;

constexpr std::int32_t host = MemoryPlatform::hostPid;
constexpr Rect clockFrame = MemoryPlatform::clockFrame;

Element parentOf(const std::vector<Element>& children) { return element(host)->withChildren(children); }
Element control() { return element(host)->with("AXIdentifier", "com.apple.menuextra.clock"); }
Element clock() { return control()->with("AXFrame", clockFrame); }

// What a walk through a tree found.
struct Walk : MenuBarWalk {
  Walk(const MemoryPlatform& memory, const Element& root) : MenuBarWalk(memory.workspace, host) { walk(*root, 0, {}); }
};

TEST(MenuBarWalkTest, CollectsAControlByItsIdentifierAndTheFrameItHasOrInherits) {
  const MemoryPlatform memory;
  const Rect ancestor{0, 0, 500, 30};
  const std::pair<Element, Frames> cases[]{
      {control()->with("AXFrame", Rect{1, 2, 3, 60}), {{1, 2, 3, 60}}},
      {control()->with("AXFrame", Rect{1, 2, 3, 60.5}), {}},
      {control()->with("AXFrame", Rect{1, 2, -3, -60}), {{1, 2, -3, -60}}},
      {control()->with("AXFrame", Rect{1, 2, 3, -60.5}), {}},
      {control()->with("AXFrame", Rect{1, 2, 0, 20}), {ancestor}},
      {control()->with("AXFrame", OtherAttributeValue{}), {ancestor}},
      {clock()->with("AXIdentifier", "com.apple.menuextra."), {clockFrame}},
      {clock()->with("AXIdentifier", "x.com.apple.menuextra.a"), {}},
      {clock()->with("AXIdentifier", OtherAttributeValue{}), {}},
      {element(host)->with("AXFrame", clockFrame), {}},
  };
  for (const auto& [placed, frames] : cases)
    EXPECT_EQ(Walk(memory, parentOf({parentOf({placed})})->with("AXFrame", ancestor)).systemFrames(), frames);
  EXPECT_EQ(Walk(memory, parentOf({control()})).systemFrames(), Frames{}) << "no frame anywhere";
}

TEST(MenuBarWalkTest, TakesAnElementForAnotherApplicationsOnlyWhereOneOwnsItAndClosesItsSubtree) {
  MemoryPlatform memory;
  memory.workspace.launch("app", 7);
  memory.workspace.launch("inner", 9);
  memory.workspace.running.push_back({std::nullopt, 8, "Nameless bundle", {}});
  for (const auto pid : std::initializer_list<std::optional<std::int32_t>>{std::nullopt, 0, host, 8, 4711, 7}) {
    const Element outer = element(pid)->with("AXIdentifier", "com.apple.menuextra.x");
    const Walk walk(memory, parentOf({outer->withChildren({clock(), element(9)})}));
    EXPECT_EQ(walk.apps().size(), 1U);
    EXPECT_TRUE(walk.apps().contains(pid == 7 ? "app" : "inner"));
    EXPECT_EQ(walk.systemFrames().size(), pid == 7 ? 0U : 1U);
  }
}

TEST(MenuBarWalkTest, StopsBelowDepthFiveAndAfterFourHundredElements) {
  MemoryPlatform memory;
  memory.workspace.launch("last", 7);
  const Element root = clock();
  root->withChildren({root, root, root});
  EXPECT_EQ(Walk(memory, root).systemFrames().size(), 364U);  // 1 + 3 + 9 + 27 + 81 + 243
  root->withChildren({});
  // The root, a branch and its 397 leaves make 399.
  const Walk walk(memory, parentOf({parentOf(std::vector<Element>(397, clock())), element(7), clock()}));
  EXPECT_TRUE(walk.systemFrames().size() == 397 && walk.apps().size() == 1);
}

TEST(IconScannerTest, AsksTheFirstTrustedHostAloneAndAnswersAndForgetsOnTheMainThreadAlsoWhenItIsGone) {
  MemoryPlatform memory;
  memory.workspace.running.insert(memory.workspace.running.begin(), RunningApplication{});
  memory.workspace.launch(std::string(menuBarHostBundle), 200);
  const Element root = parentOf({parentOf({parentOf({parentOf({parentOf({clock()})})})})});
  memory.accessibility.trees[host] = root;
  for (const bool trusted : {false, true}) {
    memory.accessibility.trusted = trusted;
    std::optional<std::size_t> answer;
    std::thread::id diedOn;
    std::shared_ptr<void> held(nullptr, [&diedOn](void*) { diedOn = std::this_thread::get_id(); });
    IconScanner(memory.accessibility, memory.workspace, memory.localizedText, memory.scanExecutor, memory.mainQueue)
        .scan([held, &answer](const MenuBarSnapshot& snapshot) { answer = snapshot.systemFrames.size(); });
    held.reset();
    std::thread([&] { memory.scanExecutor.runPosted(); }).join();
    EXPECT_FALSE(answer);
    memory.mainQueue.runPosted();
    EXPECT_EQ(answer, trusted ? 1U : 0U);
    EXPECT_EQ(diedOn, std::this_thread::get_id());
  }
  EXPECT_EQ(memory.accessibility.asked, std::vector{host});
  EXPECT_EQ(root->messagingTimeout, 0.2F);
}

}  // namespace orvo
