#include "platform/linux/session/AgentTree.h"

#include "platform/linux/AgentProtocol.h"
#include "platform/linux/session/SessionBus.h"

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
  int parent = -1;
  AgentTree::Element element;
};

// A screen of X11 has coordinates of 16 bits.
bool isOnScreen(const Rect& frame) {
  constexpr double limit = 32767;
  return std::ranges::all_of(std::array{frame.x, frame.y, frame.width, frame.height},
                             [](double value) { return std::fabs(value) <= limit; });
}

Row readRow(const QDBusArgument& list) {
  Row row;
  QString identifier;
  bool hasFrame = false;
  Rect frame;
  list.beginStructure();
  list >> row.parent >> row.element.process >> identifier >> hasFrame;
  list.beginStructure();
  list >> frame.x >> frame.y >> frame.width >> frame.height;
  list.endStructure();
  list.endStructure();
  row.element.identifier = identifier.toStdString();
  if (hasFrame && isOnScreen(frame)) row.element.frame = frame;
  return row;
}

}  // namespace

AgentTree::AgentTree(QDBusConnection bus, std::int32_t processIdentifier,
                     std::function<void(const std::vector<Element>&)> noted)
    : bus_(std::move(bus)), process_(processIdentifier), noted_(std::move(noted)), limit_(defaultLimit) {}

const std::vector<AgentTree::Element>& AgentTree::elements() {
  if (elements_) return *elements_;
  elements_ = ask(bus_, limit_);
  if (!elements_->empty() && elements_->front().process != process_) elements_->clear();
  if (noted_) noted_(*elements_);
  return *elements_;
}

std::vector<AgentTree::Element> AgentTree::ask(const QDBusConnection& bus, std::chrono::milliseconds limit) {
  QDBusMessage question = session_bus::agentCall("Tree");
  question.setAutoStartService(false);
  return decode(bus.call(question, QDBus::Block, static_cast<int>(limit.count())));
}

std::vector<AgentTree::Element> AgentTree::decode(const QDBusMessage& reply) {
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("a(iisb(dddd))")) return {};
  std::vector<Element> elements;
  // Read to its end: Qt leaks a list that is left in the middle.
  bool isTree = true;
  const auto list = reply.arguments().constFirst().value<QDBusArgument>();
  for (list.beginArray(); !list.atEnd();) {
    Row row = readRow(list);
    const std::size_t index = elements.size();
    const auto parent = static_cast<std::size_t>(row.parent);  // huge for a negative one
    isTree = isTree && (index == 0 ? row.parent == -1 : parent < index);
    if (!isTree || index == mostElements) continue;
    if (index > 0) elements[parent].children.push_back(index);
    elements.push_back(std::move(row.element));
  }
  list.endArray();
  return isTree ? elements : std::vector<Element>();
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
