#include "ui/settings/Palette.h"

#include <algorithm>
#include <cmath>

namespace orvo {

namespace {

QColor withOpacity(QColor color, double opacity) {
  color.setAlphaF(static_cast<float>(opacity));
  return color;
}

// What is derived from text and accent alike in both appearances.
Palette derived(Palette palette) {
  palette.hover = withOpacity(palette.text, 0.05);
  palette.pressed = withOpacity(palette.text, 0.10);
  palette.fill = withOpacity(palette.text, 0.035);
  palette.badge = withOpacity(palette.text, 0.045);
  palette.quietStep = withOpacity(palette.text, 0.06);
  palette.outline = withOpacity(palette.text, 0.10);
  palette.divider = withOpacity(palette.text, 0.09);
  palette.selection = withOpacity(orvoAccent(), 0.11);
  palette.setupFill = withOpacity(orvoAccent(), 0.055);
  palette.setupOutline = withOpacity(orvoAccent(), 0.12);
  palette.guideTile = withOpacity(orvoAccent(), 0.09);
  palette.track = withOpacity(palette.text, 0.07);
  palette.textSelection = withOpacity(orvoAccent(), 0.30);
  palette.accentFill = QColor(0x1B, 0x7B, 0x71);
  palette.accentFillHover = QColor(0x18, 0x72, 0x69);
  palette.accentFillPressed = QColor(0x15, 0x66, 0x5E);
  palette.onAccent = Qt::white;
  return palette;
}

Palette makeLight() {
  Palette palette;
  palette.window = QColor(0xF5, 0xF5, 0xF6);
  palette.column = QColor(0xEB, 0xED, 0xEE);
  palette.card = Qt::white;
  palette.popup = Qt::white;
  palette.text = QColor(0x1C, 0x1D, 0x1F);
  palette.secondary = QColor(0x58, 0x5B, 0x61);
  palette.tertiary = QColor(0x65, 0x69, 0x70);
  palette.accentText = QColor(0x13, 0x62, 0x5A);
  palette.accentSymbol = orvoAccent();
  palette.attention = QColor(0xC9, 0x5F, 0x06);
  palette.thumb = Qt::white;
  palette.control = Qt::white;
  palette.controlOutline = QColor(0, 0, 0, 38);
  palette.focusRing = withOpacity(orvoAccent(), 0.85);
  return derived(palette);
}

Palette makeDark() {
  Palette palette;
  palette.window = QColor(0x1E, 0x1F, 0x21);
  palette.column = QColor(0x26, 0x28, 0x2A);
  palette.card = QColor(0x27, 0x28, 0x2B);
  palette.popup = QColor(0x30, 0x32, 0x35);
  palette.text = QColor(0xF1, 0xF2, 0xF3);
  palette.secondary = QColor(0xAD, 0xB0, 0xB5);
  palette.tertiary = QColor(0x98, 0x9C, 0xA2);
  palette.accentText = QColor(0x63, 0xC9, 0xBC);
  palette.accentSymbol = QColor(0x4F, 0xB8, 0xAB);
  palette.attention = QColor(0xFF, 0xA3, 0x3A);
  palette.thumb = QColor(0x5A, 0x5D, 0x62);
  palette.control = QColor(0x3A, 0x3C, 0x40);
  palette.controlOutline = QColor(255, 255, 255, 30);
  palette.focusRing = QColor(0x4F, 0xB8, 0xAB);
  Palette whole = derived(palette);
  // On dark ground the given strengths of the accent hardly show.
  whole.selection = withOpacity(orvoAccent(), 0.26);
  whole.guideTile = withOpacity(orvoAccent(), 0.24);
  whole.setupFill = withOpacity(orvoAccent(), 0.12);
  whole.setupOutline = withOpacity(orvoAccent(), 0.35);
  return whole;
}

double luminance(const QColor& color) {
  const auto linear = [](double channel) {
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

}  // namespace

const Palette& Palette::light() {
  static const Palette palette = makeLight();
  return palette;
}

const Palette& Palette::dark() {
  static const Palette palette = makeDark();
  return palette;
}

QColor orvoAccent() {
  static const QColor accent = QColor::fromRgbF(0.12F, 0.52F, 0.48F, 1.0F);
  return accent;
}

QColor composed(const QColor& over, const QColor& under) {
  const float share = over.alphaF();
  const auto mix = [share](float top, float bottom) { return top * share + bottom * (1 - share); };
  return QColor::fromRgbF(mix(over.redF(), under.redF()), mix(over.greenF(), under.greenF()),
                          mix(over.blueF(), under.blueF()));
}

double contrastRatio(const QColor& first, const QColor& second) {
  const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
  return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace orvo
