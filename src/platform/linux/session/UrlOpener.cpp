#include "platform/linux/session/UrlOpener.h"

#include "platform/linux/RegularFile.h"
#include "platform/linux/session/SessionBus.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <QVariantMap>

#include <algorithm>
#include <array>

#include <unistd.h>

namespace orvo {

namespace {

constexpr const char* accessibilityPage =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

constexpr std::size_t greatestInfo = 1U << 20U;  // bytes

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

// Absent for whatever is not a bundle with an identifier.
std::optional<QString> bundleIdentifierAt(const QString& root) {
  std::error_code error;
  const auto text = readRegularFile((root + QStringLiteral("/Info.json")).toStdString(), greatestInfo, error);
  const QJsonValue identifier = QJsonDocument::fromJson(QByteArray::fromStdString(text.value_or("")))
                                    .object()
                                    .value(QStringLiteral("CFBundleIdentifier"));
  if (!identifier.isString() || identifier.toString().isEmpty()) return std::nullopt;
  return identifier.toString();
}

// As the desktop entry specification derives it from the application's bus name.
QString objectPathOf(QString identifier) {
  identifier.replace(QLatin1Char('.'), QLatin1Char('/')).replace(QLatin1Char('-'), QLatin1Char('_'));
  return QLatin1Char('/') + identifier;
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

void UrlOpener::open(const std::string& url, const std::function<void()>& failed) const {
  const QString text = QString::fromStdString(url);
  if (text == QLatin1String(accessibilityPage)) {
    if (!openAccessibilitySettings() && failed) QTimer::singleShot(0, failed);
    return;
  }
  const QUrl parsed(text);
  if (parsed.isLocalFile()) {
    const QString path = parsed.toLocalFile();
    if (const auto identifier = bundleIdentifierAt(path)) return openBundle(path, *identifier);
  }
  openByDesktop(text, failed);
}

void UrlOpener::openBundle(const QString& root, const QString& identifier) const {
  if (!reopen(identifier)) start(root + QStringLiteral("/bin/orvo"), {});
}

// False only when no copy is running: one that is slow to answer is a running copy all the same.
bool UrlOpener::reopen(const QString& identifier) const {
  QDBusMessage message =
      session_bus::call(identifier, objectPathOf(identifier), "org.freedesktop.Application", "Activate");
  message << platformData();
  message.setAutoStartService(false);
  const QDBusMessage reply = bus_.call(message, QDBus::Block, static_cast<int>(handOverLimit.count()));
  const QString error = reply.errorName();
  return error != QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") &&
         error != QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") && bus_.isConnected();
}

}  // namespace orvo
