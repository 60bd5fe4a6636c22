// Icons of applications: as the desktop entry has it, else as the application's own tray item does.
// Owned by main.cpp; main thread. Answers that are outstanding when it is destroyed never come.
#pragma once

#include "platform/ApplicationIcons.h"
#include "platform/linux/session/ApplicationIdentities.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <utility>

namespace orvo {

class DesktopIcons : public QObject, public ApplicationIcons {
  Q_OBJECT

 public:
  explicit DesktopIcons(ApplicationIdentities& identities, QDBusConnection bus = QDBusConnection::sessionBus())
      : identities_(identities), bus_(std::move(bus)) {}

  void icon(std::int32_t processIdentifier, int size, Answer answer) override;

 private:
  void answerFromDesktop(std::int32_t processIdentifier, const ApplicationIdentity& identity, int size,
                         const Answer& answer);
  void answerFromTray(std::int32_t processIdentifier, int size, const Answer& answer);
  void answerFromItem(const QString& address, int size, const Answer& answer);

  ApplicationIdentities& identities_;
  QDBusConnection bus_;
};

}  // namespace orvo
