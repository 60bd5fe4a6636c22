// Registers the items of a dead agent with whoever watches over the tray after it. The bus hands the
// watcher's name straight on to the panel, and many programs notice only a moment in which nobody has it.
// Owned by main; main thread of the process that outlives the agent.
#pragma once

#include <sys/types.h>

#include <string>

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QStringList>

namespace orvo {

class IconRestorer : public QObject {
  Q_OBJECT

 public:
  // `kept` is a text of keptItems().
  IconRestorer(QDBusConnection bus, pid_t agent, std::string kept);

 Q_SIGNALS:
  // Every item is registered, or no other watcher has come in time.
  void finished();

 private:
  void askWatcher();
  void registerMissing(const QStringList& listed);

  QDBusConnection bus_;
  const std::string kept_;
  QDBusServiceWatcher owner_;
  std::size_t open_ = 0;  // registrations without an answer
};

}  // namespace orvo
