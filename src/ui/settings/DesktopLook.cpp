#include "ui/settings/DesktopLook.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPalette>

#include <algorithm>

namespace orvo {

DesktopLook::DesktopLook(Appearance& appearance) : appearance_(appearance) {
  appearance_.setObserver([this] { emit changed(); });
}

DesktopLook::~DesktopLook() { appearance_.setObserver({}); }

// A desktop that states nothing may still have given Qt a dark palette.
bool DesktopLook::isDark() const {
  const QPalette palette = QGuiApplication::palette();
  return appearance_.traits().dark.value_or(palette.color(QPalette::Window).lightness() <
                                            palette.color(QPalette::WindowText).lightness());
}

int DesktopLook::titleWeight() {
  const QString family = QFontInfo(QGuiApplication::font()).family();
  const QStringList styles = QFontDatabase::styles(family);
  const bool hasMedium = std::ranges::any_of(
      styles, [&](const QString& style) { return QFontDatabase::weight(family, style) == QFont::Medium; });
  return hasMedium ? QFont::Medium : QFont::Bold;
}

}  // namespace orvo
