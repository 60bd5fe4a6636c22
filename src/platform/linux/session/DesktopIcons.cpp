#include "platform/linux/session/DesktopIcons.h"

#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/session/PictureSource.h"

#include <QPointer>

#include <algorithm>
#include <chrono>

namespace orvo {

namespace {

constexpr const char* itemInterface = "org.kde.StatusNotifierItem";

// Of the agent and then of the item; an application that hangs has no picture of its own.
constexpr std::chrono::milliseconds answerLimit{2000};

}  // namespace

void DesktopIcons::icon(std::int32_t processIdentifier, int size, Answer answer) {
  const auto ask = [=, this, answer = std::move(answer)] {
    identities_.find(processIdentifier, [=, self = QPointer(this)](const ApplicationIdentity& identity) {
      if (self) self->answerFromDesktop(processIdentifier, identity, size, answer);
    });
  };
  QMetaObject::invokeMethod(this, ask, Qt::QueuedConnection);
}

void DesktopIcons::answerFromDesktop(std::int32_t processIdentifier, const ApplicationIdentity& identity, int size,
                                     const Answer& answer) {
  if (identity.bundleIdentifier.empty()) return answer(std::nullopt);
  const QString name = QString::fromStdString(identity.iconName.value_or(""));
  const auto picture = pictureOfIcon(name, size);
  if (picture) return answer(picture);
  answerFromTray(processIdentifier, size, answer);
}

void DesktopIcons::answerFromTray(std::int32_t processIdentifier, int size, const Answer& answer) {
  QDBusMessage question = session_bus::agentCall("Items");
  question.setAutoStartService(false);
  session_bus::ask(bus_, question, answerLimit, this, [=, this](const QDBusMessage& reply) {
    const auto items = session_bus::itemsAnswer(reply);
    const auto item = std::ranges::find(items, static_cast<quint32>(processIdentifier), &KnownItem::process);
    if (item == items.end()) return answer(std::nullopt);
    answerFromItem(item->address, size, answer);
  });
}

void DesktopIcons::answerFromItem(const QString& address, int size, const Answer& answer) {
  const auto slash = address.indexOf(QLatin1Char('/'));  // none for an icon of the older kind
  if (slash < 0) return answer(std::nullopt);
  QDBusMessage question =
      session_bus::call(address.left(slash), address.mid(slash), session_bus::propertiesInterface, "GetAll");
  question << session_bus::latin(itemInterface);
  question.setAutoStartService(false);
  session_bus::ask(bus_, question, answerLimit, this, [size, answer](const QDBusMessage& reply) {
    if (reply.signature() != QLatin1String("a{sv}")) return answer(std::nullopt);
    answer(pictureOfTrayItem(qdbus_cast<QVariantMap>(reply.arguments().constFirst()), size));
  });
}

}  // namespace orvo
