// The desktop's appearance on Linux: the portal's color-scheme where it states one, else the GTK
// theme's name ("…-dark"), which is how Xfce says it; motion from GTK's "enable animations". Owned by
// the settings window; main thread only.
#pragma once

#include "platform/Appearance.h"
#include "platform/linux/display/XSettings.h"

#include <QDBusVariant>
#include <QObject>

namespace orvo {

// The portal's numbers: 1 asks for dark, 2 for light, all others leave it open.
AppearanceTraits appearanceTraits(const XSettingsValues& settings, unsigned portalColorScheme);

class DesktopAppearance : public QObject, public Appearance {
  Q_OBJECT

 public:
  DesktopAppearance();

  AppearanceTraits traits() const override;
  void setObserver(std::function<void()> observer) override { observer_ = std::move(observer); }

 private:
  Q_SLOT void portalSettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
  void askPortal();
  void setColorScheme(const QVariant& value);
  void announce() const;

  XSettings settings_;
  unsigned colorScheme_ = 0;
  std::function<void()> observer_;
};

}  // namespace orvo
