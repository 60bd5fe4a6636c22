#include "agent/PanelReading.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QFile>
#include <QVariantMap>

namespace orvo {

namespace {

// Long enough for a panel that is starting, short enough that one which was stopped is asked anew soon.
constexpr std::chrono::seconds callLimit{2};

constexpr const char* panelName = "org.xfce.Panel";
constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";
constexpr const char* componentInterface = "org.a11y.atspi.Component";
constexpr std::uint32_t screenCoordinates = 0;  // ATSPI_COORD_TYPE_SCREEN
const QString accessibilityConnection = QStringLiteral("orvo-agent-accessibility");

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
    layout.push_back({settings.value(plugin).toString().toStdString(), settings.value(plugin + "/expand").toBool()});
  }
  return layout;
}

BusCall settingsCall(const char* method, const QVariantList& arguments) {
  return {"org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf", method, arguments};
}

// GTK lets its variable overrule the desktop's setting.
int scaleOf(std::uint32_t process, int setting) {
  QFile environment(QStringLiteral("/proc/%1/environ").arg(process));
  if (environment.open(QIODevice::ReadOnly)) {
    for (const QByteArray& variable : environment.readAll().split('\0'))
      if (variable.startsWith("GDK_SCALE=")) setting = variable.mid(variable.indexOf('=') + 1).toInt();
  }
  return std::max(setting, 1);
}

}  // namespace

void PanelReading::start() {
  ask(session_, aboutName(QStringLiteral("GetConnectionUnixProcessID"), panelName), Need::nothing,
      [this](const QVariantList& answer) { askAboutPanel(answer.value(0).toUInt()); });
}

void PanelReading::askAboutPanel(std::uint32_t process) {
  panelProcess_ = process;
  ask(session_, settingsCall("GetProperty", {"xsettings", "/Gdk/WindowScalingFactor"}), Need::nothing,
      [this](const QVariantList& answer) { scale_ = answer.value(0).value<QDBusVariant>().variant().toInt(); });
  ask(session_, settingsCall("GetAllProperties", {"xfce4-panel", "/"}), Need::answer,
      [this](const QVariantList& answer) { readSettings(answer); });
  ask(session_, {"org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", {}}, Need::nothing,
      [this](const QVariantList& answer) { openAccessibilityBus(answer); });
}

void PanelReading::readSettings(const QVariantList& answer) {
  const auto settings = qdbus_cast<QVariantMap>(answer.value(0));
  for (const QVariant& panel : list(settings.value("/panels"))) layouts_.push_back(layoutOf(settings, panel.toInt()));
}

void PanelReading::openAccessibilityBus(const QVariantList& answer) {
  accessibility_ = QDBusConnection(accessibilityConnection);
  if (!accessibility_.isConnected()) {
    QDBusConnection::disconnectFromBus(accessibilityConnection);
    accessibility_ = QDBusConnection::connectToBus(answer.value(0).toString(), accessibilityConnection);
  }
  askAccessible({"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"}, accessibleInterface, "GetChildren", {},
                [this](const QVariantList& reply) { findPanel(accessibles(reply)); });
}

// The bus knows whose process is whose: no other application is asked anything.
void PanelReading::findPanel(const std::vector<Accessible>& applications) {
  for (const Accessible& application : applications) {
    ask(accessibility_, aboutName(QStringLiteral("GetConnectionUnixProcessID"), application.service), Need::nothing,
        [this, application](const QVariantList& answer) {
          if (answer.value(0).toUInt() == panelProcess_) readFrames(application);
        });
  }
}

void PanelReading::readFrames(const Accessible& panel) {
  askAccessible(panel, accessibleInterface, "GetChildren", {}, [this](const QVariantList& answer) {
    const auto frames = accessibles(answer);
    for (std::size_t index = 0; index < frames.size(); ++index) {
      askAccessible(frames[index], accessibleInterface, "GetAttributes", {},
                    [=, this, frame = frames[index]](const QVariantList& attributes) {
                      const auto map = qdbus_cast<QMap<QString, QString>>(attributes.value(0));
                      if (map.value("window-type") == "dock") readDock(frame, index);
                    });
    }
  });
}

// A dock holds one container with a child for each plug-in.
void PanelReading::readDock(const Accessible& frame, std::size_t index) {
  askAccessible(frame, componentInterface, "GetExtents", {screenCoordinates},
                [=, this](const QVariantList& answer) { docks_[index].frame = extents(answer); });
  askAccessible(frame, accessibleInterface, "GetChildren", {}, [=, this](const QVariantList& answer) {
    const auto containers = accessibles(answer);
    if (!containers.empty()) readPlaces(containers.front(), index);
  });
}

void PanelReading::readPlaces(const Accessible& container, std::size_t index) {
  askAccessible(container, accessibleInterface, "GetChildren", {}, [=, this](const QVariantList& answer) {
    const auto plugins = accessibles(answer);
    docks_[index].places.resize(plugins.size());
    for (std::size_t place = 0; place < plugins.size(); ++place) {
      askAccessible(plugins[place], componentInterface, "GetExtents", {screenCoordinates},
                    [=, this](const QVariantList& box) { docks_[index].places[place] = extents(box); });
    }
  });
}

void PanelReading::ask(const QDBusConnection& bus, const BusCall& call, Need need, Handler handler) {
  ++open_;
  send(bus, call, callLimit, this, [=, this, handler = std::move(handler)](const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ReplyMessage) {
      handler(answer.arguments());
    } else if (need == Need::answer) {
      isFailed_ = true;
    }
    if (--open_ == 0) finish();
  });
}

void PanelReading::askAccessible(const Accessible& accessible, const char* interface, const char* method,
                                 const QVariantList& arguments, Handler handler) {
  ask(accessibility_, {accessible.service, accessible.path, interface, method, arguments}, Need::answer,
      std::move(handler));
}

void PanelReading::finish() {
  if (isFailed_) {
    Q_EMIT failed();
    return;
  }
  std::vector<Dock> docks;
  for (const auto& [index, dock] : docks_) docks.push_back(dock);
  auto controls = statusControls(layouts_, docks);
  const double scale = scaleOf(panelProcess_, scale_);
  for (auto& [word, frame] : controls)
    frame = {frame.x * scale, frame.y * scale, frame.width * scale, frame.height * scale};
  Q_EMIT read(controls);
}

std::vector<PanelReading::Accessible> PanelReading::accessibles(const QVariantList& answer) {
  std::vector<Accessible> found;
  const auto argument = answer.value(0).value<QDBusArgument>();
  if (argument.currentSignature() != "a(so)") return found;
  argument.beginArray();
  while (!argument.atEnd()) {
    Accessible accessible;
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> accessible.service >> path;
    argument.endStructure();
    accessible.path = path.path();
    found.push_back(accessible);
  }
  argument.endArray();
  return found;
}

Rect PanelReading::extents(const QVariantList& answer) {
  const auto argument = answer.value(0).value<QDBusArgument>();
  if (argument.currentSignature() != "(iiii)") return {};
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  argument.beginStructure();
  argument >> x >> y >> width >> height;
  argument.endStructure();
  return {static_cast<double>(x), static_cast<double>(y), static_cast<double>(width), static_cast<double>(height)};
}

}  // namespace orvo
