#include "platform/linux/desktop/StatusSymbols.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QtEndian>

#include <array>

namespace orvo {

namespace {

// Panels pick the nearest and do not scale up.
constexpr std::array pixmapSizes{16, 22, 24, 32, 48, 64};

// On a grid of 16 units, as in the icon files, whose outlines are these lines at this width.
constexpr double gridSize = 16;
constexpr double strokeWidth = 2;
constexpr double outlineWidth = 4;

QPainterPath chevron(const std::string& symbol) {
  QPainterPath path;
  if (symbol == "chevron.left") {
    path.moveTo(10, 3);
    path.lineTo(5, 8);
    path.lineTo(10, 13);
  } else if (symbol == "chevron.right") {
    path.moveTo(6, 3);
    path.lineTo(11, 8);
    path.lineTo(6, 13);
  }
  return path;
}

// A host that takes pictures does not say what colour its panel has, so the symbol brings its own
// contrast: light, with a dark edge.
QImage drawn(const QPainterPath& path, int size) {
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(size / gridSize, size / gridSize);
  painter.strokePath(path,
                     QPen(QColor(0x2E, 0x34, 0x36, 0xC0), outlineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.strokePath(path, QPen(Qt::white, strokeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.end();
  return image.convertToFormat(QImage::Format_ARGB32);
}

NotifierPixmap pixmapOf(const QImage& image) {
  NotifierPixmap pixmap{image.width(), image.height(), {}};
  pixmap.bytes.resize(image.sizeInBytes());
  qToBigEndian<quint32>(image.constBits(), image.sizeInBytes() / 4, pixmap.bytes.data());
  return pixmap;
}

}  // namespace

QString symbolIconName(const std::string& symbol) {
  if (chevron(symbol).isEmpty()) return {};
  return "orvo-" + QString::fromStdString(symbol).replace('.', '-') + "-symbolic";
}

NotifierPixmaps symbolPixmaps(const std::string& symbol) {
  const QPainterPath path = chevron(symbol);
  NotifierPixmaps pixmaps;
  if (path.isEmpty()) return pixmaps;
  for (const int size : pixmapSizes) pixmaps.append(pixmapOf(drawn(path, size)));
  return pixmaps;
}

}  // namespace orvo
