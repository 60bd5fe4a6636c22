#include "ui/settings/Symbol.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>

namespace orvo {

namespace {

// Every drawing has this edge length and names this weight once, on its root.
constexpr double drawingEdge = 20;
constexpr const char* drawnWeight = "stroke-width=\"1.5\"";

QByteArray drawing(const QString& name, double weight) {
  QFile file(QStringLiteral(":/orvo/symbols/%1.svg").arg(name));
  if (!file.open(QIODevice::ReadOnly)) return {};
  return file.readAll().replace(drawnWeight, "stroke-width=\"" + QByteArray::number(weight, 'f', 3) + '"');
}

}  // namespace

QImage symbolImage(const QString& name, QSize pixels, double size, double weight, const QColor& color) {
  QSvgRenderer renderer(drawing(name, weight * drawingEdge / size));
  if (!renderer.isValid() || pixels.isEmpty()) return {};
  QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  renderer.render(&painter);
  if (color.alpha() == 0) return image;
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(image.rect(), color);
  return image;
}

Symbol::Symbol(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setImplicitSize(size_, size_);
  connect(this, &Symbol::changed, this, [this] {
    setImplicitSize(size_, size_);
    update();
  });
}

void Symbol::paint(QPainter* painter) {
  const double edge = std::min({size_, width(), height()});
  const QRectF place((width() - edge) / 2, (height() - edge) / 2, edge, edge);
  const double scale = painter->transform().m11() * painter->device()->devicePixelRatioF();
  const int pixels = qRound(edge * scale);
  painter->drawImage(place, symbolImage(name_, {pixels, pixels}, edge, weight_, color_));
}

}  // namespace orvo
