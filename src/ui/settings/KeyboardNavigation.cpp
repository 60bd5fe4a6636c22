#include "ui/settings/KeyboardNavigation.h"

#include <QKeyEvent>

namespace orvo {

namespace {

bool movesFocus(int key) {
  switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
      return true;
    default:
      return false;
  }
}

}  // namespace

bool KeyboardNavigation::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::MouseButtonPress) setInUse(false);
  if (event->type() == QEvent::KeyPress) {
    const auto* key = static_cast<QKeyEvent*>(event);
    // One press is one action, however long it is held.
    if (key->isAutoRepeat() && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)) return true;
    if (movesFocus(key->key())) setInUse(true);
  }
  return QObject::eventFilter(watched, event);
}

void KeyboardNavigation::setInUse(bool inUse) {
  if (inUse_ == inUse) return;
  inUse_ = inUse;
  emit inUseChanged();
}

}  // namespace orvo
