// Gives clicks to the session through XTEST, one after another. Owned by the tap's thread and used there only.
#pragma once

#include "platform/linux/x11/Covers.h"
#include "platform/linux/x11/HeldPress.h"
#include "platform/linux/x11/XConnection.h"

#include <chrono>
#include <deque>
#include <functional>
#include <optional>

namespace orvo {

// A click that could not be given until so long after its button went up is given no more: whoever
// clicked has gone on, and a control that opens out of nowhere is worse than one that has to be clicked
// again.
inline constexpr std::chrono::milliseconds clickLimit{2000};

// Whether a click of this moment is given no more.
bool isOver(HeldPress::Moment moment);
bool isDown(const xcb_query_pointer_reply_t& pointer, xcb_button_t button);

class ClickReplay {
 public:
  // See TapThread::click().
  struct Click {
    xcb_button_t button;
    HeldPress::Place place;
    HeldPress::Moment moment;
  };
  // Where the controls are now; absent while nobody knows.
  using Controls = std::function<std::optional<ControlPlaces::List>()>;

  ClickReplay(const XConnection& connection, Covers& covers, Controls controls);

  void add(Click click) { clicks_.push_back(std::move(click)); }
  // The person's button went up then.
  void noteRelease(HeldPress::Moment moment) { lastRelease_ = moment; }

  // Gives what can be given now, which is nothing while a button is held on a cover. True when covers are wanted
  // afresh: none may stand where a click is given.
  bool proceed(bool isHeld);

  // One has been given and is still on its way: neither covers nor the pointer's return may get between.
  bool isGiving() const { return given_.has_value(); }
  bool isWaiting() const { return !clicks_.empty(); }

 private:
  // Root coordinates.
  struct Position {
    std::int16_t x;
    std::int16_t y;

    bool operator==(const Position&) const = default;
  };
  // The click that was given last, until the server has handed it out.
  struct Given {
    xcb_button_t button;
    Position at;
    HeldPress::Moment limit;
    std::optional<Position> from;  // where the pointer was, if elsewhere
  };

  bool finishGiven();
  bool isFree() const;
  bool giveNext();
  void give(xcb_button_t button, Position at);
  void movePointer(Position position) const;

  const XConnection& connection_;
  Covers& covers_;
  Controls controls_;
  std::deque<Click> clicks_;
  HeldPress::Moment lastRelease_;
  std::optional<Given> given_;
};

}  // namespace orvo
