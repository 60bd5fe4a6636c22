// Event taps over a stream that a test feeds event by event. Main thread only, as the real ones.
#pragma once

#include "platform/EventTap.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace orvo {

class MemoryEvent : public Event {
 public:
  MemoryEvent(EventType kind, Point location) : type(kind), point(location) {}

  Point location() const override { return point; }
  std::unique_ptr<Event> copy() const override;
  std::int64_t integerValueField(std::uint32_t field) const override;
  void setIntegerValueField(std::uint32_t field, std::int64_t value) override { fields[field] = value; }

  EventType type;
  Point point;
  // Travels with copies, so that a test can tell which event was posted.
  int serial = 0;
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
    std::vector<Rect> regions;
  };

  std::unique_ptr<EventTapPort> create(EventTapLocation location, EventTapPlacement placement, EventTapOptions options,
                                       std::uint64_t mask, EventTapCallback callback, void* userInfo) override;
  void post(EventTapLocation location, const Event& event) override;

  // Sends one event through the newest tap: true when the session gets it. A tap that is disabled, not
  // in the run loop or not interested is not asked.
  bool send(MemoryEvent& event);
  // Takes the tap out of service and tells it so; there is no event to go with it.
  void disable(EventType reason);

  bool creationFails = false;
  bool sourceFails = false;
  // Asks about mouse downs in the regions of interest alone, and about the ups that follow them.
  bool honoursRegions = false;

  // The newest one; null when none was ever made.
  const Tap* tap() const { return taps_.empty() ? nullptr : taps_.back().get(); }
  std::size_t created() const { return taps_.size(); }
  const std::vector<MemoryEvent>& posted() const { return posted_; }
  const std::vector<EventTapLocation>& postedAt() const { return postedAt_; }
  // How often a callback was called.
  int asked() const { return asked_; }

 private:
  bool concerns(const MemoryEvent& event);

  std::vector<std::shared_ptr<Tap>> taps_;
  std::vector<MemoryEvent> posted_;
  std::vector<EventTapLocation> postedAt_;
  std::set<EventType> awaitedUps_;
  int asked_ = 0;
};

}  // namespace orvo
