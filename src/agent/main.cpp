// orvo-agent stands where the menu bar service stands on macOS: it tells the panel which icons there are.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <QCoreApplication>
#include <QDBusConnection>

#include "agent/Guardian.h"
#include "agent/IconRestorer.h"
#include "agent/MenuBarAgent.h"
#include "agent/MenuBarService.h"
#include "agent/PanelReader.h"
#include "agent/StatusNotifierWatcher.h"
#include "agent/TrayCensus.h"
#include "agent/rules/KeptItems.h"
#include "platform/linux/AgentProtocol.h"
#include "platform/linux/ApplicationIdentity.h"

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

// In the process that outlives the agent.
int restore(const orvo::Guardian::Bequest& bequest, int count, char** arguments) {
  if (bequest.kept.empty()) return EXIT_SUCCESS;
  QCoreApplication application(count, arguments);
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return EXIT_FAILURE;
  quitWithBus(bus, application);
  orvo::IconRestorer restorer(bus, bequest.agent, bequest.kept);
  QObject::connect(&restorer, &orvo::IconRestorer::finished, &application, &QCoreApplication::quit);
  return QCoreApplication::exec();
}

}  // namespace

int main(int count, char** arguments) {
  if (const auto bequest = orvo::Guardian::outlive(count, arguments)) return restore(*bequest, count, arguments);
  QCoreApplication application(count, arguments);
  const orvo::Guardian guardian;
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return fail("there is no session bus");
  quitWithBus(bus, application);

  orvo::MenuBarService service(bus);
  // The arrow that brings the icons back belongs to the bundle that the agent is part of.
  service.protect(orvo::bundleOfExecutable(QCoreApplication::applicationFilePath().toStdString()));
  QObject::connect(&service, &orvo::MenuBarService::changed, &service,
                   [&] { guardian.keep(orvo::keptItems(service.menuBar().items())); });
  orvo::TrayCensus census(bus, service);
  orvo::PanelReader panel(bus);
  orvo::StatusNotifierWatcher watcher(bus, service);
  QObject::connect(&census, &orvo::TrayCensus::listDoubted, &watcher, &orvo::StatusNotifierWatcher::announceList);
  orvo::MenuBarAgent agent(bus, service, watcher, panel);
  if (!agent.claimName()) return fail("another agent is running");
  if (!watcher.claimName()) return fail("the bus refuses the watcher's name");
  const int status = QCoreApplication::exec();
  return bus.isConnected() ? status : fail("the session bus is gone");
}
