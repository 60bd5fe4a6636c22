#include "ui/settings/RoundedRectangle.h"

#include <QPainter>
#include <QPainterPath>
#include <QtQuick/private/qquicktranslate_p.h>

#include <algorithm>

namespace orvo {

namespace {

QPainterPath rounded(const QRectF& place, double radius) {
  QPainterPath path;
  const double fitting = std::clamp(radius, 0.0, std::min(place.width(), place.height()) / 2);
  path.addRoundedRect(place, fitting, fitting);
  return path;
}

}  // namespace

RoundedRectangle::RoundedRectangle(QQuickItem* parent) : QQuickPaintedItem(parent) {
  connect(this, &RoundedRectangle::changed, this, [this] { update(); });
  // Where an item begins in the middle of a pixel, the software renderer leaves out its first row and column. This is
  // as good as nowhere, but never the middle.
  auto* const nudge = new QQuickTranslate(this);
  nudge->setX(1.0 / 1024);
  nudge->setY(1.0 / 1024);
  nudge->appendToItem(this);
}

void RoundedRectangle::paint(QPainter* painter) {
  painter->setRenderHint(QPainter::Antialiasing);
  const QPainterPath outer = rounded(boundingRect(), radius_);
  painter->fillPath(outer, color_);
  if (borderColor_.alpha() == 0 || borderWidth_ <= 0) return;
  const QRectF within = boundingRect().adjusted(borderWidth_, borderWidth_, -borderWidth_, -borderWidth_);
  painter->fillPath(outer.subtracted(rounded(within, radius_ - borderWidth_)), borderColor_);
}

}  // namespace orvo
