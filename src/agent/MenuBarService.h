// Keeps the menu bar in step with the session bus: resolves and watches the names of items and of those
// who conceal, and announces what changes. Calls nobody but the bus itself, and never waits for it.
// Owned by main; main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QStringList>

#include "agent/PanelViews.h"
#include "agent/rules/MenuBar.h"
#include "agent/rules/PanelNews.h"

namespace orvo {

class MenuBarService : public QObject {
  Q_OBJECT

 public:
  explicit MenuBarService(QDBusConnection bus);

  const MenuBar& menuBar() const { return menuBar_; }

  // What the panel was told; follows the menu bar, see PanelNews.
  std::vector<std::string> toldItems() const { return news_.told(); }
  bool isSettled() const { return news_.isSettled(); }

  // Somebody has asked for them, as panels do when they start.
  void toldItemsRead();

  // Has the panel make every view anew, where it shows other items than it was told.
  void renewViews();

  void protect(const std::string& bundle) { menuBar_.protect(bundle); }

  // `done` is called once the item is registered, or cannot be.
  void registerItem(const QString& text, const QString& sender, std::function<void()> done);

  // `done` gets the assertion once the panel has been told all that it can be told now, or 0 when the
  // requester has too many; it is never called for a
  // requester that has left the bus meanwhile.
  void activate(const QString& requester, const QStringList& allowedBundles, std::function<void(std::uint32_t)> done);

  // False when the requester has no such assertion.
  bool invalidate(std::uint32_t assertion, const QString& requester);

 Q_SIGNALS:
  void itemShown(const QString& address);
  void itemHidden(const QString& address);
  void itemArrived(const QString& address, uint processIdentifier, const QString& bundleIdentifier);
  void settled();  // the panel has been told everything, and has made its views
  void changed();  // after the others, and for a further name of an item alone

 private:
  void watch(const QString& name);
  bool answered(const QString& name);  // false when it was lost meanwhile
  void unwatch(const QString& name);
  void add(const TrayItem& item);
  void refuse(const std::string& whom, const char* what);
  void nameLost(const QString& name);
  void announce(const MenuBarChange& change);
  void tellPanel();
  void tell(const std::vector<News>& news);
  void follow(const std::string& address);

  QDBusConnection bus_;
  MenuBar menuBar_;
  PanelNews news_;
  PanelViews views_;
  QDBusServiceWatcher names_;
  std::multiset<QString> asking_;       // names about which the bus has yet to answer
  std::set<QString> requesters_;        // watched, and there when the watch began
  std::map<QString, int> registering_;  // by sender: registrations that the bus has yet to answer
  std::set<std::string> refused_;       // told on standard error
};

}  // namespace orvo
