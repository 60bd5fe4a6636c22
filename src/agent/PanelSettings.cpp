#include "agent/PanelSettings.h"

#include <algorithm>
#include <chrono>

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFile>
#include <QVariantMap>

namespace orvo {

namespace {

constexpr std::chrono::seconds callLimit{2};

// No screen is finer.
constexpr int greatestScale = 16;

constexpr const char* panelName = "org.xfce.Panel";
constexpr const char* panelChannel = "xfce4-panel";
constexpr const char* desktopChannel = "xsettings";
constexpr const char* settingsName = "org.xfce.Xfconf";  // of the interface too
constexpr const char* settingsPath = "/org/xfce/Xfconf";
constexpr const char* accessibilityName = "org.a11y.Bus";  // of the interface too

// Settings hold lists of variants, which arrive unpacked to no depth.
QVariantList list(const QVariant& value) {
  QVariantList values;
  if (value.userType() != qMetaTypeId<QDBusArgument>()) return values;
  for (const QVariant& each : qdbus_cast<QVariantList>(value)) {
    values.append(each.userType() == qMetaTypeId<QDBusVariant>() ? each.value<QDBusVariant>().variant() : each);
  }
  return values;
}

PanelLayout layoutOf(const QVariantMap& settings, int panel) {
  PanelLayout layout;
  for (const QVariant& number : list(settings.value(QStringLiteral("/panels/panel-%1/plugin-ids").arg(panel)))) {
    const QString plugin = QStringLiteral("/plugins/plugin-%1").arg(number.toInt());
    layout.push_back({settings.value(plugin).toString().toStdString(), number.toInt()});
  }
  return layout;
}

BusCall settingsCall(const char* method, const QVariantList& arguments) {
  return {settingsName, settingsPath, settingsName, method, arguments};
}

// GTK lets its variable overrule the desktop's setting.
int scaleOf(std::uint32_t process, int setting) {
  QFile environment(QStringLiteral("/proc/%1/environ").arg(process));
  if (environment.open(QIODevice::ReadOnly)) {
    for (const QByteArray& variable : environment.readAll().split('\0'))
      if (variable.startsWith("GDK_SCALE=")) setting = variable.mid(variable.indexOf('=') + 1).toInt();
  }
  return std::clamp(setting, 1, greatestScale);
}

}  // namespace

PanelSettings::PanelSettings(QDBusConnection session) : session_(std::move(session)) { listen(); }

void PanelSettings::listen() {
  names_.setConnection(session_);
  names_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  for (const char* name : {panelName, settingsName, accessibilityName}) names_.addWatchedService(name);
  connect(&names_, &QDBusServiceWatcher::serviceOwnerChanged, this, &PanelSettings::heard);
  for (const char* channel : {panelChannel, desktopChannel})
    for (const char* signal : {"PropertyChanged", "PropertyRemoved"})
      session_.connect({}, settingsPath, settingsName, signal, {channel}, {}, this, SLOT(heard()));
}

void PanelSettings::forget() {
  isKnown_ = false;
  isOutdated_ = true;
}

void PanelSettings::heard() {
  forget();
  Q_EMIT changed();
}

void PanelSettings::read(Answer answer) {
  if (isKnown_) return answer(&facts_);
  answer_ = std::move(answer);
  facts_ = {};
  isOutdated_ = isFailed_ = false;
  ask(aboutName(QStringLiteral("GetConnectionUnixProcessID"), panelName), Need::nothing,
      [this](const QVariantList& reply) { askAboutPanel(reply.value(0).toUInt()); });
}

void PanelSettings::askAboutPanel(std::uint32_t process) {
  facts_.process = process;
  facts_.scale = scaleOf(process, 1);
  ask(settingsCall("GetProperty", {desktopChannel, "/Gdk/WindowScalingFactor"}), Need::nothing,
      [this](const QVariantList& answer) {
        facts_.scale = scaleOf(facts_.process, answer.value(0).value<QDBusVariant>().variant().toInt());
      });
  ask(settingsCall("GetAllProperties", {panelChannel, "/"}), Need::answer,
      [this](const QVariantList& answer) { readLayouts(answer); });
  ask({accessibilityName, "/org/a11y/bus", accessibilityName, "GetAddress", {}}, Need::nothing,
      [this](const QVariantList& answer) { facts_.accessibilityAddress = answer.value(0).toString().toStdString(); });
}

void PanelSettings::readLayouts(const QVariantList& answer) {
  const auto settings = qdbus_cast<QVariantMap>(answer.value(0));
  for (const QVariant& panel : list(settings.value("/panels")))
    facts_.layouts.push_back(layoutOf(settings, panel.toInt()));
}

void PanelSettings::ask(const BusCall& call, Need need, Handler handler) {
  ++open_;
  send(session_, call, callLimit, this, [=, this, handler = std::move(handler)](const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ReplyMessage) {
      handler(answer.arguments());
    } else if (need == Need::answer) {
      isFailed_ = true;
    }
    if (--open_ == 0) finish();
  });
}

// Without an address the accessibility bus may still be starting.
void PanelSettings::finish() {
  const bool isWhole = facts_.process == 0 || !facts_.accessibilityAddress.empty();
  isKnown_ = isWhole && !isFailed_ && !isOutdated_;
  std::exchange(answer_, nullptr)(isFailed_ ? nullptr : &facts_);
}

}  // namespace orvo
