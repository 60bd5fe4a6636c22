#include "platform/linux/x11/ClickReplay.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvo {

namespace {

// A window manager that looks at each click first passes it on within a few milliseconds.
constexpr std::chrono::milliseconds givenLimit{250};

constexpr std::uint16_t anyButton =
    XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3 | XCB_BUTTON_MASK_4 | XCB_BUTTON_MASK_5;

std::int16_t coordinate(double value) {
  return static_cast<std::int16_t>(std::clamp(std::floor(value), -32768.0, 32767.0));
}

}  // namespace

bool isOver(HeldPress::Moment moment) { return std::chrono::steady_clock::now() - moment > clickLimit; }

bool isDown(const xcb_query_pointer_reply_t& pointer, xcb_button_t button) {
  return (pointer.mask & (XCB_BUTTON_MASK_1 << (button - 1U))) != 0;
}

ClickReplay::ClickReplay(const XConnection& connection, Covers& covers, Controls controls)
    : connection_(connection), covers_(covers), controls_(std::move(controls)) {}

bool ClickReplay::proceed(bool isHeld) {
  bool gave = false;
  while (finishGiven() && !isHeld && !clicks_.empty() && isFree() && giveNext()) gave = true;
  return gave;
}

// The server takes in what XTEST sends before it answers the next request. From then on the button
// counts as pressed just as long as somebody who looks at the click first holds it back.
bool ClickReplay::finishGiven() {
  if (!given_) return true;
  const auto pointer = connection_.queryPointer();
  if (!pointer) return false;
  const auto& [button, at, limit, from] = *given_;
  if (isDown(*pointer, button) && std::chrono::steady_clock::now() < limit) return false;
  // Not together with the click: a release that was held back would happen where the pointer is then.
  if (from && at == Position{pointer->root_x, pointer->root_y}) movePointer(*from);
  given_.reset();
  return true;
}

bool ClickReplay::isFree() const {
  const auto pointer = connection_.queryPointer();
  return pointer && (pointer->mask & anyButton) == 0;
}

// False when the click has to wait until somebody knows where its control is.
bool ClickReplay::giveNext() {
  const Click click = clicks_.front();
  const auto& [screen, location, control] = click.place;
  std::optional<Point> point;
  if (!isOver(std::max(click.moment, lastRelease_))) {
    point = screen;
    if (control) {
      const auto controls = controls_();
      if (!controls) return false;
      const auto now = std::ranges::find(*controls, control->identifier, &ControlPlace::identifier);
      point = now == controls->end() ? std::nullopt : covers_.locate(*now, control->offset);
      // Since the panel was asked, it may have moved the control, or changed its own size.
      if (point && !covers_.isUnder(control->window, *point)) return false;
      if (!point && now != controls->end() && !covers_.hasDock(now->window)) return false;
    }
  }
  clicks_.pop_front();
  if (point) give(click.button, {coordinate(point->x), coordinate(point->y)});
  return true;
}

void ClickReplay::give(xcb_button_t button, Position at) {
  covers_.removeAll();
  given_ = Given{button, at, std::chrono::steady_clock::now() + givenLimit, std::nullopt};
  const auto pointer = connection_.queryPointer();
  if (!pointer) return;
  if (const Position position{pointer->root_x, pointer->root_y}; position != at) {
    given_->from = position;
    movePointer(at);
  }
  for (const auto type : {XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE}) {
    xcb_test_fake_input(connection_.get(), static_cast<std::uint8_t>(type), button, XCB_CURRENT_TIME, XCB_WINDOW_NONE,
                        0, 0, 0);
  }
  xcb_flush(connection_.get());
}

void ClickReplay::movePointer(Position position) const {
  xcb_test_fake_input(connection_.get(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, connection_.root(), position.x,
                      position.y, 0);
}

}  // namespace orvo
