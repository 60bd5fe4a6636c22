#include "ui/settings/SettingsWindow.h"

#include "platform/FreeMemory.h"
#include "platform/UserDefaults.h"
#include "platform/WindowToolkit.h"
#include "ui/settings/DesktopLook.h"
#include "ui/settings/IconStore.h"
#include "ui/settings/ItemAccessibility.h"
#include "ui/settings/KeyboardNavigation.h"
#include "ui/settings/ViewBinding.h"

#include <QEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <utility>

// Generated for the QML module. Named here, or the linker leaves it out of a static library.
extern void qml_register_types_orvo_settings();

namespace orvo {

namespace {

const QUrl contentAddress(QStringLiteral("qrc:/orvo/settings/SettingsContent.qml"));

// A drag sends a flood of frames; the last of them is stored after this pause.
constexpr std::chrono::milliseconds frameSettles{500};

// Of a usual title bar, in points.
constexpr int titleBar = 30;

QSize toSize(Size size) { return {static_cast<int>(size.width), static_cast<int>(size.height)}; }

// What a screen has for the content: its panels and a usual title bar are left out.
QRect contentArea(const QScreen& screen) { return screen.availableGeometry().adjusted(0, 0, 0, -titleBar); }

QList<QRect> contentAreas() {
  QList<QRect> areas;
  for (const QScreen* screen : QGuiApplication::screens()) areas << contentArea(*screen);
  return areas;
}

Qt::WindowFlags windowFlags(std::uint32_t styleMask) {
  Qt::WindowFlags flags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowSystemMenuHint;
  flags.setFlag(Qt::WindowTitleHint, (styleMask & windowStyleTitled) != 0);
  flags.setFlag(Qt::WindowCloseButtonHint, (styleMask & windowStyleClosable) != 0);
  flags.setFlag(Qt::WindowMinimizeButtonHint, (styleMask & windowStyleMiniaturizable) != 0);
  flags.setFlag(Qt::WindowMaximizeButtonHint, (styleMask & windowStyleResizable) != 0);
  return flags;
}

// The window is small and mostly still: the software renderer shows it sooner than a GPU driver loads,
// and takes a third of the memory. QT_QUICK_BACKEND has its say as everywhere.
void prepareQuick() {
  static const bool prepared = [] {
    [[maybe_unused]] volatile auto registration = &qml_register_types_orvo_settings;
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND")) QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    return true;
  }();
  Q_UNUSED(prepared);
}

}  // namespace

SettingsWindow::SettingsWindow(WindowDescription description, OrvoView& view, const Platform& platform,
                               std::unique_ptr<Appearance> appearance)
    : description_(std::move(description)), view_(view), platform_(platform), appearance_(std::move(appearance)) {
  if (const auto stored = platform_.userDefaults.data(frameKey())) frame_ = decodeWindowFrame(*stored);
}

SettingsWindow::~SettingsWindow() {
  rememberFrame();
  dropScene();
}

std::string SettingsWindow::frameKey() const { return "NSWindow Frame " + description_.frameAutosaveName; }

void SettingsWindow::center() { centered_ = true; }

void SettingsWindow::makeKeyAndOrderFront() {
  if (!quickView_) open();
  if (!quickView_->isVisible()) {
    dress();
    applyFrame();
  }
  quickView_->setWindowStates(quickView_->windowStates() & ~Qt::WindowMinimized);
  quickView_->show();
  dress();
  quickView_->raise();
  quickView_->requestActivate();
}

void SettingsWindow::open() {
  prepareQuick();
  look_ = std::make_unique<DesktopLook>(*appearance_);
  icons_ = std::make_unique<IconStore>(view_);
  binding_ = std::make_unique<ViewBinding>(view_, platform_.mainQueue);
  quickView_ = std::make_unique<QQuickView>();
  // Qt Quick's own factory is there by now, and the last one is asked first.
  installItemAccessibility();
  QQmlEngine& engine = *quickView_->engine();
  engine.addImportPath(QStringLiteral("qrc:/"));
  look_->installIn(engine);
  icons_->installIn(engine);
  binding_->installIn(engine);
  keyboard_ = std::make_unique<KeyboardNavigation>(*quickView_);
  keyboard_->installIn(engine);
  // Window lists show it where no desktop file of Orvo's is installed.
  quickView_->setIcon(QIcon(QStringLiteral(":/orvo/symbols/orvo.svg")));
  quickView_->setTitle(QString::fromStdString(description_.title));
  quickView_->setFlags(windowFlags(description_.styleMask));
  connect(quickView_.get(), &QWindow::screenChanged, this, &SettingsWindow::boundMinimum);
  quickView_->setResizeMode(QQuickView::SizeRootObjectToView);
  quickView_->resize(toSize(description_.contentSize));
  boundMinimum();
  quickView_->setSource(contentAddress);
  quickView_->installEventFilter(this);
}

void SettingsWindow::dress() {
  const double covered = dressWindow(quickView_->winId(), description_);
  if (QQuickItem* const content = quickView_->rootObject()) content->setProperty("titleBarHeight", covered);
}

// Below the least size of its content, which then scrolls, where the screen has no room for that.
void SettingsWindow::boundMinimum() {
  const QScreen* const screen = quickView_ ? quickView_->screen() : nullptr;
  const QSize least = toSize(description_.minimumSize);
  if (screen == nullptr) return;
  quickView_->setMinimumSize(least.boundedTo(contentArea(*screen).size()));
  connect(screen, &QScreen::availableGeometryChanged, this, &SettingsWindow::boundMinimum, Qt::UniqueConnection);
}

void SettingsWindow::applyFrame() {
  const QScreen* const screen = quickView_->screen();
  if (frame_) {
    const auto frame = fitted(*frame_, toSize(description_.minimumSize), contentAreas()).value_or(*frame_);
    quickView_->resize(frame.size);
    quickView_->setFramePosition(frame.position);
  } else if (centered_ && screen != nullptr) {
    QRect place({0, 0}, quickView_->size().boundedTo(contentArea(*screen).size()));
    const QRect available = screen->availableGeometry();
    place.moveCenter(available.center());
    place.moveTop(std::max(place.top(), available.top() + titleBar));
    quickView_->setGeometry(place);
  }
}

bool SettingsWindow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Move || event->type() == QEvent::Resize) rememberFrameSoon();
  if (event->type() == QEvent::Close) {
    rememberFrame();
    platform_.mainQueue.post([self = QPointer(this)] {
      if (self && self->quickView_ && !self->quickView_->isVisible()) self->dropScene();
    });
  }
  return QObject::eventFilter(watched, event);
}

void SettingsWindow::dropScene() {
  platform_.mainQueue.cancel(std::exchange(rememberHandle_, MainQueue::Handle::none));
  quickView_.reset();
  // Where no exec() runs, nobody else deletes what Qt puts off.
  if (QThread::currentThread()->loopLevel() == 0) QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  keyboard_.reset();
  binding_.reset();
  icons_.reset();
  look_.reset();
  returnFreeMemory();
}

void SettingsWindow::rememberFrameSoon() {
  platform_.mainQueue.cancel(rememberHandle_);
  rememberHandle_ = platform_.mainQueue.runAfter(frameSettles, [self = QPointer(this)] {
    if (self) self->rememberFrame();
  });
}

// A maximized window goes back to the frame that it had before.
void SettingsWindow::rememberFrame() {
  if (!quickView_ || !quickView_->isVisible() || quickView_->windowState() != Qt::WindowNoState) return;
  const WindowFrame frame{quickView_->framePosition(), quickView_->size()};
  if (frame_ == frame) return;
  frame_ = frame;
  platform_.userDefaults.setData(frameKey(), encode(frame));
}

}  // namespace orvo
