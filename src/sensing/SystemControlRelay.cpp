#include "sensing/SystemControlRelay.h"

#include "platform/MainQueue.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace orvo {
namespace {

// "QUILLET" in ASCII; tells our own replays from a person's clicks.
constexpr std::int64_t replayMarker = 0x5155494C4C4554;

// What a panel needs to show its revealed items again before the click may reach it.
constexpr std::chrono::milliseconds replayDelay{180};

constexpr std::uint64_t maskBit(EventType type) { return std::uint64_t{1} << static_cast<std::uint32_t>(type); }
constexpr std::uint64_t eventsOfInterest = maskBit(EventType::leftMouseDown) | maskBit(EventType::leftMouseUp) |
                                           maskBit(EventType::rightMouseDown) | maskBit(EventType::rightMouseUp);

bool isDisabled(EventType type) {
  return type == EventType::tapDisabledByTimeout || type == EventType::tapDisabledByUserInput;
}

bool isMouseDown(EventType type) { return type == EventType::leftMouseDown || type == EventType::rightMouseDown; }

}  // namespace

std::shared_ptr<SystemControlRelay> SystemControlRelay::make(EventTaps& taps, MainQueue& queue) {
  return std::shared_ptr<SystemControlRelay>(new SystemControlRelay(taps, queue));
}

void SystemControlRelay::install() {
  if (tap_) return;
  tap_ = taps_.create(EventTapLocation::session, EventTapPlacement::headInsert, EventTapOptions::activeFilter,
                      eventsOfInterest, &SystemControlRelay::tapCallback, this);
  if (!tap_) return;
  inRunLoop_ = tap_->addToMainRunLoop();
  updateRegionsOfInterest();
  tap_->enable();
}

void SystemControlRelay::stop() {
  flush();
  if (inRunLoop_) tap_->removeFromMainRunLoop();
  if (tap_) tap_->invalidate();
  inRunLoop_ = false;
  tap_.reset();
}

void SystemControlRelay::setSystemFrames(std::vector<Rect> frames) {
  systemFrames_ = std::move(frames);
  if (isConcealed_) updateRegionsOfInterest();
}

void SystemControlRelay::setConcealed(bool concealed) {
  if (std::exchange(isConcealed_, concealed) != concealed) updateRegionsOfInterest();
}

Event* SystemControlRelay::tapCallback(EventType type, Event* event, void* userInfo) {
  auto* relay = static_cast<SystemControlRelay*>(userInfo);
  if (relay == nullptr) return event;
  // Nothing here is locked: to go on would corrupt what the main thread is using.
  if (!relay->queue_.isMainThread()) std::abort();
  return relay->receive(type, event);
}

Event* SystemControlRelay::receive(EventType type, Event* event) {
  if (isDisabled(type)) {
    recover();
    return event;
  }
  if (event->integerValueField(eventSourceUserData) == replayMarker) return event;
  if (heldUpType_ == type) {
    if (std::unique_ptr<Event> copy = event->copy()) {
      finishClick(std::move(copy));
      return nullptr;
    }
  }
  if (!isMouseDown(type) || !isConcealed_ || !hitsSystemControl(event->location())) return event;
  std::unique_ptr<Event> copy = event->copy();
  if (!copy) return event;
  intercept(type, std::move(copy));
  return nullptr;
}

// The system has stopped asking us, so a click may have gone missing: better to show everything. A tap that has ended
// makes room for a new one.
void SystemControlRelay::recover() {
  reveal();
  flush();
  if (tap_ && !tap_->enable()) stop();
}

void SystemControlRelay::finishClick(std::unique_ptr<Event> copy) {
  heldUpType_.reset();
  if (waitingToReplay_) {
    pending_.push_back(std::move(copy));
  } else {
    replay(*copy);
  }
}

void SystemControlRelay::intercept(EventType type, std::unique_ptr<Event> copy) {
  pending_.clear();
  pending_.push_back(std::move(copy));
  heldUpType_ = type == EventType::leftMouseDown ? EventType::leftMouseUp : EventType::rightMouseUp;
  waitingToReplay_ = true;
  reveal();
  queue_.runAfter(replayDelay, [weak = weak_from_this()] {
    if (const auto relay = weak.lock()) relay->flush();
  });
}

bool SystemControlRelay::hitsSystemControl(Point location) const {
  return std::any_of(systemFrames_.begin(), systemFrames_.end(),
                     [location](const Rect& frame) { return frame.contains(location); });
}

void SystemControlRelay::reveal() const {
  if (onReveal) onReveal();
}

void SystemControlRelay::flush() {
  waitingToReplay_ = false;
  const std::vector<std::unique_ptr<Event>> taken = std::exchange(pending_, {});
  for (const std::unique_ptr<Event>& event : taken) replay(*event);
}

void SystemControlRelay::replay(Event& event) {
  event.setIntegerValueField(eventSourceUserData, replayMarker);
  taps_.post(EventTapLocation::session, event);
}

void SystemControlRelay::updateRegionsOfInterest() {
  if (tap_) tap_->setRegionsOfInterest(isConcealed_ ? systemFrames_ : std::vector<Rect>{});
}

}  // namespace orvo
