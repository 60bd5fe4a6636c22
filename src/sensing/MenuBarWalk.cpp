#include "sensing/MenuBarWalk.h"

#include <cmath>
#include <string_view>
#include <utility>
#include <variant>

namespace orvo {
namespace {

// The host's root is at depth 0.
constexpr int deepestDepth = 5;
constexpr std::string_view systemControlPrefix = "com.apple.menuextra.";
// Points. What is taller is not a control but a panel that has been opened.
constexpr double greatestControlHeight = 60;

template <typename Value>
std::optional<Value> attribute(AccessibilityElement& element, std::string_view name) {
  std::optional<AttributeValue> value = element.copyAttributeValue(name);
  if (!value) return std::nullopt;
  Value* wanted = std::get_if<Value>(&*value);
  if (wanted == nullptr) return std::nullopt;
  return std::move(*wanted);
}

std::optional<Rect> ownFrame(AccessibilityElement& element) {
  const std::optional<Rect> frame = attribute<Rect>(element, "AXFrame");
  if (frame && std::fabs(frame->width) > 0) return frame;
  return std::nullopt;
}

}  // namespace

MenuBarWalk::MenuBarWalk(const Workspace& workspace, std::int32_t hostProcess)
    : workspace_(workspace), hostProcess_(hostProcess) {}

void MenuBarWalk::walk(AccessibilityElement& element, int depth, const std::optional<Rect>& inheritedFrame) {
  if (depth > deepestDepth || budget_ < 1) return;
  --budget_;
  const std::optional<Rect> own = ownFrame(element);
  const std::optional<Rect>& frame = own ? own : inheritedFrame;
  if (std::optional<DiscoveredApp> app = owner(element)) {
    std::string key = app->id();
    apps_.insert_or_assign(std::move(key), std::move(*app));
    return;
  }
  collectSystemControl(element, frame);
  const auto children = attribute<std::vector<AccessibilityElementRef>>(element, "AXChildren");
  if (!children) return;
  for (const AccessibilityElementRef& child : *children) walk(*child, depth + 1, frame);
}

std::optional<DiscoveredApp> MenuBarWalk::owner(AccessibilityElement& element) const {
  const std::optional<std::int32_t> process = element.processIdentifier();
  if (!process || *process < 1 || *process == hostProcess_) return std::nullopt;
  const std::optional<RunningApplication> application = workspace_.runningApplication(*process);
  if (!application || !application->bundleIdentifier) return std::nullopt;
  const std::string& bundle = *application->bundleIdentifier;
  return DiscoveredApp{bundle, application->localizedName.value_or(bundle), *process};
}

void MenuBarWalk::collectSystemControl(AccessibilityElement& element, const std::optional<Rect>& frame) {
  const std::optional<std::string> identifier = attribute<std::string>(element, "AXIdentifier");
  if (!identifier || !identifier->starts_with(systemControlPrefix)) return;
  if (frame && std::fabs(frame->height) <= greatestControlHeight) systemFrames_.push_back(*frame);
}

}  // namespace orvo
