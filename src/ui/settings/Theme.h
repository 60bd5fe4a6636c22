// The theme that the QML files paint with: the palette of the desktop's present appearance, the type
// scale and the lengths of movements. One for each engine, owned by the settings window.
#pragma once

#include "platform/Appearance.h"
#include "ui/settings/Palette.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace orvo {

class Theme : public QObject, public Palette {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

  Q_PROPERTY(bool isDark MEMBER isDark_ NOTIFY changed)
  Q_PROPERTY(QColor window MEMBER window NOTIFY changed)
  Q_PROPERTY(QColor column MEMBER column NOTIFY changed)
  Q_PROPERTY(QColor card MEMBER card NOTIFY changed)
  Q_PROPERTY(QColor popup MEMBER popup NOTIFY changed)
  Q_PROPERTY(QColor text MEMBER text NOTIFY changed)
  Q_PROPERTY(QColor secondary MEMBER secondary NOTIFY changed)
  Q_PROPERTY(QColor tertiary MEMBER tertiary NOTIFY changed)
  Q_PROPERTY(QColor accent READ accent CONSTANT)
  Q_PROPERTY(QColor accentText MEMBER accentText NOTIFY changed)
  Q_PROPERTY(QColor accentSymbol MEMBER accentSymbol NOTIFY changed)
  Q_PROPERTY(QColor accentFill MEMBER accentFill NOTIFY changed)
  Q_PROPERTY(QColor accentFillHover MEMBER accentFillHover NOTIFY changed)
  Q_PROPERTY(QColor accentFillPressed MEMBER accentFillPressed NOTIFY changed)
  Q_PROPERTY(QColor onAccent MEMBER onAccent NOTIFY changed)
  Q_PROPERTY(QColor attention MEMBER attention NOTIFY changed)
  Q_PROPERTY(QColor outline MEMBER outline NOTIFY changed)
  Q_PROPERTY(QColor divider MEMBER divider NOTIFY changed)
  Q_PROPERTY(QColor hover MEMBER hover NOTIFY changed)
  Q_PROPERTY(QColor pressed MEMBER pressed NOTIFY changed)
  Q_PROPERTY(QColor fill MEMBER fill NOTIFY changed)
  Q_PROPERTY(QColor badge MEMBER badge NOTIFY changed)
  Q_PROPERTY(QColor quietStep MEMBER quietStep NOTIFY changed)
  Q_PROPERTY(QColor selection MEMBER selection NOTIFY changed)
  Q_PROPERTY(QColor setupFill MEMBER setupFill NOTIFY changed)
  Q_PROPERTY(QColor setupOutline MEMBER setupOutline NOTIFY changed)
  Q_PROPERTY(QColor guideTile MEMBER guideTile NOTIFY changed)
  Q_PROPERTY(QColor track MEMBER track NOTIFY changed)
  Q_PROPERTY(QColor thumb MEMBER thumb NOTIFY changed)
  Q_PROPERTY(QColor control MEMBER control NOTIFY changed)
  Q_PROPERTY(QColor controlOutline MEMBER controlOutline NOTIFY changed)
  Q_PROPERTY(QColor focusRing MEMBER focusRing NOTIFY changed)
  Q_PROPERTY(QColor textSelection MEMBER textSelection NOTIFY changed)

  // Milliseconds; zero where the desktop asks for no movement.
  Q_PROPERTY(int movement READ movement NOTIFY changed)

  // The type scale, in logical pixels.
  Q_PROPERTY(int titleSize MEMBER titleSize CONSTANT)
  Q_PROPERTY(int bodySize MEMBER bodySize CONSTANT)
  Q_PROPERTY(int smallSize MEMBER smallSize CONSTANT)
  Q_PROPERTY(int captionSize MEMBER captionSize CONSTANT)

 public:
  // Follows `appearance`, which outlives it.
  explicit Theme(Appearance& appearance);
  ~Theme() override;

  static Theme* create(QQmlEngine* engine, QJSEngine*);
  // Makes this the theme of the engine.
  void installIn(QQmlEngine& engine);

  bool isDark() const { return isDark_; }
  static QColor accent() { return orvoAccent(); }
  int movement() const { return reducesMotion_ ? 0 : movementMilliseconds; }

  static constexpr int movementMilliseconds = 130;
  int titleSize = 24;
  int bodySize = 13;
  int smallSize = 12;
  int captionSize = 11;

 signals:
  void changed();

 private:
  void follow();

  Appearance& appearance_;
  bool isDark_ = false;
  bool reducesMotion_ = false;
};

}  // namespace orvo
