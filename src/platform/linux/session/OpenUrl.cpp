#include "platform/linux/session/OpenUrl.h"

#include "platform/linux/BundleInfo.h"
#include "platform/linux/bus/SessionBus.h"

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <QVariantMap>

#include <algorithm>
#include <array>

#include <nlohmann/json.hpp>
#include <unistd.h>

namespace orvo {

namespace {

constexpr const char* accessibilityPage =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

struct SettingsProgram {
  const char* desktop;  // as XDG_CURRENT_DESKTOP has it
  const char* program;
  const char* argument;  // null for none
};

constexpr std::array settingsPrograms{
    SettingsProgram{"XFCE", "xfce4-accessibility-settings", nullptr},
    SettingsProgram{"GNOME", "gnome-control-center", "universal-access"},
    SettingsProgram{"KDE", "systemsettings", "kcm_access"},
};

void setUp(QProcess& process, const QString& program, const QStringList& arguments) {
  process.setProgram(program);
  process.setArguments(arguments);
  process.setStandardInputFile(QProcess::nullDevice());
  process.setStandardOutputFile(QProcess::nullDevice());
  process.setProcessChannelMode(QProcess::ForwardedErrorChannel);  // Else what it opens writes into a pipe of Orvo's.
}

bool start(const QString& program, const QStringList& arguments) {
  QProcess process;
  setUp(process, program, arguments);
  return process.startDetached();
}

// Its exit status tells whether it found a program for the address. It may be that program's parent, so it goes on
// when Orvo ends: nobody owns the process but its end.
void openByDesktop(const QString& address, const std::function<void()>& failed) {
  auto* const process = new QProcess;
  setUp(*process, QStringLiteral("xdg-open"), {address});
  process->setChildProcessModifier([] { setsid(); });
  QObject::connect(
      process, &QProcess::errorOccurred, process,
      [process, failed](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart) return;
        process->deleteLater();
        if (failed) failed();
      },
      Qt::QueuedConnection);
  QObject::connect(process, &QProcess::finished, process, [process, failed](int status) {
    process->deleteLater();
    if (status != 0 && failed) failed();
  });
  process->start();
}

// The present desktop's own program first, then whichever is installed.
bool openAccessibilitySettings() {
  const auto desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':'));
  auto programs = settingsPrograms;
  std::stable_partition(programs.begin(), programs.end(), [&](const SettingsProgram& candidate) {
    return desktops.contains(QLatin1String(candidate.desktop));
  });
  for (const SettingsProgram& candidate : programs) {
    const QString program = QStandardPaths::findExecutable(QLatin1String(candidate.program));
    if (program.isEmpty()) continue;
    const QStringList arguments =
        candidate.argument != nullptr ? QStringList{QLatin1String(candidate.argument)} : QStringList();
    if (start(program, arguments)) return true;
  }
  return false;
}

// Lets the running copy bring its window to the front in the name of the click that started this one.
QVariantMap platformData() {
  QVariantMap data;
  for (const auto& [variable, key] :
       {std::pair{"DESKTOP_STARTUP_ID", "desktop-startup-id"}, std::pair{"XDG_ACTIVATION_TOKEN", "activation-token"}}) {
    if (const QString token = qEnvironmentVariable(variable); !token.isEmpty()) data[QLatin1String(key)] = token;
  }
  return data;
}

}  // namespace

void openUrl(const QDBusConnection& bus, const std::string& url, const std::function<void()>& failed) {
  const QString text = QString::fromStdString(url);
  if (text == QLatin1String(accessibilityPage)) {
    if (!openAccessibilitySettings() && failed) QTimer::singleShot(0, failed);
    return;
  }
  const QUrl parsed(text);
  const QString path = parsed.toLocalFile();
  const auto identifier = parsed.isLocalFile() ? bundleIdentifier(bundleInfo(path.toStdString())) : std::nullopt;
  if (!identifier) return openByDesktop(text, failed);
  const QString error = session_bus::activateApplication(bus, QString::fromStdString(*identifier), platformData());
  if (session_bus::meansNoOwner(error)) start(path + QStringLiteral("/bin/orvo"), {});
}

}  // namespace orvo
