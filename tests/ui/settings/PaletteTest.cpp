#include "ui/settings/Palette.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace orvo {

namespace {

struct Pair {
  const char* name;
  QColor text;
  // From the opaque ground upwards.
  std::vector<QColor> grounds;
};

double contrast(const Pair& pair) {
  QColor ground = pair.grounds.front();
  for (const QColor& layer : pair.grounds) ground = composed(layer, ground);
  return contrastRatio(composed(pair.text, ground), ground);
}

std::vector<Pair> textPairs(const Palette& p) {
  return {
      {"secondary on the window", p.secondary, {p.window}},
      {"secondary on a soft card", p.secondary, {p.window, p.fill}},
      {"secondary on a soft card's badge", p.secondary, {p.window, p.fill, p.badge}},
      {"secondary on the setup card", p.secondary, {p.window, p.setupFill}},
      {"number of a step", p.secondary, {p.window, p.setupFill, p.quietStep}},
      {"secondary in the column", p.secondary, {p.column}},
      {"tertiary in the column", p.tertiary, {p.column}},
      {"placeholder in the search field", p.tertiary, {p.card}},
      {"secondary on a card", p.secondary, {p.card}},
      {"unchosen segment", p.secondary, {p.card, p.track}},
      {"unchosen segment under the pointer", p.secondary, {p.card, p.track, p.hover}},
      {"chosen segment", p.text, {p.thumb}},
      {"text of a button", p.text, {p.control, p.pressed}},
      {"option of a menu", p.text, {p.popup}},
      {"white on the accent", p.onAccent, {p.accentFill}},
      {"white on the accent under the pointer", p.onAccent, {p.accentFillHover}},
      {"selected page", p.accentText, {p.column, p.selection}},
      {"link", p.accentText, {p.window}},
      {"selected text", p.text, {p.card, p.textSelection}},
  };
}

std::vector<Pair> symbolPairs(const Palette& p) {
  return {{"symbol of a card", p.accentSymbol, {p.window, p.fill}},
          {"symbol of the guide", p.accentSymbol, {p.window, p.fill, p.guideTile}},
          {"mark of a detail", p.accentSymbol, {p.card}},
          {"warning", p.attention, {p.window, p.fill}},
          {"check mark of a step", p.onAccent, {orvoAccent()}},
          {"focus ring on a card", p.focusRing, {p.card}},
          {"focus ring in the column", p.focusRing, {p.column}}};
}

TEST(PaletteTest, TextIsReadableAndSymbolsAreSeenInBothAppearances) {
  for (const Palette* palette : {&Palette::light(), &Palette::dark()}) {
    const std::string appearance = palette == &Palette::dark() ? "dark: " : "light: ";
    for (const Pair& pair : textPairs(*palette)) EXPECT_GE(contrast(pair), 4.5) << appearance << pair.name;
    for (const Pair& pair : symbolPairs(*palette)) EXPECT_GE(contrast(pair), 3.0) << appearance << pair.name;
  }
}

TEST(PaletteTest, ContrastIsMeasuredAsDefined) {
  EXPECT_NEAR(contrastRatio(Qt::black, Qt::white), 21, 0.01);
  EXPECT_NEAR(contrastRatio(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
  EXPECT_EQ(composed(QColor(255, 255, 255, 0), Qt::black), QColor(Qt::black));
}

}  // namespace

}  // namespace orvo
