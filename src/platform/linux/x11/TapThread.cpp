#include "platform/linux/x11/TapThread.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace orvo {

namespace {

using namespace std::chrono_literals;

// How often the pointer is asked while a button is held on a cover or a click waits for a release
// that may be reported to somebody else.
constexpr auto heldInterval = 10ms;
// The same while a click is on its way: a window manager that looks at each click first passes it on
// within a few milliseconds. Until then neither covers nor the pointer's return may get between.
constexpr auto givenInterval = 1ms;
constexpr auto givenLimit = 250ms;

// In the code of an event that SendEvent made.
constexpr std::uint8_t sentByClient = 0x80;

constexpr xcb_button_t leftButton = 1;
constexpr xcb_button_t rightButton = 3;

constexpr std::uint16_t anyButton =
    XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3 | XCB_BUTTON_MASK_4 | XCB_BUTTON_MASK_5;

std::uint16_t maskOf(xcb_button_t button) { return static_cast<std::uint16_t>(XCB_BUTTON_MASK_1 << (button - 1U)); }

xcb_button_t buttonOf(EventType type) {
  const bool right = type == EventType::rightMouseDown || type == EventType::rightMouseUp;
  return right ? rightButton : leftButton;
}

EventType downType(xcb_button_t button) {
  return button == rightButton ? EventType::rightMouseDown : EventType::leftMouseDown;
}

std::int16_t coordinate(double value) {
  return static_cast<std::int16_t>(std::clamp(std::floor(value), -32768.0, 32767.0));
}

bool isOver(std::chrono::steady_clock::time_point moment) {
  return std::chrono::steady_clock::now() - moment > clickLimit;
}

std::uint32_t milliseconds(std::chrono::steady_clock::time_point time) {
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count());
}

}  // namespace

std::unique_ptr<TapThread> TapThread::start(const std::string& display, Sink sink) {
  auto connection = XConnection::open(display, "event tap");
  if (!connection) return nullptr;
  if (!connection->hasExtension(xcb_test_id)) {
    connection->log("the X server has no XTEST extension, so held clicks could not be given back");
    return nullptr;
  }
  return std::unique_ptr<TapThread>(new TapThread(std::move(connection), std::move(sink)));
}

TapThread::TapThread(std::unique_ptr<XConnection> connection, Sink sink)
    : connection_(std::move(connection)),
      sink_(std::move(sink)),
      covers_(*connection_),
      wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      thread_([this] { run(); }) {}

TapThread::~TapThread() {
  post([this] { finishing_ = true; });
  thread_.join();
  close(wakeUp_);
}

void TapThread::setRegions(std::vector<GuardedRegion> regions) {
  post([this, regions = std::move(regions)] {
    if (regions_.empty() && !regions.empty()) askServerTime();
    regions_ = regions;
    coversStale_ = true;
  });
}

void TapThread::decide(const std::shared_ptr<HeldPress>& press, bool pass) {
  post([this, press, pass] {
    const auto held = std::ranges::find(held_, press, &Held::press);
    if (held == held_.end()) return;
    held->decided = true;
    held->passes = pass;
  });
}

void TapThread::click(EventType downType, HeldPress::Place place, HeldPress::Moment moment) {
  post([this, click = Click{buttonOf(downType), std::move(place), moment}] { clicks_.push_back(click); });
}

void TapThread::post(std::function<void()> command) {
  {
    const std::lock_guard lock(mutex_);
    commands_.push_back(std::move(command));
  }
  eventfd_write(wakeUp_, 1);
}

void TapThread::run() {
  self_ = xcb_generate_id(connection_->get());
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(connection_->get(), 0, self_, connection_->root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                    XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
  while (connection_->works()) {
    runCommands();
    handleEvents();
    findLostReleases();
    expirePresses();
    retireHeld();
    giveClicks();
    layCovers();
    if (finishing_ && !given_) return;
    wait();
  }
  connection_->log("the X server has gone");
  dead_ = true;
}

void TapThread::runCommands() {
  eventfd_t count = 0;
  eventfd_read(wakeUp_, &count);
  std::vector<std::function<void()>> commands;
  {
    const std::lock_guard lock(mutex_);
    commands.swap(commands_);
  }
  for (const auto& command : commands) command();
}

void TapThread::handleEvents() {
  while (const auto event = owned(xcb_poll_for_event(connection_->get()))) handle(*event);
}

void TapThread::handle(const xcb_generic_event_t& event) {
  if ((event.response_type & sentByClient) != 0) return;  // nobody pressed or moved anything
  switch (eventCode(event)) {
    case 0:
      connection_->logUnexpected(reinterpret_cast<const xcb_generic_error_t&>(event));
      break;
    case XCB_BUTTON_PRESS:
      handlePress(reinterpret_cast<const xcb_button_press_event_t&>(event));
      break;
    case XCB_BUTTON_RELEASE: {
      const auto& release = reinterpret_cast<const xcb_button_release_event_t&>(event);
      for (auto& held : held_) {
        if (buttonOf(held.press->type()) != release.detail) continue;
        this->release(held, {static_cast<double>(release.root_x), static_cast<double>(release.root_y)},
                      momentOf(release.time));
      }
      break;
    }
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
      covers_.crossed(reinterpret_cast<const xcb_enter_notify_event_t&>(event));
      break;
    case XCB_PROPERTY_NOTIFY: {
      const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
      if (property.window == self_) serverTimeOffset_ = milliseconds(Clock::now()) - property.time;
      [[fallthrough]];
    }
    default:
      if (covers_.concerns(event)) coversStale_ = true;
  }
}

void TapThread::handlePress(const xcb_button_press_event_t& event) {
  if (event.detail != leftButton && event.detail != rightButton) return;
  const auto moment = momentOf(event.time);
  if (isOver(moment)) {
    // Caught while this process was stopped.
    drop();
    return;
  }
  const auto caught = covers_.caught(event);
  const Point screen{static_cast<double>(event.root_x), static_cast<double>(event.root_y)};
  Held held{
      std::make_shared<HeldPress>(downType(event.detail), caught.value_or(HeldPress::Place{screen, screen}), moment),
      Clock::now() + verdictLimit};
  if (caught || !anyHeld()) {
    sink_.pressed(held.press);
  } else {
    // A second button, pressed elsewhere: it came here because the first one is held on a cover.
    held.press->expire();
    held.decided = held.passes = true;
  }
  held_.push_back(std::move(held));
}

void TapThread::release(Held& held, Point location, Clock::time_point moment) {
  if (held.released) return;
  held.released = true;
  lastRelease_ = moment;
  coversStale_ = true;  // those that were only put out of sight can go
  sink_.released(held.press, location);
}

// A grab ends without a word when the panel takes its window away.
void TapThread::findLostReleases() {
  if (!anyHeld()) return;
  const auto pointer = connection_->queryPointer();
  if (!pointer) return;
  // A press that comes from here on is younger than the answer.
  const auto known = held_.size();
  handleEvents();
  for (auto& held : std::span(held_).first(known)) {
    if ((pointer->mask & maskOf(buttonOf(held.press->type()))) != 0) continue;
    release(held, {static_cast<double>(pointer->root_x), static_cast<double>(pointer->root_y)}, Clock::now());
  }
}

void TapThread::expirePresses() {
  const auto now = Clock::now();
  for (auto& held : held_) {
    if (held.decided || (now < held.deadline && !finishing_) || !held.press->expire()) continue;
    held.decided = held.passes = true;
    drop();
  }
}

void TapThread::drop() {
  regions_.clear();
  coversStale_ = true;
  sink_.timedOut();
}

void TapThread::retireHeld() {
  std::erase_if(held_, [this](const Held& held) {
    if (!held.decided || !held.released) return false;
    const auto& press = *held.press;
    if (held.passes) clicks_.push_back({buttonOf(press.type()), press.place(), press.moment()});
    return true;
  });
}

void TapThread::giveClicks() {
  while (given_ || (!clicks_.empty() && !anyHeld())) {
    if (given_) {
      const auto pointer = connection_->queryPointer();
      if (!pointer || !finishGiven(*pointer)) return;
    }
    if (clicks_.empty() || !isFree() || !giveNext()) break;
  }
  if (finishing_) clicks_.clear();
}

bool TapThread::isFree() const {
  const auto pointer = connection_->queryPointer();
  return pointer && (pointer->mask & anyButton) == 0;
}

// False when the click has to wait until somebody knows where its control is.
bool TapThread::giveNext() {
  const Click click = clicks_.front();
  const auto& [screen, location, control] = click.place;
  std::optional<Point> point;
  if (!isOver(std::max(click.moment, lastRelease_))) {
    point = screen;
    if (control) {
      const auto controls = sink_.controls();
      if (!controls) return false;
      point = locate(*control, *controls);
    }
  }
  clicks_.pop_front();
  if (point) give(click.button, {coordinate(point->x), coordinate(point->y)});
  return true;
}

std::optional<Point> TapThread::locate(const ControlPoint& point, const ControlPlaces::List& controls) {
  const auto now = std::ranges::find(controls, point.identifier, &ControlPlace::identifier);
  return now == controls.end() ? std::nullopt : covers_.locate(*now, point.offset);
}

// The server takes in what XTEST sends before it answers the next request. From then on the button
// counts as pressed just as long as somebody who looks at the click first holds it back.
bool TapThread::finishGiven(const xcb_query_pointer_reply_t& pointer) {
  const auto& [button, at, limit, from] = *given_;
  if ((pointer.mask & maskOf(button)) != 0 && Clock::now() < limit) return false;
  // Not together with the click: a release that was held back would happen where the pointer is then.
  if (from && at == Position{pointer.root_x, pointer.root_y}) movePointer(*from);
  given_.reset();
  return true;
}

void TapThread::give(xcb_button_t button, Position at) {
  covers_.removeAll();
  coversStale_ = true;
  given_ = Given{button, at, Clock::now() + givenLimit, std::nullopt};
  const auto pointer = connection_->queryPointer();
  if (!pointer) return;
  if (const Position position{pointer->root_x, pointer->root_y}; position != at) {
    given_->from = position;
    movePointer(at);
  }
  for (const auto type : {XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE}) {
    xcb_test_fake_input(connection_->get(), static_cast<std::uint8_t>(type), button, XCB_CURRENT_TIME, XCB_WINDOW_NONE,
                        0, 0, 0);
  }
  xcb_flush(connection_->get());
}

void TapThread::movePointer(Position position) {
  xcb_test_fake_input(connection_->get(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, connection_->root(), position.x,
                      position.y, 0);
}

void TapThread::layCovers() {
  if (finishing_) {
    covers_.removeAll();
    return;
  }
  if (!coversStale_ || given_) return;
  covers_.lay(regions_, anyHeld());
  coversStale_ = false;
}

void TapThread::wait() {
  xcb_flush(connection_->get());
  // Answers that were waited for may have left events in the queue.
  if (const auto event = owned(xcb_poll_for_queued_event(connection_->get()))) {
    handle(*event);
    return;
  }
  pollfd descriptors[] = {{xcb_get_file_descriptor(connection_->get()), POLLIN, 0}, {wakeUp_, POLLIN, 0}};
  poll(&descriptors[0], 2, waitLimit());
}

int TapThread::waitLimit() const {
  if (given_) return static_cast<int>(givenInterval.count());
  if (!held_.empty() || !clicks_.empty()) return static_cast<int>(heldInterval.count());
  return -1;
}

bool TapThread::anyHeld() const { return std::ranges::count(held_, false, &Held::released) > 0; }

void TapThread::askServerTime() {
  const std::uint8_t nothing = 0;
  xcb_change_property(connection_->get(), XCB_PROP_MODE_APPEND, self_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0,
                      &nothing);
}

TapThread::Clock::time_point TapThread::momentOf(xcb_timestamp_t time) const {
  const auto now = Clock::now();
  const auto age = static_cast<std::int32_t>(milliseconds(now) - serverTimeOffset_ - time);
  return now - std::chrono::milliseconds(std::max(age, 0));
}

}  // namespace orvo
