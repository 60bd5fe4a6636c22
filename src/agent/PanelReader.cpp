#include "agent/PanelReader.h"

#include <optional>
#include <utility>

namespace orvo {

PanelReader::PanelReader(QDBusConnection session) : settings_(std::move(session)) {
  late_.setSingleShot(true);
  connect(&late_, &QTimer::timeout, this, &PanelReader::settleLate);
}

void PanelReader::read(Answer answer) {
  waiting_.push_back({std::move(answer), QDeadlineTimer(limit)});
  if (!late_.isActive()) late_.start(limit);
  if (!isReading_) startReading();
}

void PanelReader::startReading() {
  isReading_ = true;
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
               auto controls = statusControls(layouts, *docks);
               for (auto& [word, frame] : controls)
                 frame = {frame.x * scale, frame.y * scale, frame.width * scale, frame.height * scale};
               succeed(std::move(controls));
             });
}

void PanelReader::succeed(std::vector<StatusControl> controls) {
  lastKnown_ = std::move(controls);
  endReading();
}

void PanelReader::fail() {
  settings_.forget();
  endReading();
}

void PanelReader::endReading() {
  isReading_ = false;
  late_.stop();
  for (const Waiting& waiting : std::exchange(waiting_, {})) waiting.answer(lastKnown_);
}

void PanelReader::settleLate() {
  while (!waiting_.empty() && waiting_.front().limit.hasExpired()) {
    waiting_.front().answer(lastKnown_);
    waiting_.pop_front();
  }
  if (!waiting_.empty()) late_.start(static_cast<int>(waiting_.front().limit.remainingTime()) + 1);
}

}  // namespace orvo
