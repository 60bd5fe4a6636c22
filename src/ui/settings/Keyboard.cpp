#include "ui/settings/Keyboard.h"

#include <QKeyEvent>
#include <QQmlEngine>

namespace orvo {

namespace {

constexpr const char* engineProperty = "orvoKeyboard";

bool movesFocus(int key) {
  switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
      return true;
    default:
      return false;
  }
}

}  // namespace

Keyboard* Keyboard::create(QQmlEngine* engine, QJSEngine*) {
  auto* keyboard = engine->property(engineProperty).value<Keyboard*>();
  QJSEngine::setObjectOwnership(keyboard, QJSEngine::CppOwnership);
  return keyboard;
}

void Keyboard::installIn(QQmlEngine& engine) { engine.setProperty(engineProperty, QVariant::fromValue(this)); }

bool Keyboard::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::MouseButtonPress) setInUse(false);
  if (event->type() == QEvent::KeyPress && movesFocus(static_cast<QKeyEvent*>(event)->key())) setInUse(true);
  return QObject::eventFilter(watched, event);
}

void Keyboard::setInUse(bool inUse) {
  if (inUse_ == inUse) return;
  inUse_ = inUse;
  emit inUseChanged();
}

}  // namespace orvo
