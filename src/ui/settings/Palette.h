// The colours of the settings window, light and dark. Plain values; main thread only, as Qt Gui is.
#pragma once

#include <QColor>

namespace orvo {

struct Palette {
  QColor window;
  QColor column;
  QColor card;  // the platform's control background
  QColor popup;
  QColor text;
  QColor secondary;
  QColor tertiary;
  QColor accentText;    // the accent where it is read, not only seen
  QColor accentSymbol;  // the accent where it is drawn on a background
  QColor accentFill;    // the accent under white text
  QColor accentFillHover;
  QColor accentFillPressed;
  QColor onAccent;
  QColor attention;
  QColor outline;
  QColor divider;
  QColor hover;
  QColor pressed;
  QColor fill;  // softly filled cards
  QColor badge;
  QColor quietStep;
  QColor selection;
  QColor setupFill;
  QColor setupOutline;
  QColor guideTile;
  QColor track;
  QColor thumb;
  QColor control;
  QColor controlOutline;
  QColor focusRing;
  QColor textSelection;

  static const Palette& light();
  static const Palette& dark();
};

// The one accent colour: sRGB 0.12, 0.52, 0.48.
QColor orvoAccent();

// `over` laid on an opaque `under`.
QColor composed(const QColor& over, const QColor& under);

// Of two opaque colours, from 1 to 21, as the web content accessibility guidelines define it.
double contrastRatio(const QColor& first, const QColor& second);

}  // namespace orvo
