#include "ui/settings/Symbol.h"

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>

namespace orvo {

namespace {

// Every drawing has this edge length and names this weight once, on its root.
constexpr double drawingEdge = 20;
constexpr const char* drawnWeight = "stroke-width=\"1.5\"";

// `weight` is in the units of the drawing.
QByteArray drawing(const QString& name, double weight) {
  QFile file(QStringLiteral(":/orvo/symbols/%1.svg").arg(name));
  if (!file.open(QIODevice::ReadOnly)) {
    qWarning("Orvo: no symbol is drawn under the name \"%s\".", qUtf8Printable(name));
    return {};
  }
  return file.readAll().replace(drawnWeight, "stroke-width=\"" + QByteArray::number(weight, 'f', 3) + '"');
}

// Null for a name that has no drawing.
QImage symbolImage(const QString& name, int edge, double weight, const QColor& color) {
  QSvgRenderer renderer(drawing(name, weight));
  if (!renderer.isValid() || edge <= 0) return {};
  QImage image(edge, edge, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  renderer.render(&painter);
  if (color.alpha() == 0) return image;
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(image.rect(), color);
  return image;
}

}  // namespace

Symbol::Symbol(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setImplicitSize(size_, size_);
  connect(this, &Symbol::changed, this, [this] {
    setImplicitSize(size_, size_);
    update();
  });
}

void Symbol::paint(QPainter* painter) {
  if (name_.isEmpty()) return;
  const double edge = std::min({size_, width(), height()});
  const QRectF place((width() - edge) / 2, (height() - edge) / 2, edge, edge);
  const double scale = painter->transform().m11() * painter->device()->devicePixelRatioF();
  const int pixels = qRound(edge * scale);
  painter->drawImage(place, symbolImage(name_, pixels, weight_ * drawingEdge / edge, color_));
}

}  // namespace orvo
