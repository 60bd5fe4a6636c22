#include "platform/linux/session/AgentTree.h"

#include "platform/linux/AgentProtocol.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace orvo {

namespace {

// For callers that set none.
constexpr std::chrono::milliseconds defaultLimit{2000};

// Ten times what a scan looks at.
constexpr std::size_t mostElements = 4000;

class TreeElement : public AccessibilityElement {
 public:
  TreeElement(std::shared_ptr<AgentTree> tree, std::size_t index) : tree_(std::move(tree)), index_(index) {}

  void setMessagingTimeout(float seconds) override {
    const double milliseconds = std::clamp(static_cast<double>(seconds) * 1000.0, 1.0, 60000.0);
    tree_->setLimit(std::chrono::milliseconds(std::lround(milliseconds)));
  }

  std::optional<std::int32_t> processIdentifier() override {
    if (index_ == 0) return tree_->processIdentifier();
    return tree_->elements().at(index_).process;
  }

  std::optional<AttributeValue> copyAttributeValue(std::string_view name) override {
    const auto& elements = tree_->elements();
    if (index_ >= elements.size()) return std::nullopt;
    const AgentTree::Element& self = elements[index_];
    if (name == "AXFrame" && self.frame) return AttributeValue(*self.frame);
    if (name == "AXIdentifier" && !self.identifier.empty()) return AttributeValue(self.identifier);
    if (name == "AXChildren") return AttributeValue(children(self));
    return std::nullopt;
  }

 private:
  std::vector<AccessibilityElementRef> children(const AgentTree::Element& self) const {
    std::vector<AccessibilityElementRef> list;
    list.reserve(self.children.size());
    for (const std::size_t child : self.children) list.push_back(std::make_shared<TreeElement>(tree_, child));
    return list;
  }

  std::shared_ptr<AgentTree> tree_;
  std::size_t index_;
};

struct Row {
  std::int32_t parent = -1;
  AgentTree::Element element;
};

// A screen of X11 has coordinates of 16 bits.
bool isOnScreen(const Rect& frame) {
  constexpr double limit = 32767;
  return std::ranges::all_of(std::array{frame.x, frame.y, frame.width, frame.height},
                             [](double value) { return std::fabs(value) <= limit; });
}

// As sd-bus reads: 0 at the end, negative for what is no row.
int readRow(sd_bus_message* reply, Row& row) {
  const char* identifier = nullptr;
  int hasFrame = 0;
  Rect frame;
  const int read = sd_bus_message_read(reply, agent_protocol::treeForm + 1, &row.parent, &row.element.process,
                                       &identifier, &hasFrame, &frame.x, &frame.y, &frame.width, &frame.height);
  if (read <= 0) return read;
  row.element.identifier = identifier;
  if (hasFrame != 0 && isOnScreen(frame)) row.element.frame = frame;
  return read;
}

}  // namespace

AgentTree::AgentTree(std::shared_ptr<AgentConnection> agent, std::int32_t processIdentifier,
                     std::function<void(const std::vector<Element>&)> noted)
    : agent_(std::move(agent)), process_(processIdentifier), noted_(std::move(noted)), limit_(defaultLimit) {}

const std::vector<AgentTree::Element>& AgentTree::elements() {
  if (elements_) return *elements_;
  elements_ = ask(*agent_, limit_);
  if (!elements_->empty() && elements_->front().process != process_) elements_->clear();
  if (noted_) noted_(*elements_);
  return *elements_;
}

std::vector<AgentTree::Element> AgentTree::ask(AgentConnection& agent, std::chrono::milliseconds limit) {
  return decode(agent.ask("Tree", limit).get());
}

std::vector<AgentTree::Element> AgentTree::decode(sd_bus_message* reply) {
  std::vector<Element> elements;
  if (reply == nullptr || sd_bus_message_has_signature(reply, agent_protocol::treeForm) <= 0 ||
      sd_bus_message_is_method_error(reply, nullptr) > 0 ||
      sd_bus_message_enter_container(reply, 'a', agent_protocol::treeForm + 1) <= 0)
    return elements;
  int read = 0;
  for (Row row; elements.size() < mostElements && (read = readRow(reply, row)) > 0; row = {}) {
    const std::size_t index = elements.size();
    const auto parent = static_cast<std::size_t>(row.parent);  // huge for a negative one
    if (index == 0 ? row.parent != -1 : parent >= index) return {};
    if (index > 0) elements[parent].children.push_back(index);
    elements.push_back(std::move(row.element));
  }
  return read < 0 ? std::vector<Element>() : elements;
}

std::vector<ControlPlace> AgentTree::controls(const std::vector<Element>& elements) {
  std::vector<ControlPlace> places;
  if (elements.empty()) return places;
  std::vector<Rect> windows;
  for (const std::size_t child : elements.front().children) {
    const Element& window = elements[child];
    if (!window.frame) continue;
    const auto alike = std::ranges::count_if(windows, [&](const Rect& other) {
      return other.width == window.frame->width && other.height == window.frame->height;
    });
    windows.push_back(*window.frame);
    for (const std::size_t control : window.children) {
      const Element& element = elements[control];
      if (!element.frame || !element.identifier.starts_with(agent_protocol::controlPrefix)) continue;
      places.push_back({element.identifier, *element.frame, {*window.frame, static_cast<std::size_t>(alike)}});
    }
  }
  return places;
}

AccessibilityElementRef rootElement(std::shared_ptr<AgentTree> tree) {
  return std::make_shared<TreeElement>(std::move(tree), 0);
}

}  // namespace orvo
