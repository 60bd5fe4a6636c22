// Icons of applications: as the desktop entry has it, else as the application's own tray item does.
// Owned by main.cpp; main thread. Answers that are outstanding when it is destroyed never come.
#pragma once

#include "platform/ApplicationIcons.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <utility>

namespace orvo {

class DesktopIcons : public QObject, public ApplicationIcons {
  Q_OBJECT

 public:
  explicit DesktopIcons(QDBusConnection bus = QDBusConnection::sessionBus()) : bus_(std::move(bus)) {}

  void icon(std::int32_t processIdentifier, int size, Answer answer) override;

 private:
  void answerFromDesktop(std::int32_t processIdentifier, int size, const Answer& answer);
  void answerFromTray(std::int32_t processIdentifier, int size, const Answer& answer);
  void answerFromItem(const QString& address, int size, const Answer& answer);

  QDBusConnection bus_;
};

}  // namespace orvo
