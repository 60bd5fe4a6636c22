// The scanner's own share of a walk: a tree in memory, so without what the system's answers cost.
#include "Running.h"

#include "platform/Accessibility.h"
#include "sensing/MenuBarWalk.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

namespace orvo {
namespace {

constexpr std::int32_t host = 1;

class Node : public AccessibilityElement {
 public:
  explicit Node(std::int32_t process) : process_(process) {}
  void setMessagingTimeout(float) override {}
  std::optional<std::int32_t> processIdentifier() override { return process_; }
  std::optional<AttributeValue> copyAttributeValue(std::string_view name) override {
    if (name == "AXFrame") return Rect{0, 0, 24, 24};
    if (name == "AXIdentifier") return std::string("com.apple.menuextra.clock");
    return children;
  }

  std::vector<AccessibilityElementRef> children;

 private:
  std::int32_t process_;
};

// Every second element below the root belongs to an application of its own.
void walkOfFourHundredElements(benchmark::State& state) {
  constexpr int elements = 400;
  const Running workspace;
  Node root(host);
  for (int i = 1; i < elements; ++i) root.children.push_back(std::make_shared<Node>(i % 2 == 0 ? host : host + i));
  while (state.KeepRunning()) {
    MenuBarWalk walk(workspace, host);
    walk.walk(root, 0, std::nullopt);
    benchmark::DoNotOptimize(walk.apps().size());
  }
  state.SetItemsProcessed(state.iterations() * elements);
}
BENCHMARK(walkOfFourHundredElements);

}  // namespace
}  // namespace orvo
