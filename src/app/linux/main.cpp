// Picks the adapters of the Linux desktop, wires them and starts Orvo.
#include "app/OrvoMain.h"
#include "bridge/FrameworkEntry.h"
#include "platform/common/SettingsWindows.h"
#include "platform/common/ThreadExecutor.h"
#include "platform/linux/LinuxWords.h"
#include "platform/linux/desktop/AccessibilityGuard.h"
#include "platform/linux/desktop/AutostartLoginItem.h"
#include "platform/linux/desktop/BusApplication.h"
#include "platform/linux/desktop/FileUserDefaults.h"
#include "platform/linux/desktop/FolderBundle.h"
#include "platform/linux/desktop/IcuText.h"
#include "platform/linux/desktop/LinuxFileSystem.h"
#include "platform/linux/desktop/LinuxProcessInfo.h"
#include "platform/linux/desktop/StatusNotifierBar.h"
#include "platform/linux/display/X11HotKeys.h"
#include "platform/linux/framework/FrameworkLibrary.h"
#include "platform/linux/session/AgentAccessibility.h"
#include "platform/linux/session/ApplicationIdentities.h"
#include "platform/linux/session/DesktopIcons.h"
#include "platform/linux/session/DesktopWorkspace.h"
#include "platform/linux/session/SleepMonitor.h"
#include "platform/linux/x11/X11EventTaps.h"
#include "platform/linux/x11/XConnection.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtScreenObserver.h"

#include <QDir>
#include <QGuiApplication>

#include <unistd.h>

#include <array>
#include <cstdlib>
#include <iostream>
#include <memory>

namespace {

using namespace orvo;

// In the environment that Orvo gives to itself.
constexpr const char* reopenVariable = "ORVO_REOPENS";

// What comes before the decision how to run, none of which needs a display. Members are in the order
// in which they need each other: the queue outlives the framework, whose answers go there.
struct EarlyAdapters {
  explicit EarlyAdapters(std::vector<std::string> arguments) : processInfo(std::move(arguments)) {}

  LinuxProcessInfo processInfo;
  FolderBundle bundle{processInfo.arguments().empty() ? std::string() : processInfo.arguments().front()};
  QtMainQueue mainQueue;
  FrameworkLibrary framework{bundle.path()};
  AgentAccessibility accessibility;
  ApplicationIdentities identities;
  DesktopWorkspace workspace{identities, bundle.identifier()};
};

// Qt is told no argument: it has many of its own.
std::unique_ptr<QGuiApplication> makeQtApplication() {
  static int count = 1;
  static std::array<char, 5> name{"orvo"};
  static std::array<char*, 2> arguments{name.data(), nullptr};
  QCoreApplication::setApplicationName("orvo");
  QGuiApplication::setDesktopFileName("local.orvo.Orvo");
  return std::make_unique<QGuiApplication>(count, arguments.data());
}

QString symbolFolder(const Bundle& bundle) {
  const QDir folder(QString::fromStdString(bundle.path() + "/share/icons"));
  return folder.exists() ? folder.path() : QString();
}

// What the running application needs besides.
struct Adapters {
  explicit Adapters(EarlyAdapters& adapters) : early(adapters), qtApplication(makeQtApplication()) {
    if (getenv(reopenVariable) != nullptr) application.reopen();
    unsetenv(reopenVariable);
    if (early.bundle.identifier()) application.setAdmission([this] { return admit(); });
    QObject::connect(&busApplication, &BusApplication::busLost, &application, [this] { endWithBus(); });
  }

  // Two copies that start at once both find no other running; the bus lets one of them have the name.
  bool admit() {
    const auto outcome = busApplication.acquireOrHandOver();
    wasRefused = outcome == BusApplication::Outcome::refused;
    if (wasRefused) std::cerr << "Orvo: another program holds Orvo's name on the session bus; Orvo ends.\n";
    return outcome == BusApplication::Outcome::acquired || outcome == BusApplication::Outcome::noBus;
  }

  // An arrow that nobody can see or click would be all that is left of Orvo.
  void endWithBus() {
    std::cerr << "Orvo: the session bus is gone; Orvo ends.\n";
    application.terminate();
  }

  EarlyAdapters& early;
  bool wasRefused = false;
  AccessibilityGuard accessibilityGuard;
  std::unique_ptr<QGuiApplication> qtApplication;
  QtApplication application{*qtApplication};
  BusApplication busApplication{QDBusConnection::sessionBus(), early.bundle.identifier().value_or(""),
                                [this] { application.reopen(); }};
  FileUserDefaults userDefaults{FileUserDefaults::standardPath()};
  LinuxFileSystem fileSystem;
  X11EventTaps eventTaps{early.mainQueue, [this] { return early.accessibility.isProcessTrusted(); },
                         early.accessibility.controlPlaces()};
  X11HotKeys hotKeys{early.mainQueue};
  AutostartLoginItem loginItem{AutostartLoginItem::standardFolder(),
                               early.bundle.identifier().value_or("local.orvo.Orvo"), early.bundle.program()};
  IcuText localizedText;
  StatusNotifierBar statusBar{
      {QDBusConnection::sessionBus(), early.mainQueue, application, symbolFolder(early.bundle)}};
  SettingsWindows windows{early.bundle.path() + "/lib/liborvo-settings.so"};
  QtPasteboard pasteboard;
  DesktopIcons applicationIcons{early.identities};
  SleepMonitor sleepMonitor{early.workspace.notificationCenter(), early.mainQueue};
  QtScreenObserver screenObserver{early.mainQueue, application.notificationCenter()};
};

// The thread stands apart, so that its last task has ended before any adapter goes, whichever the task uses.
struct Program {
  explicit Program(EarlyAdapters& early) : adapters(early) { adapters.windows.setPlatform(platform); }

  Adapters adapters;
  ThreadExecutor scanExecutor;
  Platform platform{
      adapters.early.mainQueue,   scanExecutor,        adapters.userDefaults,    adapters.early.bundle,
      adapters.early.processInfo, adapters.fileSystem, adapters.early.workspace, adapters.early.accessibility,
      adapters.eventTaps,         adapters.hotKeys,    adapters.loginItem,       adapters.localizedText,
      adapters.application,       adapters.statusBar,  adapters.windows,         adapters.pasteboard,
      adapters.applicationIcons,  linuxWords};
};

}  // namespace

int main(int argc, char** argv) {
  EarlyAdapters early({argv, argv + argc});
  setConcealmentFramework(&early.framework, linuxWords);
  std::unique_ptr<Program> program;
  bool hasDisplay = true;
  OrvoMain::main({early.bundle, early.processInfo, early.accessibility, early.workspace, linuxWords}, std::cout,
                 [&]() -> const Platform* {
                   hasDisplay = XConnection::canOpen();
                   if (!hasDisplay) return nullptr;
                   program = std::make_unique<Program>(early);
                   return &program->platform;
                 });
  if (!hasDisplay) std::cerr << "Orvo: there is no X server to run on; Orvo ends.\n";
  if (program && program->adapters.application.wantsRelaunch()) {
    program.reset();
    setenv(reopenVariable, "", 1);
    execl(early.bundle.program().c_str(), argv[0], nullptr);
  }
  return hasDisplay && !(program && program->adapters.wasRefused) ? 0 : 1;
}
