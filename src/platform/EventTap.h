// Session-wide mouse events, in the shape of Quartz event services. Main thread only: the callback
// is called there, and whoever calls from elsewhere has made a programming error.
#pragma once

#include "core/Rect.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace orvo {

// The numbers are Quartz's own. Adapters may pass others.
enum class EventType : std::uint32_t {
  leftMouseDown = 1,
  leftMouseUp = 2,
  rightMouseDown = 3,
  rightMouseUp = 4,
  tapDisabledByTimeout = 0xFFFFFFFE,
  tapDisabledByUserInput = 0xFFFFFFFF,
};

// Number of the integer field that a program may fill freely in events it posts.
inline constexpr std::uint32_t eventSourceUserData = 42;

class Event {
 public:
  virtual ~Event() = default;

  virtual Point location() const = 0;
  // Absent when no copy can be made.
  virtual std::unique_ptr<Event> copy() const = 0;
  // Zero for a field that was never set.
  virtual std::int64_t integerValueField(std::uint32_t field) const = 0;
  virtual void setIntegerValueField(std::uint32_t field, std::int64_t value) = 0;
};

// A made tap; destroying it invalidates it.
class EventTapPort {
 public:
  virtual ~EventTapPort() = default;

  // Makes a run-loop source and adds it to the main run loop in its common modes; false when no
  // source could be made. Without it the callback is never called.
  virtual bool addToMainRunLoop() = 0;
  virtual void removeFromMainRunLoop() = 0;
  // False where the system has ended the tap for good, and only a new one would be asked again.
  virtual bool enable() = 0;
  virtual void invalidate() = 0;

  // A hint: while set, only mouse downs inside these regions and the ups that follow them concern
  // the callback, so the adapter may let all others pass without asking. Systems that show a tap
  // every event ignore it. A new tap has no regions.
  virtual void setRegionsOfInterest(const std::vector<Rect>& regions) = 0;
};

enum class EventTapLocation : std::uint32_t { session = 1 };
enum class EventTapPlacement : std::uint32_t { headInsert = 0 };
enum class EventTapOptions : std::uint32_t { activeFilter = 0 };

// Returns the event to pass on, which is the given one, or null to drop it. The event lives for the
// call only.
using EventTapCallback = Event* (*)(EventType type, Event* event, void* userInfo);

class EventTaps {
 public:
  virtual ~EventTaps() = default;

  // Bit n of `mask` asks for events of type n. Absent when the tap cannot be made, typically for
  // lack of the Accessibility permission. `userInfo` is handed to the callback as it is and must
  // outlive the port's validity.
  virtual std::unique_ptr<EventTapPort> create(EventTapLocation location, EventTapPlacement placement,
                                               EventTapOptions options, std::uint64_t mask, EventTapCallback callback,
                                               void* userInfo) = 0;

  // Puts the event into the session's stream. The event's fields travel with it, so that a tap
  // recognises what was posted.
  virtual void post(EventTapLocation location, const Event& event) = 0;
};

}  // namespace orvo
