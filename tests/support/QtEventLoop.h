// Runs the real event loop until something is true.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <chrono>

namespace orvo::testing {

inline constexpr std::chrono::seconds waitLimit{20};

template <typename Condition>
bool runUntil(Condition condition) {
  const QDeadlineTimer deadline(waitLimit);
  while (!condition()) {
    if (deadline.hasExpired()) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
  }
  return true;
}

}  // namespace orvo::testing
