#include "agent/PanelReader.h"

#include <utility>

#include <QTimer>

#include "agent/PanelReading.h"

namespace orvo {

PanelReader::PanelReader(QDBusConnection session) : session_(std::move(session)) {}

void PanelReader::read(Answer answer) {
  if (reading_ == nullptr) startReading();
  waiting_.push_back(std::make_shared<Answer>(std::move(answer)));
  QTimer::singleShot(limit, this, [this, waiting = waiting_.back()] { settle(*waiting); });
}

void PanelReader::startReading() {
  reading_ = new PanelReading(session_);
  reading_->setParent(this);
  connect(reading_, &PanelReading::failed, this, &PanelReader::endReading);
  connect(reading_, &PanelReading::read, this, [this](const std::vector<StatusControl>& controls) {
    lastKnown_ = controls;
    endReading();
  });
  reading_->start();
}

void PanelReader::endReading() {
  std::exchange(reading_, nullptr)->deleteLater();
  for (const auto& waiting : std::exchange(waiting_, {})) settle(*waiting);
}

void PanelReader::settle(Answer& waiting) const {
  if (waiting) std::exchange(waiting, nullptr)(lastKnown_);
}

}  // namespace orvo
