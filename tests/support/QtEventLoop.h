// Runs the real event loop until something is true.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

namespace orvo::test {

inline constexpr std::chrono::seconds waitLimit{20};

// Looks after every event, and every few milliseconds for what no event announces.
template <typename Condition>
bool runUntil(Condition condition) {
  const QDeadlineTimer deadline(waitLimit);
  QTimer look;
  look.start(std::chrono::milliseconds(2));
  while (!condition()) {
    if (deadline.hasExpired()) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return true;
}

}  // namespace orvo::test
