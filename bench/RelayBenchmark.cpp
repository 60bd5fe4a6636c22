// What the relay adds to a mouse press that passes: the hit test over every guarded control.
#include "sensing/SystemControlRelay.h"

#include "platform/MainQueue.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <thread>
#include <vector>

namespace orvo {
namespace {

class IdleQueue : public MainQueue {
 public:
  void post(Task) override {}
  Handle runAfter(Duration, Task) override { return Handle::none; }
  Handle repeat(Duration, Duration, Task) override { return Handle::none; }
  void cancel(Handle) override {}
  Duration now() const override { return Duration::zero(); }
  bool isMainThread() const override { return std::this_thread::get_id() == mainThread_; }

 private:
  std::thread::id mainThread_ = std::this_thread::get_id();
};

class Press : public Event {
 public:
  explicit Press(Point location) : location_(location) {}
  Point location() const override { return location_; }
  std::unique_ptr<Event> copy() const override { return nullptr; }
  std::int64_t integerValueField(std::uint32_t) const override { return 0; }
  void setIntegerValueField(std::uint32_t, std::int64_t) override {}

 private:
  Point location_;
};

class Port : public EventTapPort {
 public:
  bool addToMainRunLoop() override { return true; }
  void removeFromMainRunLoop() override {}
  void enable() override {}
  void invalidate() override {}
  void setRegionsOfInterest(const std::vector<Rect>&) override {}
};

class Taps : public EventTaps {
 public:
  std::unique_ptr<EventTapPort> create(EventTapLocation, EventTapPlacement, EventTapOptions, std::uint64_t,
                                       EventTapCallback callback, void* userInfo) override {
    callback_ = callback;
    userInfo_ = userInfo;
    return std::make_unique<Port>();
  }
  void post(EventTapLocation, const Event&) override {}
  Event* send(EventType type, Event& event) { return callback_(type, &event, userInfo_); }

 private:
  EventTapCallback callback_ = nullptr;
  void* userInfo_ = nullptr;
};

// The argument is the number of guarded controls; the press is beside them all.
void passingPress(benchmark::State& state) {
  Taps taps;
  IdleQueue queue;
  const auto relay = SystemControlRelay::make(taps, queue);
  std::vector<Rect> frames;
  frames.reserve(static_cast<std::size_t>(state.range(0)));
  for (int i = 0; i < state.range(0); ++i) frames.push_back({30.0 * i, 0, 30, 24});
  relay->setSystemFrames(frames);
  relay->install();
  relay->setConcealed(true);
  Press press({15, 500});
  while (state.KeepRunning()) benchmark::DoNotOptimize(taps.send(EventType::leftMouseDown, press));
  relay->stop();
}
BENCHMARK(passingPress)->Arg(0)->Arg(8)->Arg(64);

}  // namespace
}  // namespace orvo
