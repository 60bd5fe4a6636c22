#include "support/MemoryEventTaps.h"

#include <algorithm>
#include <utility>

namespace orvo {
namespace {

class MemoryPort : public EventTapPort {
 public:
  MemoryPort(std::shared_ptr<MemoryEventTaps::Tap> tap, bool sourceFails)
      : tap_(std::move(tap)), sourceFails_(sourceFails) {}
  ~MemoryPort() override { tap_->valid = false; }
  MemoryPort(const MemoryPort&) = delete;
  MemoryPort& operator=(const MemoryPort&) = delete;

  bool addToMainRunLoop() override { return tap_->inRunLoop = !sourceFails_; }
  void removeFromMainRunLoop() override { tap_->inRunLoop = false; }
  void enable() override { tap_->enabled = true; }
  void invalidate() override { tap_->valid = false; }
  void setRegionsOfInterest(const std::vector<Rect>& regions) override { tap_->regions = regions; }

 private:
  std::shared_ptr<MemoryEventTaps::Tap> tap_;
  bool sourceFails_;
};

bool isDown(EventType type) { return type == EventType::leftMouseDown || type == EventType::rightMouseDown; }

EventType upOf(EventType down) {
  return down == EventType::leftMouseDown ? EventType::leftMouseUp : EventType::rightMouseUp;
}

}  // namespace

std::unique_ptr<Event> MemoryEvent::copy() const {
  if (copyFails) return nullptr;
  return std::make_unique<MemoryEvent>(*this);
}

std::int64_t MemoryEvent::integerValueField(std::uint32_t field) const {
  const auto found = fields.find(field);
  return found == fields.end() ? 0 : found->second;
}

std::unique_ptr<EventTapPort> MemoryEventTaps::create(EventTapLocation location, EventTapPlacement placement,
                                                      EventTapOptions options, std::uint64_t mask,
                                                      EventTapCallback callback, void* userInfo) {
  if (creationFails) return nullptr;
  auto tap = std::make_shared<Tap>();
  tap->location = location;
  tap->placement = placement;
  tap->options = options;
  tap->mask = mask;
  tap->callback = callback;
  tap->userInfo = userInfo;
  taps_.push_back(tap);
  return std::make_unique<MemoryPort>(std::move(tap), sourceFails);
}

void MemoryEventTaps::post(EventTapLocation location, const Event& event) {
  postedAt_.push_back(location);
  posted_.push_back(dynamic_cast<const MemoryEvent&>(event));
}

bool MemoryEventTaps::send(MemoryEvent& event) {
  if (!concerns(event)) return true;
  ++asked_;
  const std::shared_ptr<Tap> tap = taps_.back();
  return tap->callback(event.type, &event, tap->userInfo) != nullptr;
}

void MemoryEventTaps::disable(EventType reason) {
  const std::shared_ptr<Tap> tap = taps_.back();
  tap->enabled = false;
  if (!tap->valid || !tap->inRunLoop) return;
  ++asked_;
  tap->callback(reason, nullptr, tap->userInfo);
}

bool MemoryEventTaps::concerns(const MemoryEvent& event) {
  if (taps_.empty()) return false;
  const Tap& tap = *taps_.back();
  const std::uint64_t bit = std::uint64_t{1} << static_cast<std::uint32_t>(event.type);
  if (!tap.valid || !tap.enabled || !tap.inRunLoop || (tap.mask & bit) == 0) return false;
  if (!honoursRegions) return true;
  if (!isDown(event.type)) return awaitedUps_.erase(event.type) > 0;
  const bool inside = std::any_of(tap.regions.begin(), tap.regions.end(),
                                  [&event](const Rect& region) { return region.contains(event.point); });
  if (inside) awaitedUps_.insert(upOf(event.type));
  return inside;
}

}  // namespace orvo
