// Holds the event tap on DISPLAY and does what its standard input says: one command a line, each answered by a line
// for every event that the callback got meanwhile (type, place and mark), then "done". Its main queue stands still
// while it "hangs"; where that has a task by then, "asked" is answered by an event of no type.
#include "platform/linux/x11/X11EventTaps.h"

#include "support/ManualMainQueue.h"

#include <poll.h>
#include <unistd.h>

#include <iostream>
#include <sstream>

namespace orvo {

using Clock = std::chrono::steady_clock;

Rect readRect(std::istream& words) {
  Rect rect;
  words >> rect.x >> rect.y >> rect.width >> rect.height;
  return rect;
}

class TapProgram {
 public:
  TapProgram() { install(); }

  void obey(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    words >> command;
    if (command == "regions") port_->setRegionsOfInterest({readRect(words)});
    if (command == "passes") words >> passes_;
    if (command == "enable" && !port_->enable()) install();
    if (command == "invalidate") port_->invalidate();
    if (command == "note") places_.note(*readControls(words));
    if (command == "find") {
      const std::lock_guard lock(mutex_);
      controls_ = readControls(words);
    }
    if (command == "hangs") words >> hangs_;
    if (command == "asked" && !queue_.isEmpty()) std::cout << "0 0 0 0\n";
    if (command == "end") taps_.reset();
    if (command == "post") taps_->post(EventTapLocation::session, *pressed_);
    std::cout << "done" << std::endl;
  }

  void runQueue() {
    if (!hangs_) queue_.advance(std::chrono::floor<MainQueue::Duration>(Clock::now() - start_) - queue_.now());
  }

 private:
  void install() {
    port_.reset();
    port_ = taps_->create(EventTapLocation::session, EventTapPlacement::headInsert, EventTapOptions::activeFilter, 0x1E,
                          &callback, this);
    port_->addToMainRunLoop();
    port_->enable();
  }

  static Event* callback(EventType type, Event* event, void* userInfo) {
    auto& self = *static_cast<TapProgram*>(userInfo);
    const Point place = event->location();
    std::cout << static_cast<std::uint32_t>(type) << ' ' << place.x << ' ' << place.y << ' '
              << event->integerValueField(eventSourceUserData) << '\n';
    if (self.passes_) return event;
    if (type == EventType::leftMouseDown)
      (self.pressed_ = event->copy())->setIntegerValueField(eventSourceUserData, 42);
    return nullptr;
  }

  // A control's name, frame and window; without words, nobody knows.
  static std::optional<ControlPlaces::List> readControls(std::istream& words) {
    std::string name;
    if (!(words >> name)) return std::nullopt;
    const Rect frame = readRect(words);
    return {{{name, frame, {readRect(words), 0}}}};
  }

  ManualMainQueue queue_;
  const Clock::time_point start_ = Clock::now();
  std::mutex mutex_;
  std::optional<ControlPlaces::List> controls_;  // under mutex_
  ControlPlaces places_{[this] {
    const std::lock_guard lock(mutex_);
    return controls_;
  }};
  std::unique_ptr<X11EventTaps> taps_ = std::make_unique<X11EventTaps>(
      queue_, [] { return true; }, places_);
  std::unique_ptr<EventTapPort> port_;
  std::unique_ptr<Event> pressed_;  // the last left press that did not pass, marked
  bool passes_ = false, hangs_ = false;
};

}  // namespace orvo

int main() {
  orvo::TapProgram program;
  std::string line;
  for (pollfd input{STDIN_FILENO, POLLIN, 0}; poll(&input, 1, 2) >= 0; program.runQueue()) {
    if (input.revents == 0) continue;
    if (!std::getline(std::cin, line)) break;
    program.obey(line);
  }
}
