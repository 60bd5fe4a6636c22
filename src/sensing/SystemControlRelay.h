// Keeps system controls usable while icons are concealed: holds a click on one back, asks for the
// icons to be revealed and replays the click a moment later. Owned by the model, which stops it before
// letting it go; main thread only.
#pragma once

#include "core/Rect.h"
#include "platform/EventTap.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvo {

class MainQueue;

class SystemControlRelay : public std::enable_shared_from_this<SystemControlRelay> {
 public:
  // Shared only so that a delayed replay can hold it weakly.
  static std::shared_ptr<SystemControlRelay> make(EventTaps& taps, MainQueue& queue);
  SystemControlRelay(const SystemControlRelay&) = delete;
  SystemControlRelay& operator=(const SystemControlRelay&) = delete;

  // Changes nothing when the tap is there already or cannot be made; may be tried again at any time.
  void install();
  // Posts at once what is held back and removes the tap. A mouse up that is still owed stays owed.
  void stop();
  bool isInstalled() const { return tap_ != nullptr; }

  // Where the system controls are, in global screen coordinates.
  const std::vector<Rect>& systemFrames() const { return systemFrames_; }
  void setSystemFrames(std::vector<Rect> frames);

  // Clicks are held back only while this is true.
  bool isConcealed() const { return isConcealed_; }
  void setConcealed(bool concealed);

  // Called from inside the tap, before the click's fate is told to the system.
  std::function<void()> onReveal;

 private:
  SystemControlRelay(EventTaps& taps, MainQueue& queue) : taps_(taps), queue_(queue) {}

  static Event* tapCallback(EventType type, Event* event, void* userInfo);
  Event* receive(EventType type, Event* event);
  void recover();
  void intercept(EventType type, std::unique_ptr<Event> copy);
  void finishClick(std::unique_ptr<Event> copy);
  bool hitsSystemControl(Point location) const;
  void reveal() const;
  void flush();
  void replay(Event& event);
  void updateRegionsOfInterest();

  EventTaps& taps_;
  MainQueue& queue_;
  std::vector<Rect> systemFrames_;
  bool isConcealed_ = false;
  std::unique_ptr<EventTapPort> tap_;
  bool inRunLoop_ = false;
  // Oldest first.
  std::vector<std::unique_ptr<Event>> pending_;
  // The mouse up that ends the click that was held back.
  std::optional<EventType> heldUpType_;
  bool waitingToReplay_ = false;
};

}  // namespace orvo
