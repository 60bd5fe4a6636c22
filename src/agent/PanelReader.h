// Tells the panel's status controls: their kinds from the panel's settings, their places through
// Accessibility. Asks for places only when it is asked, never waits, and is not woken by what the panel
// shows in between. Owned by main; main thread.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <vector>

#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include "agent/AccessibilityBus.h"
#include "agent/PanelSettings.h"
#include "agent/PanelTree.h"
#include "agent/rules/StatusControls.h"

namespace orvo {

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
  struct Waiting {
    Answer answer;
    QDeadlineTimer limit;
  };

  void startReading();
  void readTree(const PanelFacts& facts);
  void succeed(std::vector<StatusControl> controls);
  void fail();
  void endReading();
  void settleLate();

  PanelSettings settings_;
  AccessibilityBus bus_;
  PanelTree tree_{bus_};
  // At most one at a time: while a stopped panel keeps it waiting, nothing more is asked of it.
  bool isReading_ = false;
  std::deque<Waiting> waiting_;  // in the order in which they become late
  QTimer late_;
  std::vector<StatusControl> lastKnown_;
};

}  // namespace orvo
