// A boolean property of a service on the session bus, followed by its announcements: false for as long as nobody
// says that it is true. The thread whose event loop it lives in, but for what any thread may ask.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <atomic>
#include <chrono>
#include <optional>

namespace orvo {

class FollowedProperty : public QObject {
  Q_OBJECT

 public:
  // Texts live as long as the process.
  struct Name {
    const char* service;
    const char* path;
    const char* interface;
    const char* property;
  };

  FollowedProperty(QDBusConnection bus, const Name& name, QObject* parent = nullptr);

  // As it was told last; any thread.
  bool value() const { return value_; }
  // Asks the service, which is started if need be, and waits; any thread.
  QDBusMessage ask(std::chrono::milliseconds limit) const;
  // What the answer says; absent for an error and for one of another form.
  static std::optional<bool> valueOf(const QDBusMessage& answer);

  void follow();
  // Asks; the value comes later.
  void fetch();
  // False for an answer that says nothing, and the value with it.
  bool take(const QDBusMessage& answer);

 signals:
  // Whenever the service has said it, new or not, and when the service is gone.
  void told(bool value);

 private:
  void set(bool value);

  Q_SLOT void propertiesChanged(const QString& interface, const QVariantMap& changed, const QStringList& invalidated);

  QDBusMessage question() const;

  QDBusConnection bus_;
  const Name name_;
  std::atomic<bool> value_ = false;
};

}  // namespace orvo
