#include "agent/PanelReader.h"

#include <optional>
#include <utility>

namespace orvo {

namespace {

// A panel lays itself out in steps, a few milliseconds apart.
constexpr std::chrono::milliseconds layoutPause{15};
// For a panel that is starting, or stopped.
constexpr std::chrono::milliseconds failurePause{500};

Rect scaled(const Rect& rect, int scale) {
  return {rect.x * scale, rect.y * scale, rect.width * scale, rect.height * scale};
}

std::vector<DockControls> scaled(std::vector<DockControls> docks, int scale) {
  for (DockControls& dock : docks) {
    dock.frame = scaled(dock.frame, scale);
    for (StatusControl& control : dock.controls) control.frame = scaled(control.frame, scale);
  }
  return docks;
}

}  // namespace

PanelReader::PanelReader(sd_bus* session)
    : settings_(session, [this] { lookSoon(layoutPause); }),
      bus_(sd_bus_get_event(session)),
      late_(sd_bus_get_event(session), [this] { settleLate(); }),
      look_(sd_bus_get_event(session), [this] { look(); }) {
  bus_.onBoundsChanged = [this] { lookSoon(layoutPause); };
}

void PanelReader::read(Answer answer) {
  waiting_.push_back({std::move(answer), Clock::now() + limit, readings_ + 1});
  if (!late_.isActive()) late_.start(limit);
  if (!isReading_) startReading();
}

void PanelReader::startReading() {
  isReading_ = true;
  ++readings_;
  settings_.read([this](const PanelFacts* facts) {
    if (facts == nullptr) return fail();
    if (facts->process == 0 || facts->accessibilityAddress.empty()) return succeed({});
    readTree(*facts);
  });
}

void PanelReader::readTree(const PanelFacts& facts) {
  bus_.begin(facts.accessibilityAddress);
  tree_.read(facts.process,
             [this, layouts = facts.layouts, scale = facts.scale](const std::optional<std::vector<Dock>>& docks) {
               if (!docks) return fail();
               succeed(scaled(statusControls(layouts, *docks), scale));
             });
}

void PanelReader::succeed(std::vector<DockControls> docks) {
  lastKnown_ = std::move(docks);
  endReading(true);
}

void PanelReader::fail() {
  settings_.forget();
  endReading(false);
}

void PanelReader::endReading(bool isFresh) {
  isReading_ = false;
  const Reading reading{lastKnown_, isFresh};
  std::deque<Waiting> answered;
  while (!waiting_.empty() && waiting_.front().reading <= readings_) {
    answered.push_back(std::move(waiting_.front()));
    waiting_.pop_front();
  }
  if (waiting_.empty()) {
    late_.stop();
  } else {
    startReading();
  }
  for (const Waiting& waiting : answered) waiting.answer(reading);
  if (std::exchange(isLooking_, false) && isWatching_) seen(reading);
}

void PanelReader::settleLate() {
  while (!waiting_.empty() && waiting_.front().deadline <= Clock::now()) {
    waiting_.front().answer({lastKnown_, false});
    waiting_.pop_front();
  }
  if (waiting_.empty()) return;
  late_.start(std::chrono::ceil<std::chrono::milliseconds>(waiting_.front().deadline - Clock::now()));
}

void PanelReader::watch(bool watches) {
  if (std::exchange(isWatching_, watches) == watches) return;
  if (watches) return lookSoon(layoutPause);
  look_.stop();
  bus_.listenTo({});
}

void PanelReader::lookSoon(std::chrono::milliseconds pause) {
  if (isWatching_ && !look_.isActive()) look_.start(pause);
}

void PanelReader::look() {
  if (isReading_) return lookSoon(layoutPause);
  isLooking_ = true;
  startReading();
}

void PanelReader::seen(const Reading& reading) {
  // A panel that is starting is not in the accessible tree yet.
  if (!reading.isFresh || reading.docks.empty()) lookSoon(failurePause);
  if (!reading.isFresh) return;
  // What moved before the panel was listened to is in no event.
  if (bus_.listenTo(tree_.panelService())) lookSoon(layoutPause);
  onLooked(reading.docks);
}

}  // namespace orvo
