// Follows the panel while it makes its view of an item: it asks the item's program one question after the
// other, and nobody tells when it is done. A question to the panel is answered behind what reached it
// before, and one to the item's program behind the panel's; so after a few of both in turn it is done,
// whoever is slow, busy or stopped. Owned by MenuBarService; main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include "agent/BusCall.h"
#include "agent/rules/ItemRegistry.h"

namespace orvo {

BusCall propertyOfItem(const TrayItem& item, const QString& name);

class PanelViews : public QObject {
  Q_OBJECT

 public:
  explicit PanelViews(QDBusConnection bus) : bus_(std::move(bus)) {}

  // To be called when the panel has just been told of the item.
  void follow(const TrayItem& item);
  void forget(const QString& address) { open_.erase(address); }

  // The item's own word; empty where it has none. Never called for an item whose program does not answer.
  void ask(const TrayItem& item, const QString& property, std::function<void(const QString&)> answer);

 Q_SIGNALS:
  void made(const QString& address);
  void delayed(const QString& address);

 private:
  struct Following {
    TrayItem item{};
    QStringList panels{};  // unique names
    int rounds = 0;
    int answers = 0;  // still to come from the panels in this round
    QTimer patience{};
  };

  void askPanels(Following& following);
  void askItem(Following& following);
  void proceed(Following& following);
  // Nothing for one that was forgotten, or followed anew, in the meantime.
  std::function<void(const QDBusMessage&)> ifStill(const Following& following,
                                                   std::function<void(Following&, const QDBusMessage&)> step);

  QDBusConnection bus_;
  std::map<QString, std::unique_ptr<Following>> open_;
};

}  // namespace orvo
