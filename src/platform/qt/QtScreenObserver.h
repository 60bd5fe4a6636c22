// Posts screenParametersChanged when the screens' places or sizes change. Owned by main.cpp, made after the
// application object; main thread only.
#pragma once

#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"

#include <QList>
#include <QObject>
#include <QRect>

#include <chrono>

class QScreen;

namespace orvo {

// One change of configuration comes as several; they are over when none came for this long.
inline constexpr std::chrono::milliseconds screenSettleTime{100};

class QtScreenObserver final : public QObject {
 public:
  QtScreenObserver(MainQueue& queue, NotificationCenter& center);
  ~QtScreenObserver() override { queue_.cancel(settle_); }
  QtScreenObserver(const QtScreenObserver&) = delete;
  QtScreenObserver& operator=(const QtScreenObserver&) = delete;

 private:
  void follow(QScreen* screen);
  void changeSeen();
  void settled();

  MainQueue& queue_;
  NotificationCenter& center_;
  QList<QRect> geometry_;  // of each screen
  MainQueue::Handle settle_ = MainQueue::Handle::none;
};

}  // namespace orvo
