// Makes the icon file of the macOS bundle from Orvo's drawing, at build time:
//   orvo-icon DRAWING.svg ICON.icns
// The format is four letters and a big-endian length for the file, and the same for each picture, which
// is a PNG. The letters name the size.
#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QtEndian>

#include <array>
#include <cstdio>

namespace {

struct Kind {
  const char* letters;
  int pixels;
};

// The plain sizes, then those for screens of twice the density.
constexpr std::array kinds{Kind{"icp4", 16},  Kind{"icp5", 32},  Kind{"ic07", 128}, Kind{"ic08", 256},
                           Kind{"ic09", 512}, Kind{"ic11", 32},  Kind{"ic12", 64},  Kind{"ic13", 256},
                           Kind{"ic14", 512}, Kind{"ic10", 1024}};

QByteArray chunk(const char* letters, const QByteArray& content) {
  const auto length = qToBigEndian(static_cast<quint32>(content.size() + 8));
  return QByteArray(letters, 4) + QByteArray(reinterpret_cast<const char*>(&length), 4) + content;
}

QByteArray picture(QSvgRenderer& drawing, int pixels) {
  QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  drawing.render(&painter);
  painter.end();
  QByteArray png;
  QBuffer buffer(&png);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, "PNG");
  return png;
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  if (argc != 3) return std::fputs("orvo-icon: give a drawing and the file to write.\n", stderr), 2;
  QSvgRenderer drawing(QString::fromLocal8Bit(argv[1]));
  QByteArray pictures;
  for (const Kind& kind : kinds) pictures += chunk(kind.letters, picture(drawing, kind.pixels));
  QFile file(QString::fromLocal8Bit(argv[2]));
  const QByteArray whole = chunk("icns", pictures);
  const bool written = drawing.isValid() && file.open(QIODevice::WriteOnly) && file.write(whole) == whole.size();
  return written ? 0 : 1;
}
