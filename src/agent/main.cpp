// orvo-agent stands where the menu bar service stands on macOS: it tells the panel which icons there are.
#include <cstdio>
#include <cstdlib>

#include <QCoreApplication>
#include <QDBusConnection>

#include "agent/MenuBarAgent.h"
#include "agent/MenuBarService.h"
#include "agent/PanelReader.h"
#include "agent/StatusNotifierWatcher.h"
#include "platform/linux/AgentProtocol.h"

namespace {

int fail(const char* reason) {
  std::fprintf(stderr, "orvo-agent: %s\n", reason);
  return EXIT_FAILURE;
}

// Without the bus nobody can reach the agent, and the panel has the icons back.
void quitWithBus(QDBusConnection& bus, QCoreApplication& application) {
  bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"), QStringLiteral("org.freedesktop.DBus.Local"),
              QStringLiteral("Disconnected"), &application, SLOT(quit()));
}

}  // namespace

int main(int count, char** arguments) {
  QCoreApplication application(count, arguments);
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return fail("there is no session bus");
  quitWithBus(bus, application);

  orvo::MenuBarService service(bus);
  orvo::PanelReader panel(bus);
  orvo::StatusNotifierWatcher watcher(bus, service);
  orvo::MenuBarAgent agent(bus, service, watcher, panel);
  if (!agent.claimName()) return fail("another agent is running");
  if (!watcher.claimName()) return fail("the bus refuses the watcher's name");
  return QCoreApplication::exec();
}
