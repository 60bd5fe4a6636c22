// A StatusNotifierWatcher on a connection of its own that only notes who registers. Goes from the
// bus when destroyed.
#pragma once

#include "PrivateSession.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>

namespace orvo::test {

class PlainWatcher final : public QDBusVirtualObject {
 public:
  PlainWatcher() {
    connection_->registerVirtualObject("/StatusNotifierWatcher", this);
    EXPECT_TRUE(connection_->registerService("org.kde.StatusNotifierWatcher"));
  }

  QString introspect(const QString& /*path*/) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (message.member() != "RegisterStatusNotifierItem") return false;
    registered.append(message.arguments().value(0).toString());
    connection.send(message.createReply());
    return true;
  }

  QStringList registered;

 private:
  std::shared_ptr<QDBusConnection> connection_ = otherConnection();
};

}  // namespace orvo::test
