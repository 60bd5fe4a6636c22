// Whether the person moves about by keyboard just now: focus is marked then, and not after a click. One
// for each engine, owned by the settings window; main thread only.
#pragma once

#include "ui/settings/EngineSingleton.h"

#include <QKeyEvent>
#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <utility>

class QQuickWindow;

namespace orvo {

class KeyboardNavigation : public QObject, public EngineSingleton<KeyboardNavigation> {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

  Q_PROPERTY(bool inUse READ inUse NOTIFY inUseChanged)

 public:
  // Watches `window` as long as both live.
  explicit KeyboardNavigation(QQuickWindow& window);

  bool inUse() const { return inUse_; }

 signals:
  void inUseChanged();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  bool isRepeated(const QKeyEvent& key);
  void setInUse(bool inUse);

  bool inUse_ = false;
  std::pair<int, quint64> released_;  // the last key, and when
};

}  // namespace orvo
