#include "platform/linux/bus/FollowedProperty.h"

#include "platform/linux/bus/SessionBus.h"

#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <utility>

namespace orvo {

using session_bus::latin;

FollowedProperty::FollowedProperty(QDBusConnection bus, const Name& name, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), name_(name) {}

QDBusMessage FollowedProperty::ask(std::chrono::milliseconds limit) const {
  return bus_.call(question(), QDBus::Block, static_cast<int>(limit.count()));
}

std::optional<bool> FollowedProperty::valueOf(const QDBusMessage& answer) {
  if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String("v")) return std::nullopt;
  return answer.arguments().constFirst().value<QDBusVariant>().variant().toBool();
}

void FollowedProperty::follow() {
  const QString service = latin(name_.service);
  bus_.connect(service, latin(name_.path), latin(session_bus::propertiesInterface), QStringLiteral("PropertiesChanged"),
               this, SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
  auto* watcher = new QDBusServiceWatcher(service, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
  connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& newOwner) {
            set(false);
            if (!newOwner.isEmpty()) fetch();
          });
}

void FollowedProperty::fetch() {
  session_bus::ask(bus_, question(), session_bus::patience, this, [this](const QDBusMessage& answer) { take(answer); });
}

bool FollowedProperty::take(const QDBusMessage& answer) {
  const auto value = valueOf(answer);
  if (value)
    set(*value);
  else
    value_ = false;
  return value.has_value();
}

void FollowedProperty::set(bool value) {
  value_ = value;
  emit told(value);
}

void FollowedProperty::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                         const QStringList& invalidated) {
  if (interface != latin(name_.interface)) return;
  const auto value = changed.find(latin(name_.property));
  if (value != changed.end()) set(value->toBool());
  if (invalidated.contains(latin(name_.property))) fetch();
}

QDBusMessage FollowedProperty::question() const {
  QDBusMessage message =
      session_bus::call(latin(name_.service), latin(name_.path), session_bus::propertiesInterface, "Get");
  message << latin(name_.interface) << latin(name_.property);
  return message;
}

}  // namespace orvo
