// Orvo's arrow as a StatusNotifierItem on the session bus, with its menu beside it. Made by the
// status bar, owned by the delegate; main thread only. Nothing here waits for an answer of the bus.
#pragma once

#include "platform/StatusBar.h"
#include "platform/linux/desktop/ExportedMenu.h"
#include "platform/linux/desktop/StatusSymbols.h"
#include "platform/qt/QtApplication.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QObject>

namespace orvo {

struct NotifierToolTip {
  QString iconName;
  NotifierPixmaps iconPixmap;
  QString title;
  QString description;

  static auto membersOf(auto& tip) { return std::tie(tip.iconName, tip.iconPixmap, tip.title, tip.description); }
};

struct StatusNotifierServices {
  QDBusConnection bus;
  MainQueue& queue;
  QtApplication& application;
  // The folder of icon themes with the symbols; empty where there is none.
  QString iconThemePath;
};

class StatusNotifierItem final : public QObject, public StatusItem, public StatusItemButton {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
  Q_PROPERTY(QString Category READ category)
  Q_PROPERTY(QString Id READ id)
  Q_PROPERTY(QString Title READ title)
  Q_PROPERTY(QString Status READ status)
  Q_PROPERTY(uint WindowId READ windowId)
  Q_PROPERTY(QString IconThemePath READ iconThemePath)
  Q_PROPERTY(QString IconName READ iconName)
  Q_PROPERTY(orvo::NotifierPixmaps IconPixmap READ iconPixmap)
  Q_PROPERTY(QString OverlayIconName READ none)
  Q_PROPERTY(orvo::NotifierPixmaps OverlayIconPixmap READ noPixmaps)
  Q_PROPERTY(QString AttentionIconName READ none)
  Q_PROPERTY(orvo::NotifierPixmaps AttentionIconPixmap READ noPixmaps)
  Q_PROPERTY(QString AttentionMovieName READ none)
  Q_PROPERTY(orvo::NotifierToolTip ToolTip READ toolTip)
  Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
  Q_PROPERTY(QDBusObjectPath Menu READ menuPath)

 public:
  explicit StatusNotifierItem(StatusNotifierServices services);
  ~StatusNotifierItem() override;
  StatusNotifierItem(const StatusNotifierItem&) = delete;
  StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;

  // Panels remember an item's place by its Id, which is fixed.
  void setAutosaveName(const std::string& /*name*/) override {}
  // No panel lets a person drag an item out.
  void setBehavior(std::uint32_t /*behavior*/) override {}
  void setVisible(bool visible) override;
  StatusItemButton* button() override { return this; }

  void setAction(std::function<void()> action, std::uint32_t eventMask) override;
  // The item's title, which names it to assistive programs. Not IconAccessibleDesc: some panels show
  // that as a second line of the tool tip.
  void setAccessibilityLabel(const std::string& label) override;
  // Items have no such property.
  void setAccessibilityIdentifier(const std::string& /*identifier*/) override {}
  void setImage(const std::string& symbolName, const std::string& accessibilityDescription) override;
  void setToolTip(const std::string& text) override;
  // The panel does not tell the size that it gives an item.
  Rect bounds() const override { return {}; }
  // The panel places and shows it.
  void popUpMenu(const Menu& menu, Point /*point*/) override { menu_.setMenu(menu); }

  QString category() const { return "ApplicationStatus"; }
  QString id() const { return "Orvo"; }
  QString title() const { return title_; }
  QString status() const { return "Active"; }
  uint windowId() const { return 0; }
  QString iconThemePath() const { return services_.iconThemePath; }
  QString iconName() const { return iconThemePath().isEmpty() ? QString() : symbolIconName(symbol_); }
  NotifierPixmaps iconPixmap() const { return symbolPixmaps(symbol_); }
  NotifierToolTip toolTip() const { return {{}, {}, toolTip_, {}}; }
  bool itemIsMenu() const { return false; }
  QDBusObjectPath menuPath() const;
  QString none() const { return {}; }
  NotifierPixmaps noPixmaps() const { return {}; }

  Q_SLOT void Activate(int x, int y);
  Q_SLOT void SecondaryActivate(int /*x*/, int /*y*/) {}
  // Hosts that show the exported menu have no use for it.
  Q_SLOT void ContextMenu(int /*x*/, int /*y*/) {}
  Q_SLOT void Scroll(int /*delta*/, const QString& /*orientation*/) {}

 signals:
  void NewTitle();
  void NewIcon();
  void NewToolTip();
  void NewStatus(const QString& status);

 private:
  void registerWithWatcher();
  void sendAction(EventType type);

  StatusNotifierServices services_;
  const QString service_;
  QDBusServiceWatcher watcher_;
  ExportedMenu menu_;
  bool visible_ = false;
  std::function<void()> action_;
  std::uint32_t eventMask_ = 0;
  std::string symbol_;
  QString toolTip_;
  QString title_ = id();
};

}  // namespace orvo
