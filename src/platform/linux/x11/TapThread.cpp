#include "platform/linux/x11/TapThread.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <span>
#include <utility>

namespace orvo {

namespace {

using namespace std::chrono_literals;

// How often the pointer is asked while a button is held on a cover or a click waits for a release
// that may be reported to somebody else.
constexpr auto heldInterval = 10ms;
// The same while a click is on its way.
constexpr auto givenInterval = 1ms;

constexpr xcb_button_t leftButton = 1;
constexpr xcb_button_t rightButton = 3;

xcb_button_t buttonOf(EventType type) {
  const bool right = type == EventType::rightMouseDown || type == EventType::rightMouseUp;
  return right ? rightButton : leftButton;
}

EventType downType(xcb_button_t button) {
  return button == rightButton ? EventType::rightMouseDown : EventType::leftMouseDown;
}

}  // namespace

std::unique_ptr<TapThread> TapThread::start(Sink sink) {
  auto connection = XConnection::open("event tap");
  if (!connection || !connection->hasExtension(xcb_test_id)) return nullptr;
  return std::unique_ptr<TapThread>(new TapThread(std::move(connection), std::move(sink)));
}

TapThread::TapThread(std::unique_ptr<XConnection> connection, Sink sink)
    : connection_(std::move(connection)),
      sink_(std::move(sink)),
      covers_(*connection_),
      clock_(*connection_),
      replay_(*connection_, covers_, sink_.controls),
      wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      thread_([this] { run(); }) {}

TapThread::~TapThread() {
  post([this] { finishing_ = true; });
  thread_.join();
  close(wakeUp_);
}

void TapThread::setRegions(std::vector<GuardedRegion> regions) {
  post([this, regions = std::move(regions)] {
    if (regions_.empty() && !regions.empty()) clock_.ask();
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
  post([this, click = ClickReplay::Click{buttonOf(downType), std::move(place), moment}] { replay_.add(click); });
}

void TapThread::post(std::function<void()> command) {
  {
    const std::lock_guard lock(mutex_);
    commands_.push_back(std::move(command));
  }
  eventfd_write(wakeUp_, 1);
}

void TapThread::run() {
  while (connection_->works()) {
    runCommands();
    handleEvents();
    findLostReleases();
    expirePresses();
    retireHeld();
    if (replay_.proceed(anyHeld())) coversStale_ = true;
    placeCovers();
    if (finishing_ && !replay_.isGiving()) return;
    wait();
  }
  connection_->log("the connection to the X server has ended");
  dead_ = true;
  sink_.ended();
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
  if (isPretended(event)) return;  // nobody pressed or moved anything
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
                      clock_.momentOf(release.time));
      }
      break;
    }
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
      covers_.crossed(reinterpret_cast<const xcb_enter_notify_event_t&>(event));
      break;
    case XCB_PROPERTY_NOTIFY:
      clock_.hear(reinterpret_cast<const xcb_property_notify_event_t&>(event));
      [[fallthrough]];
    default:
      if (covers_.concerns(event)) coversStale_ = true;
  }
}

void TapThread::handlePress(const xcb_button_press_event_t& event) {
  if (event.detail != leftButton && event.detail != rightButton) return;
  const auto moment = clock_.momentOf(event.time);
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
  replay_.noteRelease(moment);
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
    if (isDown(*pointer, buttonOf(held.press->type()))) continue;
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
    if (held.passes) replay_.add({buttonOf(press.type()), press.place(), press.moment()});
    return true;
  });
}

void TapThread::placeCovers() {
  if (finishing_) {
    covers_.removeAll();
    return;
  }
  if (!coversStale_ || replay_.isGiving()) return;
  covers_.place(regions_, anyHeld());
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
  if (replay_.isGiving()) return static_cast<int>(givenInterval.count());
  if (!held_.empty() || replay_.isWaiting()) return static_cast<int>(heldInterval.count());
  return -1;
}

bool TapThread::anyHeld() const { return std::ranges::count(held_, false, &Held::released) > 0; }

}  // namespace orvo
