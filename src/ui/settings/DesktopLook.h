// How the desktop wants windows to look, as QML follows it. One for each engine, owned by the settings
// window; main thread only.
#pragma once

#include "platform/Appearance.h"
#include "ui/settings/EngineSingleton.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace orvo {

class DesktopLook : public QObject, public EngineSingleton<DesktopLook> {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

  Q_PROPERTY(bool isDark READ isDark NOTIFY changed)
  Q_PROPERTY(bool reducesMotion READ reducesMotion NOTIFY changed)
  // A weight between regular and bold where the font has one, else bold.
  Q_PROPERTY(int titleWeight READ titleWeight CONSTANT)

 public:
  // Follows `appearance`, which outlives it.
  explicit DesktopLook(Appearance& appearance);
  ~DesktopLook() override;

  bool isDark() const;
  bool reducesMotion() const { return appearance_.traits().reducesMotion; }
  static int titleWeight();

 signals:
  void changed();

 private:
  Appearance& appearance_;
};

}  // namespace orvo
