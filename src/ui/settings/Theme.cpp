#include "ui/settings/Theme.h"

#include <QGuiApplication>
#include <QPalette>
#include <QQmlEngine>

namespace orvo {

namespace {

constexpr const char* engineProperty = "orvoTheme";

// A desktop that states nothing may still have given Qt a dark palette.
bool applicationPaletteIsDark() {
  const QPalette palette = QGuiApplication::palette();
  return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

}  // namespace

Theme::Theme(Appearance& appearance) : appearance_(appearance) {
  follow();
  appearance_.setObserver([this] { follow(); });
}

Theme::~Theme() { appearance_.setObserver({}); }

Theme* Theme::create(QQmlEngine* engine, QJSEngine*) {
  auto* theme = engine->property(engineProperty).value<Theme*>();
  QJSEngine::setObjectOwnership(theme, QJSEngine::CppOwnership);
  return theme;
}

void Theme::installIn(QQmlEngine& engine) { engine.setProperty(engineProperty, QVariant::fromValue(this)); }

void Theme::follow() {
  const AppearanceTraits traits = appearance_.traits();
  isDark_ = traits.dark.value_or(applicationPaletteIsDark());
  reducesMotion_ = traits.reducesMotion;
  static_cast<Palette&>(*this) = isDark_ ? Palette::dark() : Palette::light();
  emit changed();
}

}  // namespace orvo
