// Event taps over a stream that a test feeds event by event. Main thread only, as the real ones.
#pragma once

#include "platform/EventTap.h"

#include <algorithm>
#include <set>
#include <utility>

namespace orvo {

// Has one field, the one that a program may fill.
class MemoryEvent : public Event {
 public:
  MemoryEvent(EventType kind, Point location, int number = 0) : type(kind), point(location), serial(number) {}

  Point location() const override { return point; }
  std::unique_ptr<Event> copy() const override { return copyFails ? nullptr : std::make_unique<MemoryEvent>(*this); }
  std::int64_t integerValueField(std::uint32_t field) const override { return field == 42 ? userData : 0; }
  void setIntegerValueField(std::uint32_t field, std::int64_t value) override {
    if (field == 42) userData = value;
  }

  EventType type;
  Point point;
  // Travels with copies, so that a test can tell which event was posted.
  int serial;
  std::int64_t userData = 0;
  bool copyFails = false;
};

class MemoryEventTaps : public EventTaps {
 public:
  // What is known of a tap, also after its port has gone.
  struct Tap {
    std::uint64_t mask;
    EventTapCallback callback;
    void* userInfo;
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
  std::vector<std::shared_ptr<Tap>> created;

  // The newest one; null when none was ever made.
  Tap* tap() const { return created.empty() ? nullptr : created.back().get(); }

  // Sends one event through the newest tap: true when the session gets it. A tap that is disabled, not
  // in the run loop or not interested is not asked.
  bool send(MemoryEvent& event) {
    const Tap* const at = tap();
    if (at == nullptr || !at->valid || !at->enabled || !at->inRunLoop) return true;
    if (((at->mask >> static_cast<std::uint32_t>(event.type)) & 1U) == 0) return true;
    if (honoursRegions && !inRegions(event, at->regions)) return true;
    return at->callback(event.type, &event, at->userInfo) != nullptr;
  }
  // Takes the tap out of service and tells it so; there is no event to go with it.
  void disable(EventType reason) {
    tap()->enabled = false;
    if (tap()->valid && tap()->inRunLoop) tap()->callback(reason, nullptr, tap()->userInfo);
  }

  std::unique_ptr<EventTapPort> create(EventTapLocation, EventTapPlacement, EventTapOptions, std::uint64_t mask,
                                       EventTapCallback callback, void* userInfo) override {
    if (creationFails) return nullptr;
    created.push_back(std::make_shared<Tap>(Tap{mask, callback, userInfo}));
    return std::make_unique<Port>(sourceFails, created.back());
  }
  void post(EventTapLocation, const Event& event) override {
    posted.push_back(dynamic_cast<const MemoryEvent&>(event));
  }

 private:
  struct Port : EventTapPort {
    Port(bool fails, std::shared_ptr<Tap> of) : sourceFails(fails), tap(std::move(of)) {}
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;
    ~Port() override { tap->valid = false; }
    bool addToMainRunLoop() override { return tap->inRunLoop = !sourceFails; }
    void removeFromMainRunLoop() override { tap->inRunLoop = false; }
    void enable() override { tap->enabled = true; }
    void invalidate() override { tap->valid = false; }
    void setRegionsOfInterest(const std::vector<Rect>& regions) override { tap->regions = regions; }
    const bool sourceFails;
    const std::shared_ptr<Tap> tap;
  };

  bool inRegions(const MemoryEvent& event, const std::vector<Rect>& regions) {
    const bool left = event.type == EventType::leftMouseDown;
    if (!left && event.type != EventType::rightMouseDown) return awaitedUps_.erase(event.type) > 0;
    const bool inside =
        std::any_of(regions.begin(), regions.end(), [&](const Rect& region) { return region.contains(event.point); });
    if (inside) awaitedUps_.insert(left ? EventType::leftMouseUp : EventType::rightMouseUp);
    return inside;
  }

  std::set<EventType> awaitedUps_;
};

}  // namespace orvo
