// orvo-agent stands where the menu bar service stands on macOS: it tells the panel which icons there are.
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "agent/Guardian.h"
#include "agent/IconRestorer.h"
#include "agent/LegacyTray.h"
#include "agent/MenuBarAgent.h"
#include "agent/MenuBarService.h"
#include "agent/PanelReader.h"
#include "agent/StatusNotifierWatcher.h"
#include "agent/TrayCensus.h"
#include "agent/rules/KeptItems.h"
#include "platform/linux/ApplicationIdentity.h"
#include "platform/linux/ApplicationLookup.h"

namespace {

// Icons wait for it to be known whose they are; a slow disk has told by then.
constexpr std::chrono::seconds applicationLimit{1};

int fail(const char* reason) {
  std::fprintf(stderr, "orvo-agent: %s\n", reason);
  return EXIT_FAILURE;
}

// Where sd-bus looks for it too.
std::string sessionAddress() {
  if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS")) return address;
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  return folder == nullptr ? "" : std::string("unix:path=") + folder + "/bus";
}

// Null without one. Its end ends the loop: nobody can reach the agent then, and the panel has the icons back.
orvo::BusHandle connectToSession(sd_event* loop) {
  orvo::BusHandle bus = orvo::connectTo(sessionAddress());
  if (!bus) return nullptr;
  sd_bus_set_exit_on_disconnect(bus.get(), 1);
  const bool isWhole =
      sd_bus_attach_event(bus.get(), loop, SD_EVENT_PRIORITY_NORMAL) >= 0 && !orvo::uniqueName(bus.get()).empty();
  return isWhole ? std::move(bus) : nullptr;
}

// In the process that outlives the agent.
int restore(const orvo::Guardian::Bequest& bequest) {
  const auto loop = orvo::newLoop();
  const auto bus = connectToSession(loop.get());
  if (!bus) return EXIT_FAILURE;
  orvo::Timer end(loop.get(), [&] { sd_event_exit(loop.get(), EXIT_SUCCESS); });
  std::unique_ptr<orvo::LegacyTray> legacy;
  // Icons of the older kind are back by the X server's hand, some of them blank. A server that hangs holds up
  // nothing else then.
  const auto draw = [&] {
    if (end.isActive()) return;
    legacy = orvo::LegacyTray::open(loop.get());
    if (legacy) legacy->follow();
    end.start(orvo::LegacyTray::drawingTime);
  };
  const orvo::IconRestorer restorer(bus.get(), bequest.agent, bequest.kept, draw);
  return sd_event_loop(loop.get());
}

}  // namespace

int main(int count, char** arguments) {
  if (const auto bequest = orvo::Guardian::outlive(count, arguments)) return restore(*bequest);
  std::signal(SIGPIPE, SIG_IGN);  // whoever read our standard error may be gone
  const auto loop = orvo::newLoop();
  std::optional<orvo::Guardian> guardian;
  const auto bus = connectToSession(loop.get());
  if (!bus) return fail("there is no session bus");

  orvo::ApplicationLookup applications(loop.get(), applicationLimit);
  orvo::MenuBarService service(bus.get(), applications);
  // The arrow that brings the icons back belongs to the bundle that the agent is part of.
  service.protect(orvo::bundleOfExecutable(std::filesystem::read_symlink("/proc/self/exe")));
  orvo::StatusNotifierWatcher watcher(bus.get(), service);
  orvo::TrayCensus census(bus.get(), service, [&] { watcher.announceList(); });
  orvo::PanelReader panel(bus.get());
  const auto legacy = orvo::LegacyTray::open(loop.get());
  orvo::MenuBarAgent agent(bus.get(), applications, service, watcher, panel, legacy.get());
  if (!agent.claimName()) return fail("another agent is running");
  guardian.emplace(loop.get());
  applications.onLate = [&](std::int32_t process, const orvo::ApplicationIdentity& identity) {
    service.identify(process, identity.bundleIdentifier);
    if (legacy) legacy->identify(process, identity.bundleIdentifier);
    agent.announceItems(process);
  };
  service.onChanged = [&] {
    guardian->keep(orvo::keptItems(service.menuBar().items()));
    // Icons that go move what stands beside them, and only while some are gone does it matter where that is.
    panel.watch(service.menuBar().isConcealing());
    if (legacy) legacy->apply([&](const std::string& bundle) { return service.menuBar().shows(bundle); });
  };
  if (!watcher.claimName()) return fail("the bus refuses the watcher's name");
  if (legacy) legacy->follow();
  sd_event_loop(loop.get());
  return fail("the session bus is gone");
}
