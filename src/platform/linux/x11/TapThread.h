// The thread of the event tap: lays covers over the regions, holds the presses they catch, and gives
// clicks to the session. Owned by X11EventTaps. Public operations may be called from any thread and
// return at once; the sink's functions are called on the tap's thread.
#pragma once

#include "platform/linux/x11/Covers.h"
#include "platform/linux/x11/GuardedRegion.h"
#include "platform/linux/x11/HeldPress.h"
#include "platform/linux/x11/XConnection.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace orvo {

// How long a click waits for the main thread. Below what a person takes for a hung control.
inline constexpr std::chrono::milliseconds verdictLimit{1000};
// A click that could not be given until so long after its button went up is given no more: whoever
// clicked has gone on, and a control that opens out of nowhere is worse than one that has to be clicked
// again.
inline constexpr std::chrono::milliseconds clickLimit{2000};

class TapThread {
 public:
  struct Sink {
    std::function<void(const std::shared_ptr<HeldPress>&)> pressed;
    // The physical end of a press, which has been handed over before.
    std::function<void(const std::shared_ptr<HeldPress>&, Point)> released;
    // Where the controls are now; absent while nobody knows. May take 0.2 s.
    std::function<std::optional<ControlPlaces::List>()> controls;
    // A press was not decided in time. The regions have been dropped.
    std::function<void()> timedOut;
  };

  // Absent, with a line on standard error, without an X server or its XTEST extension.
  static std::unique_ptr<TapThread> start(const std::string& display, Sink sink);

  // Gives the clicks that wait, undecided ones included, but for those whose button is still held or whose
  // control nobody can place, and removes the covers.
  ~TapThread();
  TapThread(const TapThread&) = delete;
  TapThread& operator=(const TapThread&) = delete;

  // False for good once the server has gone.
  bool works() const { return !dead_; }

  void setRegions(std::vector<GuardedRegion> regions);
  // The main thread's verdict on a press: a press that passes is given as a click when the physical
  // button is up.
  void decide(const std::shared_ptr<HeldPress>& press, bool pass);
  // A press and a release, as soon as no button is held and no cover is in the way: on the control, wherever
  // it is by then and nowhere if it has gone; without one, at the point of the screen. `moment` is that of
  // the person's press.
  void click(EventType downType, HeldPress::Place place, HeldPress::Moment moment);

 private:
  using Clock = std::chrono::steady_clock;

  struct Held {
    std::shared_ptr<HeldPress> press;
    Clock::time_point deadline;
    bool decided = false;
    bool passes = false;
    bool released = false;
  };
  // Root coordinates.
  struct Position {
    std::int16_t x;
    std::int16_t y;

    bool operator==(const Position&) const = default;
  };
  struct Click {
    xcb_button_t button;
    HeldPress::Place place;
    Clock::time_point moment;
  };
  // The click that was given last, until the server has handed it out.
  struct Given {
    xcb_button_t button;
    Position at;
    Clock::time_point limit;
    // Where the pointer was, if elsewhere.
    std::optional<Position> from;
  };

  TapThread(std::unique_ptr<XConnection> connection, Sink sink);
  void post(std::function<void()> command);

  // The rest runs on the tap's thread.
  void run();
  void runCommands();
  void handleEvents();
  void handle(const xcb_generic_event_t& event);
  void handlePress(const xcb_button_press_event_t& event);
  void release(Held& held, Point location, Clock::time_point moment);
  void findLostReleases();
  void expirePresses();
  void drop();
  void retireHeld();
  void giveClicks();
  bool finishGiven(const xcb_query_pointer_reply_t& pointer);
  bool isFree() const;
  bool giveNext();
  std::optional<Point> locate(const ControlPoint& point, const ControlPlaces::List& controls);
  void give(xcb_button_t button, Position at);
  void movePointer(Position position);
  void layCovers();
  void wait();
  int waitLimit() const;
  bool anyHeld() const;

  void askServerTime();
  Clock::time_point momentOf(xcb_timestamp_t time) const;

  std::unique_ptr<XConnection> connection_;
  Sink sink_;
  Covers covers_;
  int wakeUp_;  // an eventfd
  std::mutex mutex_;
  std::vector<std::function<void()>> commands_;  // guarded by mutex_
  std::atomic<bool> dead_ = false;

  xcb_window_t self_ = XCB_WINDOW_NONE;  // only there to be told the server's time
  std::uint32_t serverTimeOffset_ = 0;   // our clock minus the server's, in milliseconds
  std::vector<GuardedRegion> regions_;
  bool coversStale_ = false;
  std::vector<Held> held_;
  std::deque<Click> clicks_;
  Clock::time_point lastRelease_;
  std::optional<Given> given_;
  bool finishing_ = false;
  std::thread thread_;
};

}  // namespace orvo
