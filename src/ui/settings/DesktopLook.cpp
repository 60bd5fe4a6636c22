#include "ui/settings/DesktopLook.h"

#include <QGuiApplication>
#include <QPalette>

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

}  // namespace orvo
