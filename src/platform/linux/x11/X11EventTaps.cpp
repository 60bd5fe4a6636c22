#include "platform/linux/x11/X11EventTaps.h"

#include "platform/linux/x11/HeldPress.h"
#include "platform/linux/x11/TapThread.h"
#include "platform/linux/x11/X11Event.h"

#include <algorithm>
#include <utility>

namespace orvo {

struct X11EventTaps::Tap {
  std::uint64_t mask = 0;
  EventTapCallback callback = nullptr;
  void* userInfo = nullptr;
  bool attached = false;
  bool enabled = true;
  std::vector<Rect> regions;

  bool active() const { return attached && enabled; }
};

class X11EventTaps::Port : public EventTapPort {
 public:
  Port(X11EventTaps& taps, std::shared_ptr<Tap> tap) : taps_(taps), alive_(taps.alive_), tap_(std::move(tap)) {}
  ~Port() override { Port::invalidate(); }
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;

  bool addToMainRunLoop() override {
    set(tap_->attached, true);
    return isValid();
  }
  void removeFromMainRunLoop() override { set(tap_->attached, false); }
  bool enable() override {
    set(tap_->enabled, true);
    return isValid() && taps_.hasThread();
  }
  void setRegionsOfInterest(const std::vector<Rect>& regions) override { set(tap_->regions, regions); }
  void invalidate() override {
    if (isValid()) taps_.invalidate();
  }

 private:
  template <typename T>
  void set(T& property, const T& value) {
    property = value;
    if (isValid()) taps_.update();
  }
  bool isValid() const { return !alive_.expired() && taps_.tap_ == tap_; }

  X11EventTaps& taps_;
  std::weak_ptr<int> alive_;
  std::shared_ptr<Tap> tap_;
};

X11EventTaps::X11EventTaps(MainQueue& queue, std::function<bool()> trusted, const ControlPlaces& places)
    : queue_(queue), trusted_(std::move(trusted)), places_(places), alive_(std::make_shared<int>()) {}

X11EventTaps::~X11EventTaps() {
  if (tap_) invalidate();
  givePosted();
}

std::unique_ptr<EventTapPort> X11EventTaps::create(EventTapLocation, EventTapPlacement, EventTapOptions,
                                                   std::uint64_t mask, EventTapCallback callback, void* userInfo) {
  if (!trusted_() || tap_ || !startThread()) return nullptr;
  tap_ = std::make_shared<Tap>();
  tap_->mask = mask;
  tap_->callback = callback;
  tap_->userInfo = userInfo;
  return std::make_unique<Port>(*this, tap_);
}

void X11EventTaps::post(EventTapLocation, const Event& event) {
  const auto* own = dynamic_cast<const X11Event*>(&event);
  if (own == nullptr) return;
  posted_.push_back(*own);
  onMain([this] { showPosted(); });
}

bool X11EventTaps::hasThread() const { return thread_ && thread_->works(); }

bool X11EventTaps::startThread() {
  if (hasThread()) return true;
  TapThread::Sink sink;
  sink.pressed = [this](const std::shared_ptr<HeldPress>& press) { onMain([this, press] { answer(press); }); };
  sink.released = [this](const std::shared_ptr<HeldPress>& press, Point location) {
    onMain([this, press, location] { release(*press, location); });
  };
  sink.controls = [&places = places_] { return places.now(); };
  sink.timedOut = [this] { onMain([this] { disable(EventType::tapDisabledByTimeout); }); };
  sink.ended = [this] { onMain([this] { disable(EventType::tapDisabledByUserInput); }); };
  thread_ = TapThread::start(std::move(sink));
  return thread_ != nullptr;
}

void X11EventTaps::update() {
  if (!thread_) return;
  thread_->setRegions(tap_ && tap_->active() ? guarded(tap_->regions) : std::vector<GuardedRegion>());
}

// A frame that a newer reading knows nothing of is out of date, and the one that replaces it on its way.
std::vector<GuardedRegion> X11EventTaps::guarded(const std::vector<Rect>& frames) const {
  std::vector<GuardedRegion> regions;
  for (auto frame = frames.begin(); frame != frames.end(); ++frame) {
    const auto earlier = static_cast<std::size_t>(std::count(frames.begin(), frame, *frame));
    const auto control = places_.of(*frame, earlier);
    if (control || places_.isEmpty()) regions.push_back({*frame, control});
  }
  return regions;
}

void X11EventTaps::answer(const std::shared_ptr<HeldPress>& press) {
  if (!press->beginAsking()) return;
  X11Event event(press->type(), press->place().location, press->moment(), press->place().control);
  const bool pass = passes(event);  // the callback may end the thread
  if (thread_) thread_->decide(press, pass);
}

// Whether the release passes makes no difference: it goes the way of its press.
void X11EventTaps::release(const HeldPress& press, Point location) {
  const bool left = press.type() == EventType::leftMouseDown;
  X11Event event(left ? EventType::leftMouseUp : EventType::rightMouseUp, location, press.moment());
  if (press.wasAsked()) passes(event);
}

void X11EventTaps::disable(EventType reason) {
  if (!tap_) return;
  const auto tap = tap_;
  tap->enabled = false;
  update();
  X11Event nothing(reason, {}, {});
  if (tap->attached) tap->callback(reason, &nothing, tap->userInfo);
}

bool X11EventTaps::passes(X11Event& event) {
  const auto tap = tap_;  // the callback may end it
  const bool wanted = tap && tap->active() && (tap->mask >> static_cast<std::uint32_t>(event.type()) & 1U) != 0;
  return !wanted || tap->callback(event.type(), &event, tap->userInfo) != nullptr;
}

void X11EventTaps::showPosted() {
  if (posted_.empty()) return;
  auto event = std::move(posted_.front());
  posted_.pop_front();
  if (passes(event)) give(event);
}

void X11EventTaps::givePosted() {
  for (const auto& event : std::exchange(posted_, {})) give(event);
}

void X11EventTaps::give(const X11Event& event) {
  const bool down = event.type() == EventType::leftMouseDown || event.type() == EventType::rightMouseDown;
  if (down && startThread())
    thread_->click(event.type(), {event.location(), event.location(), event.control()}, event.moment());
}

void X11EventTaps::invalidate() {
  tap_.reset();
  update();
  givePosted();
}

void X11EventTaps::onMain(std::function<void()> task) {
  queue_.post([alive = std::weak_ptr<int>(alive_), task = std::move(task)] {
    if (!alive.expired()) task();
  });
}

}  // namespace orvo
