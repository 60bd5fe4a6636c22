// Event taps over a stream that a test feeds event by event. Main thread only, as the real ones.
#pragma once

#include "platform/EventTap.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace orvo {

class MemoryEvent : public Event {
 public:
  MemoryEvent(EventType kind, Point location, int number = 0) : type(kind), point(location), serial(number) {}

  Point location() const override { return point; }
  std::unique_ptr<Event> copy() const override { return copyFails ? nullptr : std::make_unique<MemoryEvent>(*this); }
  std::int64_t integerValueField(std::uint32_t field) const override {
    const auto found = fields.find(field);
    return found == fields.end() ? 0 : found->second;
  }
  void setIntegerValueField(std::uint32_t field, std::int64_t value) override { fields[field] = value; }

  EventType type;
  Point point;
  // Travels with copies, so that a test can tell which event was posted.
  int serial;
  bool copyFails = false;
  std::map<std::uint32_t, std::int64_t> fields;
};

class MemoryEventTaps : public EventTaps {
 public:
  // What is known of a tap, also after its port has gone.
  struct Tap {
    EventTapLocation location{};
    EventTapPlacement placement{};
    EventTapOptions options{};
    std::uint64_t mask = 0;
    EventTapCallback callback = nullptr;
    void* userInfo = nullptr;
    bool inRunLoop = false;
    bool enabled = false;
    bool valid = true;
    std::vector<Rect> regions{};
  };

  bool creationFails = false;
  bool sourceFails = false;
  // Asks about mouse downs in the regions of interest alone, and about the ups that follow them.
  bool honoursRegions = false;

  std::vector<MemoryEvent> posted;
  // How often a callback was called.
  int asked = 0;

  // The newest one; null when none was ever made.
  const Tap* tap() const { return taps_.empty() ? nullptr : taps_.back().get(); }
  std::size_t created() const { return taps_.size(); }

  // Sends one event through the newest tap: true when the session gets it. A tap that is disabled, not
  // in the run loop or not interested is not asked.
  bool send(MemoryEvent& event) { return !concerns(event) || ask(event.type, &event) != nullptr; }
  // Takes the tap out of service and tells it so; there is no event to go with it.
  void disable(EventType reason) {
    taps_.back()->enabled = false;
    if (tap()->valid && tap()->inRunLoop) ask(reason, nullptr);
  }

  std::unique_ptr<EventTapPort> create(EventTapLocation location, EventTapPlacement placement, EventTapOptions options,
                                       std::uint64_t mask, EventTapCallback callback, void* userInfo) override {
    if (creationFails) return nullptr;
    taps_.push_back(std::make_shared<Tap>(Tap{location, placement, options, mask, callback, userInfo}));
    return std::make_unique<Port>(*this, taps_.back());
  }
  void post(EventTapLocation location, const Event& event) override {
    if (location == EventTapLocation::session) posted.push_back(dynamic_cast<const MemoryEvent&>(event));
  }

 private:
  class Port : public EventTapPort {
   public:
    Port(const MemoryEventTaps& taps, std::shared_ptr<Tap> tap) : taps_(taps), tap_(std::move(tap)) {}
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;
    ~Port() override { tap_->valid = false; }
    bool addToMainRunLoop() override { return tap_->inRunLoop = !taps_.sourceFails; }
    void removeFromMainRunLoop() override { tap_->inRunLoop = false; }
    void enable() override { tap_->enabled = true; }
    void invalidate() override { tap_->valid = false; }
    void setRegionsOfInterest(const std::vector<Rect>& regions) override { tap_->regions = regions; }

   private:
    const MemoryEventTaps& taps_;
    std::shared_ptr<Tap> tap_;
  };

  Event* ask(EventType type, MemoryEvent* event) {
    ++asked;
    return tap()->callback(type, event, tap()->userInfo);
  }
  bool concerns(const MemoryEvent& event) {
    const Tap* const at = tap();
    const std::uint64_t bit = std::uint64_t{1} << static_cast<std::uint32_t>(event.type);
    if (at == nullptr || !at->valid || !at->enabled || !at->inRunLoop || (at->mask & bit) == 0) return false;
    if (!honoursRegions) return true;
    const bool left = event.type == EventType::leftMouseDown;
    if (!left && event.type != EventType::rightMouseDown) return awaitedUps_.erase(event.type) > 0;
    const bool inside = std::any_of(at->regions.begin(), at->regions.end(),
                                    [&](const Rect& region) { return region.contains(event.point); });
    if (inside) awaitedUps_.insert(left ? EventType::leftMouseUp : EventType::rightMouseUp);
    return inside;
  }

  std::vector<std::shared_ptr<Tap>> taps_;
  std::set<EventType> awaitedUps_;
};

}  // namespace orvo
