#include "platform/linux/appearance/DesktopAppearance.h"

#include "platform/linux/bus/SessionBus.h"

#include <QDBusServiceWatcher>

#include <algorithm>
#include <cctype>

namespace orvo {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorSchemeKey = QStringLiteral("color-scheme");

bool containsDark(std::string name) {
  std::ranges::transform(name, name.begin(), [](unsigned char letter) { return std::tolower(letter); });
  return name.find("dark") != std::string::npos;
}

template <typename Value>
const Value* setting(const XSettingsValues& settings, const char* name) {
  const auto found = settings.find(name);
  return found == settings.end() ? nullptr : std::get_if<Value>(&found->second);
}

}  // namespace

AppearanceTraits appearanceTraits(const XSettingsValues& settings, unsigned portalColorScheme) {
  AppearanceTraits traits;
  if (const auto* name = setting<std::string>(settings, "Net/ThemeName"); name != nullptr && !name->empty()) {
    traits.dark = containsDark(*name);
  }
  if (portalColorScheme == 1 || portalColorScheme == 2) traits.dark = portalColorScheme == 1;
  const auto* animations = setting<std::int32_t>(settings, "Gtk/EnableAnimations");
  traits.reducesMotion = animations != nullptr && *animations == 0;
  return traits;
}

DesktopAppearance::DesktopAppearance() : settings_([this] { announce(); }) {
  QDBusConnection::sessionBus().connect(portalService, portalPath, portalInterface, QStringLiteral("SettingChanged"),
                                        this, SLOT(portalSettingChanged(QString, QString, QDBusVariant)));
  auto* const watcher = new QDBusServiceWatcher(portalService, QDBusConnection::sessionBus(),
                                                QDBusServiceWatcher::WatchForOwnerChange, this);
  connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] {
    setColorScheme(0U);
    askPortal();
  });
  askPortal();
}

AppearanceTraits DesktopAppearance::traits() const { return appearanceTraits(settings_.values(), colorScheme_); }

// A portal that does not run is not started for this: where a desktop uses it, it runs.
void DesktopAppearance::askPortal() {
  QDBusMessage call =
      QDBusMessage::createMethodCall(portalService, portalPath, portalInterface, QStringLiteral("Read"));
  call << appearanceGroup << colorSchemeKey;
  call.setAutoStartService(false);
  session_bus::ask(QDBusConnection::sessionBus(), call, session_bus::patience, this, [this](const QDBusMessage& reply) {
    if (reply.signature() == QLatin1String("v"))
      setColorScheme(reply.arguments().constFirst().value<QDBusVariant>().variant());
  });
}

void DesktopAppearance::portalSettingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
  if (group == appearanceGroup && key == colorSchemeKey) setColorScheme(value.variant());
}

void DesktopAppearance::setColorScheme(const QVariant& value) {
  // `Read` wraps the number in a second variant.
  const bool wrapped = value.canConvert<QDBusVariant>();
  colorScheme_ = (wrapped ? value.value<QDBusVariant>().variant() : value).toUInt();
  announce();
}

void DesktopAppearance::announce() const {
  if (observer_) observer_();
}

std::unique_ptr<Appearance> makeDesktopAppearance() { return std::make_unique<DesktopAppearance>(); }

}  // namespace orvo
