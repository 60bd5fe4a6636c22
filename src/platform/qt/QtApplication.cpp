#include "platform/qt/QtApplication.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QSessionManager>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace orvo {

namespace {

bool hasVisibleWindows() {
  const auto windows = QGuiApplication::topLevelWindows();
  return std::any_of(windows.begin(), windows.end(), [](const QWindow* window) { return window->isVisible(); });
}

}  // namespace

QtApplication::QtApplication(QGuiApplication& application) {
  // The delegate alone says when the program ends.
  QCoreApplication::setQuitLockEnabled(false);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  application.installEventFilter(this);
  connect(&application, &QCoreApplication::aboutToQuit, this, [this] { announceEnd(); });
  // The login item alone starts the program: a session that restored it as well would open its settings.
  connect(
      &application, &QGuiApplication::saveStateRequest, this,
      [](QSessionManager& session) { session.setRestartHint(QSessionManager::RestartNever); }, Qt::DirectConnection);
}

void QtApplication::setDelegate(ApplicationDelegate* delegate) {
  delegate_ = delegate;
  if (delegate_ == nullptr) return;
  QGuiApplication::setQuitOnLastWindowClosed(delegate_->applicationShouldTerminateAfterLastWindowClosed());
}

void QtApplication::run() {
  if (phase_ != Phase::prepared) return;
  if (admission_ && !admission_()) return;
  phase_ = Phase::launched;
  if (delegate_ != nullptr) delegate_->applicationDidFinishLaunching();
  // Quitting from the delegate's own launch finds no event loop to end.
  if (phase_ == Phase::terminated) return;
  if (std::exchange(reopenWaits_, false)) reopen();
  QGuiApplication::exec();
  announceEnd();
}

void QtApplication::reopen() {
  if (phase_ == Phase::prepared) reopenWaits_ = true;
  if (phase_ == Phase::launched && delegate_ != nullptr) delegate_->applicationShouldHandleReopen(hasVisibleWindows());
}

void QtApplication::terminate() {
  announceEnd();
  QCoreApplication::quit();
}

void QtApplication::relaunch() {
  wantsRelaunch_ = true;
  terminate();
}

void QtApplication::announceEnd() {
  const Phase before = std::exchange(phase_, Phase::terminated);
  if (before == Phase::launched && delegate_ != nullptr) delegate_->applicationWillTerminate();
}

void QtApplication::handleEvent(EventType type, const std::function<void()>& handler) {
  const auto outer = std::exchange(currentEvent_, type);
  handler();
  currentEvent_ = outer;
}

// X11 desktops know no such policy: a program without windows has no entry anywhere, and its settings
// window should be found in the window list.
void QtApplication::setActivationPolicy(ActivationPolicy /*policy*/) {}

void QtApplication::activateIgnoringOtherApps() {
  for (QWindow* window : QGuiApplication::topLevelWindows()) {
    if (!window->isVisible()) continue;
    window->raise();
    window->requestActivate();
  }
}

// The main menu is never drawn; its key equivalents hold while one of the windows has the focus.
bool QtApplication::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress || !watched->isWindowType()) return false;
  return performKeyEquivalent(*static_cast<const QKeyEvent*>(event));
}

// Items for the first responder are left to the focused text field, which knows those keys itself.
bool QtApplication::performKeyEquivalent(const QKeyEvent& event) {
  if (event.modifiers() != Qt::ControlModifier || event.key() > 0x7F) return false;
  const std::string key(1, static_cast<char>(QChar(event.key()).toLower().toLatin1()));
  for (const MenuItem& top : mainMenu_.items) {
    for (const Menu& menu : top.submenu) {
      for (const MenuItem& item : menu.items) {
        const auto* action = std::get_if<std::function<void()>>(&item.action);
        if (action == nullptr || item.keyEquivalent != key) continue;
        (*action)();
        return true;
      }
    }
  }
  return false;
}

}  // namespace orvo
