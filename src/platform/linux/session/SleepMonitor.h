// Announces the machine's sleep and its waking in the workspace's notification center. Holds sleep up
// until the observers, and the main-queue tasks that they posted, have run. Owned by main.cpp; main
// thread. Without a login manager it does nothing.
#pragma once

#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>

namespace orvo {

class SleepMonitor : public QObject {
  Q_OBJECT

 public:
  SleepMonitor(NotificationCenter& center, MainQueue& mainQueue, QDBusConnection bus = QDBusConnection::systemBus());

 private:
  Q_SLOT void prepareForSleep(bool sleeping);

  void delaySleep();

  NotificationCenter& center_;
  MainQueue& mainQueue_;
  QDBusConnection bus_;
  QDBusUnixFileDescriptor delay_;  // sleep waits while it is open
  bool sleeping_ = false;
};

}  // namespace orvo
