// Tells the panel's status controls: their kinds from the panel's settings, their places through
// Accessibility. Asks only when it is asked, never waits, and stays silent in between: it listens to no
// events. Owned by main; main thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include <QDBusConnection>
#include <QObject>

#include "agent/rules/StatusControls.h"

namespace orvo {

class PanelReading;

class PanelReader : public QObject {
  Q_OBJECT

 public:
  // A panel that has not answered within the limit gets its last known answer. Below the 0.2 s for
  // which a scan waits for the tree.
  static constexpr std::chrono::milliseconds limit{120};

  using Answer = std::function<void(const std::vector<StatusControl>&)>;

  explicit PanelReader(QDBusConnection session);

  // `answer` is called once. No controls without a panel or an accessibility bus.
  void read(Answer answer);

 private:
  void startReading();
  void endReading();
  void settle(Answer& waiting) const;

  QDBusConnection session_;
  // At most one at a time: while a stopped panel keeps it waiting, nothing more is asked of it.
  PanelReading* reading_ = nullptr;
  std::vector<std::shared_ptr<Answer>> waiting_;  // emptied functions have been answered
  std::vector<StatusControl> lastKnown_;
};

}  // namespace orvo
