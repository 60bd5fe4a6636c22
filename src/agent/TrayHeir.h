// Follows the watcher that has the tray's name while the agent waits for it, and knows what that one knew:
// items see no change when the name goes on without a gap, and do not register again. Owned by
// StatusNotifierWatcher; main thread.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QStringList>

namespace orvo {

class TrayHeir : public QObject {
  Q_OBJECT

 public:
  explicit TrayHeir(QDBusConnection bus);

  // As items register, in the watcher's own order.
  const QStringList& items() const { return items_; }

 private:
  Q_SLOT void itemRegistered(const QString& item, const QDBusMessage& signal);
  Q_SLOT void itemUnregistered(const QString& item, const QDBusMessage& signal);

  void askOwner();
  void follow(const QString& owner);

  QDBusConnection bus_;
  QDBusServiceWatcher owners_;
  QString owner_;  // unique; empty for nobody, or the agent itself
  QStringList items_;
};

}  // namespace orvo
