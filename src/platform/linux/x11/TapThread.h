// The thread of the event tap: places covers over the regions, holds the presses they catch, and replays those
// that pass. Owned by X11EventTaps. Public operations may be called from any thread and return at once; the sink's
// functions are called on the tap's thread.
//
// What becomes of a press that a cover caught:
//
//   state     event                                            next
//   held      the main thread's verdict                        decided: passes, or does not
//             verdictLimit is over and nobody was asked        decided: passes; all regions are dropped
//             the tap ends and nobody was asked                the same
//   held or   its button goes up, or the server says that      released as well
//   decided   it is up, where the grab was lost
//   decided,  it passes                                        waiting, as a click
//   released  it does not                                      forgotten
//   waiting   clickLimit is over, or its control has gone      forgotten
//             no button is down, its control has been found    given
//   given     the server counts its button as up again         forgotten
//
// A posted click begins as waiting. A press that was caught while this process was stopped, for longer than
// clickLimit, is forgotten at once, and the regions are dropped. A second button comes here from anywhere while the
// first is held on a cover; where that is on no cover, it is decided from the start and passes.
//
// Until it is given, nobody but the main thread hears of a press or its release. What is given goes to whatever
// stands there: covers are away meanwhile, so that the tap does not catch it itself.
#pragma once

#include "platform/linux/x11/ClickReplay.h"
#include "platform/linux/x11/Covers.h"
#include "platform/linux/x11/GuardedRegion.h"
#include "platform/linux/x11/HeldPress.h"
#include "platform/linux/x11/ServerClock.h"
#include "platform/linux/x11/XConnection.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace orvo {

// How long a click waits for the main thread. Below what a person takes for a hung control.
inline constexpr std::chrono::milliseconds verdictLimit{1000};

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
    // The connection to the server has ended, and with it everything that was held here.
    std::function<void()> ended;
  };

  // Absent without an X server, or without its XTEST extension, by which held clicks are given back.
  static std::unique_ptr<TapThread> start(Sink sink);

  // Gives the clicks that wait, undecided ones included, but for those whose button is still held or whose
  // control nobody can place, and removes the covers.
  ~TapThread();
  TapThread(const TapThread&) = delete;
  TapThread& operator=(const TapThread&) = delete;

  // False for good once the connection to the server has ended.
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
  void placeCovers();
  void wait();
  int waitLimit() const;
  bool anyHeld() const;

  std::unique_ptr<XConnection> connection_;
  Sink sink_;
  Covers covers_;
  ServerClock clock_;
  ClickReplay replay_;
  int wakeUp_;  // an eventfd
  std::mutex mutex_;
  std::vector<std::function<void()>> commands_;  // guarded by mutex_
  std::atomic<bool> dead_ = false;

  std::vector<GuardedRegion> regions_;
  bool coversStale_ = false;
  std::vector<Held> held_;
  bool finishing_ = false;
  std::thread thread_;
};

}  // namespace orvo
