#include "ui/settings/ItemAccessibility.h"

#include <QtQuick/private/qaccessiblequickitem_p.h>
#include <QtQuick/private/qquickitem_p.h>

namespace orvo {

namespace {

class ItemAccessibility : public QAccessibleQuickItem {
 public:
  explicit ItemAccessibility(QQuickItem* item) : QAccessibleQuickItem(item) {
    QObject::connect(item, &QQuickItem::enabledChanged, item, [item] {
      QAccessible::State changed;
      changed.disabled = true;
      QAccessibleStateChangeEvent event(item, changed);
      QAccessible::updateAccessibility(&event);
    });
  }

  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleQuickItem::state();
    state.disabled = !static_cast<QQuickItem*>(object())->isEnabled();
    return state;
  }
};

// Asked for each class of an object, the most derived first.
QAccessibleInterface* makeInterface(const QString& className, QObject* object) {
  if (className != QLatin1String("QQuickItem")) return nullptr;
  auto* item = qobject_cast<QQuickItem*>(object);
  const bool accessible = item != nullptr && QQuickItemPrivate::get(item)->isAccessible;
  return accessible ? new ItemAccessibility(item) : nullptr;
}

}  // namespace

void installItemAccessibility() { QAccessible::installFactory(makeInterface); }

}  // namespace orvo
