// Stands before Qt's own object on the accessibility bus and lets through what that survives: Qt 6.4 takes the
// number, the kinds and the sizes of arguments for granted, so that one call with other ones, such as a request
// for all properties, ends the program. Owned by main.cpp and made before the application object; main thread only.
#pragma once

#include <QAccessible>
#include <QDBusVirtualObject>

namespace orvo {

class AccessibilityGuard final : public QDBusVirtualObject, private QAccessible::ActivationObserver {
 public:
  AccessibilityGuard() { QAccessible::installActivationObserver(this); }
  ~AccessibilityGuard() override;
  AccessibilityGuard(const AccessibilityGuard&) = delete;
  AccessibilityGuard& operator=(const AccessibilityGuard&) = delete;

  QString introspect(const QString& path) const override;
  // What is not passed on is answered by QtDBus with an error.
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  void accessibilityActiveChanged(bool active) override;
};

// Whether Qt's object can be asked this.
bool isHarmlessAccessibilityCall(const QDBusMessage& message);

}  // namespace orvo
