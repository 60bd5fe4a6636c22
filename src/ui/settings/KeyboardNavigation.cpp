#include "ui/settings/KeyboardNavigation.h"

#include <QQuickItem>
#include <QQuickWindow>

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

// Rather than being typed.
bool acts(int key, const QQuickItem* focused) {
  const bool isTyping = focused != nullptr && focused->flags().testFlag(QQuickItem::ItemAcceptsInputMethod);
  return key == Qt::Key_Return || key == Qt::Key_Enter || (key == Qt::Key_Space && !isTyping);
}

}  // namespace

KeyboardNavigation::KeyboardNavigation(QQuickWindow& window) { window.installEventFilter(this); }

bool KeyboardNavigation::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::MouseButtonPress) setInUse(false);
  if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (isRepeated(*key) && acts(key->key(), static_cast<QQuickWindow*>(watched)->activeFocusItem())) return true;
    if (event->type() == QEvent::KeyPress && movesFocus(key->key())) setInUse(true);
  }
  return QObject::eventFilter(watched, event);
}

// One press is one action, however long it is held. An X server repeats a key by a release and a press of one moment,
// and Qt takes them for a repeat only where it has both at once.
bool KeyboardNavigation::isRepeated(const QKeyEvent& key) {
  const std::pair moment(key.key(), key.timestamp());
  if (key.type() == QEvent::KeyRelease) released_ = moment;
  return key.isAutoRepeat() || (key.type() == QEvent::KeyPress && key.timestamp() != 0 && released_ == moment);
}

void KeyboardNavigation::setInUse(bool inUse) {
  if (inUse_ == inUse) return;
  inUse_ = inUse;
  emit inUseChanged();
}

}  // namespace orvo
