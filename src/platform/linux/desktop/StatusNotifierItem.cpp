#include "platform/linux/desktop/StatusNotifierItem.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QPointer>

#include <utility>

namespace orvo {

namespace {

constexpr const char* watcherService = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* itemPath = "/StatusNotifierItem";
constexpr const char* menuObjectPath = "/StatusNotifierItem/Menu";

constexpr std::uint32_t maskOf(EventType type) { return 1U << static_cast<std::uint32_t>(type); }

// The form that the protocol gives: process and a number of the item in it.
QString nextServiceName() {
  static int last = 0;
  return QString("org.kde.StatusNotifierItem-%1-%2").arg(QCoreApplication::applicationPid()).arg(++last);
}

}  // namespace

StatusNotifierItem::StatusNotifierItem(StatusNotifierServices services)
    : services_(std::move(services)),
      service_(nextServiceName()),
      watcher_(watcherService, services_.bus, QDBusServiceWatcher::WatchForOwnerChange),
      menu_(services_.bus, menuObjectPath, services_.queue, [this] { sendAction(EventType::rightMouseUp); }) {
  qDBusRegisterMetaType<NotifierPixmap>();
  qDBusRegisterMetaType<NotifierPixmaps>();
  qDBusRegisterMetaType<NotifierToolTip>();
  // Not only where nobody was: when a watcher dies, the next in the queue for its name has it at once.
  connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& owner) {
            if (!owner.isEmpty()) registerWithWatcher();
          });
  services_.bus.registerObject(
      itemPath, this,
      QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals | QDBusConnection::ExportAllProperties);
}

StatusNotifierItem::~StatusNotifierItem() {
  setVisible(false);
  services_.bus.unregisterObject(itemPath);
}

// A watcher drops an item whose name goes.
void StatusNotifierItem::setVisible(bool visible) {
  if (visible == std::exchange(visible_, visible)) return;
  if (!visible) {
    services_.bus.unregisterService(service_);
  } else if (services_.bus.registerService(service_)) {
    registerWithWatcher();
  }
}

// Nobody answers while there is no watcher; the next one to come is told then.
void StatusNotifierItem::registerWithWatcher() {
  if (!visible_) return;
  auto request =
      QDBusMessage::createMethodCall(watcherService, watcherPath, watcherService, "RegisterStatusNotifierItem");
  request.setAutoStartService(false);
  request << service_;
  services_.bus.send(request);
}

void StatusNotifierItem::setAction(std::function<void()> action, std::uint32_t eventMask) {
  action_ = std::move(action);
  eventMask_ = eventMask;
}

void StatusNotifierItem::sendAction(EventType type) {
  if (action_ && (eventMask_ & maskOf(type)) != 0) services_.application.handleEvent(type, action_);
}

void StatusNotifierItem::setAccessibilityLabel(const std::string& label) {
  const auto wanted = QString::fromStdString(label);
  if (std::exchange(title_, wanted) != wanted) emit NewTitle();
}

void StatusNotifierItem::setImage(const std::string& symbolName, const std::string& /*accessibilityDescription*/) {
  if (std::exchange(symbol_, symbolName) == symbolName) return;
  emit NewIcon();
  menu_.invalidate();
}

void StatusNotifierItem::setToolTip(const std::string& text) {
  const auto wanted = QString::fromStdString(text);
  if (std::exchange(toolTip_, wanted) != wanted) emit NewToolTip();
}

QDBusObjectPath StatusNotifierItem::menuPath() const { return QDBusObjectPath(menuObjectPath); }

// The host waits for the answer of the call that is being handled.
void StatusNotifierItem::Activate(int /*x*/, int /*y*/) {
  services_.queue.post([item = QPointer(this)] {
    if (item) item->sendAction(EventType::leftMouseUp);
  });
}

}  // namespace orvo
