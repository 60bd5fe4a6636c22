// One copy of the agent's tree of elements, brought over the bus in one call when an element of it is
// first read. Owned by its elements; any thread, one at a time.
#pragma once

#include "platform/Accessibility.h"
#include "platform/linux/ControlPlaces.h"
#include "platform/linux/session/AgentConnection.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvo {

class AgentTree {
 public:
  struct Element {
    std::int32_t process = 0;
    std::string identifier;  // empty for none
    std::optional<Rect> frame;
    std::vector<std::size_t> children;
  };

  // Answers no elements unless the root belongs to this process. `noted` is told of what came, once.
  AgentTree(std::shared_ptr<AgentConnection> agent, std::int32_t processIdentifier,
            std::function<void(const std::vector<Element>&)> noted = {});

  void setLimit(std::chrono::milliseconds limit) { limit_ = limit; }

  std::int32_t processIdentifier() const { return process_; }

  // The root first; empty when the agent did not answer in time or not in the agreed form. The bus
  // is asked once.
  const std::vector<Element>& elements();

  // What the agent answers now; as elements() where it does not. Waits for at most so long.
  static std::vector<Element> ask(AgentConnection& agent, std::chrono::milliseconds limit);

  // Empty for a reply of any other form, one whose parents do not come before their children, and none.
  static std::vector<Element> decode(sd_bus_message* reply);

  // The system controls among them, pieces left out.
  static std::vector<ControlPlace> controls(const std::vector<Element>& elements);

 private:
  std::shared_ptr<AgentConnection> agent_;
  std::int32_t process_;
  std::function<void(const std::vector<Element>&)> noted_;
  std::chrono::milliseconds limit_;
  std::optional<std::vector<Element>> elements_;
};

// The root of the tree, as Accessibility hands it out.
AccessibilityElementRef rootElement(std::shared_ptr<AgentTree> tree);

}  // namespace orvo
