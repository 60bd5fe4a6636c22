#include "ui/settings/ItemAccessibility.h"

#include <QQuickWindow>
#include <QtQuick/private/qaccessiblequickitem_p.h>
#include <QtQuick/private/qquickaccessibleattached_p.h>
#include <QtQuick/private/qquickitem_p.h>

#include <utility>

namespace orvo {

namespace {

void tell(QQuickItem* item, QAccessible::State changed) {
  QAccessibleStateChangeEvent event(item, changed);
  QAccessible::updateAccessibility(&event);
}

class ItemAccessibility : public QAccessibleQuickItem {
 public:
  explicit ItemAccessibility(QQuickItem* item) : QAccessibleQuickItem(item) {
    QObject::connect(item, &QQuickItem::enabledChanged, item, [item] {
      QAccessible::State changed;
      changed.disabled = true;
      tell(item, changed);
    });
    // Often asked for while it is being made, when it is only a child yet.
    if (const auto* attached = item->findChild<QQuickAccessibleAttached*>(QString(), Qt::FindDirectChildrenOnly)) {
      QObject::connect(attached, &QQuickAccessibleAttached::nameChanged, item,
                       [item, attached, before = attached->name()]() mutable {
                         const QString former = std::exchange(before, attached->name());
                         if (!former.isEmpty() && !before.isEmpty()) announce(item);
                       });
    }
  }

  // A button that opens a menu of choices is a combo box; the controls insist on what they are built of.
  QAccessible::Role role() const override {
    return object()->property("expanded").isValid() ? QAccessible::ComboBox : QAccessibleQuickItem::role();
  }

  // The focus is one item's, not also that of every scope around it, and a text is no place for it.
  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleQuickItem::state();
    state.disabled = !self()->isEnabled();
    state.focused = self()->window() != nullptr && self()->window()->activeFocusItem() == self();
    const bool declared = QQuickAccessibleAttached::property(object(), "focusable").toBool();
    state.focusable =
        !state.disabled && (self()->activeFocusOnTab() || (declared && role() != QAccessible::StaticText));
    if (const QVariant expanded = object()->property("expanded"); expanded.isValid()) {
      state.expandable = state.hasPopup = true;
      state.expanded = expanded.toBool();
      state.collapsed = !expanded.toBool();
    }
    return state;
  }

  // What stands to read: a picker's choice, a label's words.
  QString text(QAccessible::Text kind) const override {
    if (kind != QAccessible::Value || !isRead()) return QAccessibleQuickItem::text(kind);
    const QVariant value = object()->property("accessibleValue");
    return value.isValid() ? value.toString() : text(QAccessible::Name);
  }
  using QAccessibleQuickItem::text;

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::TextInterface && isRead()) return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleQuickItem::interface_cast(type);
  }

 private:
  QQuickItem* self() const { return static_cast<QQuickItem*>(object()); }
  bool isRead() const {
    switch (role()) {
      case QAccessible::StaticText:
      case QAccessible::Heading:
      case QAccessible::ComboBox:
      case QAccessible::Notification:
        return true;
      default:
        return false;
    }
  }

  // A notification is spoken when it comes to show, as it does with its first text, of which Qt itself tells. One that
  // takes the place of another shows afresh. One that its parent speaks for is no longer asked about.
  static void announce(QQuickItem* item) {
    const QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(item);
    if (interface == nullptr || interface->role() != QAccessible::Notification || !item->isVisible()) return;
    QAccessibleEvent event(item, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&event);
  }
};

// Asked for each class of an object, the most derived first; of a page Qt Quick's templates are asked before.
QAccessibleInterface* makeInterface(const QString& className, QObject* object) {
  if (className != QLatin1String("QQuickItem") && className != QLatin1String("QQuickPopupItem")) return nullptr;
  auto* item = qobject_cast<QQuickItem*>(object);
  const bool accessible = item != nullptr && QQuickItemPrivate::get(item)->isAccessible;
  return accessible ? new ItemAccessibility(item) : nullptr;
}

}  // namespace

void installItemAccessibility() { QAccessible::installFactory(makeInterface); }

}  // namespace orvo
