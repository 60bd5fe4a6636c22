// A panel that writes down what the watcher announces. Main thread.
#pragma once

#include <utility>

#include <QDBusConnection>
#include <QDBusInterface>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace orvo::test {

class ListeningPanel : public QObject {
  Q_OBJECT

 public:
  explicit ListeningPanel(QDBusConnection bus) : bus_(std::move(bus)) {
    const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
    const QString path = QStringLiteral("/StatusNotifierWatcher");
    bus_.connect(QString(), path, watcher, QStringLiteral("StatusNotifierItemRegistered"), this, SLOT(shown(QString)));
    bus_.connect(QString(), path, watcher, QStringLiteral("StatusNotifierItemUnregistered"), this,
                 SLOT(hidden(QString)));
  }

  // What it was told since the last time: "+" or "-" and the address.
  QStringList heard() { return std::exchange(heard_, {}); }

  QVariant property(const char* name) const {
    QDBusInterface watcher(QStringLiteral("org.kde.StatusNotifierWatcher"), QStringLiteral("/StatusNotifierWatcher"),
                           QStringLiteral("org.kde.StatusNotifierWatcher"), bus_);
    return watcher.property(name);
  }
  QStringList items() const { return property("RegisteredStatusNotifierItems").toStringList(); }

 private:
  Q_SLOT void shown(const QString& address) { heard_ << '+' + address; }
  Q_SLOT void hidden(const QString& address) { heard_ << '-' + address; }

  QDBusConnection bus_;
  QStringList heard_;
};

}  // namespace orvo::test
