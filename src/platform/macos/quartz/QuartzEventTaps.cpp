#include "platform/macos/quartz/QuartzEventTaps.h"

#include "platform/macos/quartz/Owned.h"

#include <CoreGraphics/CoreGraphics.h>

#include <utility>

namespace orvo {

namespace {

// Null for the news that a tap was disabled, which may come without an event.
class QuartzEvent final : public Event {
 public:
  explicit QuartzEvent(Owned<CGEventRef> event) : event_(std::move(event)) {}

  Point location() const override;
  std::unique_ptr<Event> copy() const override;
  std::int64_t integerValueField(std::uint32_t field) const override;
  void setIntegerValueField(std::uint32_t field, std::int64_t value) override;

  CGEventRef reference() const { return event_.get(); }

 private:
  Owned<CGEventRef> event_;
};

Point QuartzEvent::location() const {
  const CGPoint place = event_ ? CGEventGetLocation(event_.get()) : CGPoint{};
  return {place.x, place.y};
}

std::unique_ptr<Event> QuartzEvent::copy() const {
  Owned<CGEventRef> copied(event_ ? CGEventCreateCopy(event_.get()) : nullptr);
  return copied ? std::make_unique<QuartzEvent>(std::move(copied)) : nullptr;
}

std::int64_t QuartzEvent::integerValueField(std::uint32_t field) const {
  return event_ ? CGEventGetIntegerValueField(event_.get(), static_cast<CGEventField>(field)) : 0;
}

void QuartzEvent::setIntegerValueField(std::uint32_t field, std::int64_t value) {
  if (event_) CGEventSetIntegerValueField(event_.get(), static_cast<CGEventField>(field), value);
}

// What the system hands back with each event.
struct Receiver {
  EventTapCallback callback;
  void* userInfo;
};

// To let an event pass the system wants the very pointer back that it gave, which stays the system's.
CGEventRef receive(CGEventTapProxy /*proxy*/, CGEventType type, CGEventRef event, void* info) {
  const Receiver& receiver = *static_cast<const Receiver*>(info);
  QuartzEvent wrapped(Owned<CGEventRef>::retaining(event));
  const Event* const passed = receiver.callback(static_cast<EventType>(type), &wrapped, receiver.userInfo);
  return passed != nullptr ? event : nullptr;
}

class QuartzEventTapPort final : public EventTapPort {
 public:
  explicit QuartzEventTapPort(Receiver receiver) : receiver_(receiver) {}
  ~QuartzEventTapPort() override { invalidate(); }
  QuartzEventTapPort(const QuartzEventTapPort&) = delete;
  QuartzEventTapPort& operator=(const QuartzEventTapPort&) = delete;

  bool open(CGEventTapLocation location, CGEventTapPlacement placement, CGEventTapOptions options, CGEventMask mask) {
    port_ = Owned(CGEventTapCreate(location, placement, options, mask, receive, &receiver_));
    return static_cast<bool>(port_);
  }

  bool addToMainRunLoop() override;
  void removeFromMainRunLoop() override;
  bool enable() override;
  void invalidate() override;
  // The system shows a tap every event.
  void setRegionsOfInterest(const std::vector<Rect>& /*regions*/) override {}

 private:
  Receiver receiver_;
  Owned<CFMachPortRef> port_;
  Owned<CFRunLoopSourceRef> source_;
};

bool QuartzEventTapPort::addToMainRunLoop() {
  if (!port_) return false;
  source_ = Owned(CFMachPortCreateRunLoopSource(kCFAllocatorDefault, port_.get(), 0));
  if (!source_) return false;
  CFRunLoopAddSource(CFRunLoopGetMain(), source_.get(), kCFRunLoopCommonModes);
  return true;
}

void QuartzEventTapPort::removeFromMainRunLoop() {
  if (!source_) return;
  CFRunLoopRemoveSource(CFRunLoopGetMain(), source_.get(), kCFRunLoopCommonModes);
  source_.reset();
}

bool QuartzEventTapPort::enable() {
  if (!port_) return false;
  CGEventTapEnable(port_.get(), true);
  return CFMachPortIsValid(port_.get()) != 0;
}

// Without a port the system cannot call any more; a source that was left behind goes with it.
void QuartzEventTapPort::invalidate() {
  removeFromMainRunLoop();
  if (!port_) return;
  CFMachPortInvalidate(port_.get());
  port_.reset();
}

}  // namespace

std::unique_ptr<EventTapPort> QuartzEventTaps::create(EventTapLocation location, EventTapPlacement placement,
                                                      EventTapOptions options, std::uint64_t mask,
                                                      EventTapCallback callback, void* userInfo) {
  auto port = std::make_unique<QuartzEventTapPort>(Receiver{callback, userInfo});
  const bool open = port->open(static_cast<CGEventTapLocation>(location), static_cast<CGEventTapPlacement>(placement),
                               static_cast<CGEventTapOptions>(options), static_cast<CGEventMask>(mask));
  if (!open) return nullptr;
  return port;
}

void QuartzEventTaps::post(EventTapLocation location, const Event& event) {
  CGEventRef reference = static_cast<const QuartzEvent&>(event).reference();
  if (reference != nullptr) CGEventPost(static_cast<CGEventTapLocation>(location), reference);
}

}  // namespace orvo
