// The watcher of the StatusNotifierItem protocol as panels and items see it, and the hold on its name.
// Owned by main; main thread.
#pragma once

#include <memory>

#include <QDBusConnection>
#include <QDBusContext>
#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QStringList>

namespace orvo {

class MenuBarService;
class TrayHeir;

inline constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";  // of the interface too
inline constexpr const char* watcherPath = "/StatusNotifierWatcher";

class StatusNotifierWatcher : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
  Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ toldItems SCRIPTABLE true)
  Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered SCRIPTABLE true)
  Q_PROPERTY(int ProtocolVersion READ protocolVersion SCRIPTABLE true)

 public:
  StatusNotifierWatcher(QDBusConnection bus, MenuBarService& service);
  ~StatusNotifierWatcher() override;

  // Waits in the queue where another program has the name; false when the bus refuses even that.
  bool claimName();
  bool isNameHeld() const { return held_; }

  QStringList toldItems() const;

  // Panels that follow the property take in what they have missed, and nothing else.
  void announceList();

  // Qt programs that hear "no" once do without an icon for the rest of the session, so the panel is
  // taken for granted.
  bool isHostRegistered() const { return true; }
  int protocolVersion() const { return 0; }

  Q_SCRIPTABLE Q_SLOT void RegisterStatusNotifierItem(const QString& service);
  Q_SCRIPTABLE Q_SLOT void RegisterStatusNotifierHost(const QString& service);

 Q_SIGNALS:
  Q_SCRIPTABLE void StatusNotifierItemRegistered(const QString& service);
  Q_SCRIPTABLE void StatusNotifierItemUnregistered(const QString& service);
  Q_SCRIPTABLE void StatusNotifierHostRegistered();
  Q_SCRIPTABLE void StatusNotifierHostUnregistered();

  void nameHeld();

 private:
  void takeName();
  void inherit();

  QDBusConnection bus_;
  MenuBarService& service_;
  bool held_ = false;
  std::unique_ptr<TrayHeir> heir_;  // while another program has the name
  QDeadlineTimer unrest_;           // after a takeover
};

}  // namespace orvo
