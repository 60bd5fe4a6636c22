// One event tap over a stream that a test feeds event by event. Main thread only, as the real ones.
#pragma once

#include "platform/EventTap.h"

namespace orvo {

struct MemoryEvent : Event {
  MemoryEvent(EventType kind, Point location, int number = 0) : type(kind), point(location), serial(number) {}

  EventType type;
  Point point;
  int serial;  // travels with copies
  std::int64_t userData = 0;
  bool copyFails = false;

  Point location() const override { return point; }
  std::unique_ptr<Event> copy() const override { return copyFails ? nullptr : std::make_unique<MemoryEvent>(*this); }
  std::int64_t integerValueField(std::uint32_t key) const override { return key == eventSourceUserData ? userData : 0; }
  void setIntegerValueField(std::uint32_t field, std::int64_t value) override {
    if (field == eventSourceUserData) userData = value;
  }
};

struct MemoryEventTaps : EventTaps {
  bool creationFails = false;
  std::vector<MemoryEvent> posted;
  // Of the newest tap, also after its port has gone.
  std::uint64_t mask = 0;
  EventTapCallback callback = nullptr;
  void* userInfo = nullptr;
  bool inRunLoop = false, enabled = false, valid = false, ended = false;
  std::vector<Rect> regions;

  // Sends one event through the tap: true when the session gets it. A tap that is disabled, not in the run
  // loop or not interested is not asked. Regions are ignored, as by systems that show every event.
  bool send(MemoryEvent& event) {
    const bool asks = valid && enabled && inRunLoop && ((mask >> static_cast<std::uint32_t>(event.type)) & 1U) != 0;
    return !asks || callback(event.type, &event, userInfo) != nullptr;
  }
  bool press(Point point) {
    MemoryEvent down(EventType::leftMouseDown, point);
    return send(down);
  }
  // Takes the tap, if there is one, out of service and tells it so; there is no event to go with it.
  void disable(EventType reason) {
    enabled = false;
    if (valid && inRunLoop) callback(reason, nullptr, userInfo);
  }

  struct Port : EventTapPort {
    explicit Port(MemoryEventTaps& of) : taps(of) {}
    ~Port() override { taps.valid = false; }
    bool addToMainRunLoop() override { return taps.inRunLoop = true; }
    void removeFromMainRunLoop() override { taps.inRunLoop = false; }
    bool enable() override { return taps.enabled = !taps.ended; }
    void invalidate() override { taps.valid = false; }
    void setRegionsOfInterest(const std::vector<Rect>& newRegions) override { taps.regions = newRegions; }
    MemoryEventTaps& taps;
  };
  std::unique_ptr<EventTapPort> create(EventTapLocation, EventTapPlacement, EventTapOptions, std::uint64_t newMask,
                                       EventTapCallback newCallback, void* newUserInfo) override {
    if (creationFails) return nullptr;
    mask = newMask, callback = newCallback, userInfo = newUserInfo;
    inRunLoop = enabled = ended = false, valid = true, regions.clear();
    return std::make_unique<Port>(*this);
  }
  void post(EventTapLocation, const Event& sent) override { posted.push_back(dynamic_cast<const MemoryEvent&>(sent)); }
};

}  // namespace orvo
