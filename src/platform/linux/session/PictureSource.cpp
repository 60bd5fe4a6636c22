#include "platform/linux/session/PictureSource.h"

#include "platform/linux/FileThread.h"
#include "platform/linux/RegularFile.h"

#include <QBuffer>
#include <QDBusArgument>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QImage>
#include <QImageReader>
#include <QStandardPaths>
#include <QtEndian>
#include <QtGui/private/qiconloader_p.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

namespace orvo {

namespace {

// A file with more pixels on an edge, or more bytes, is no icon; decoding it would stall the window.
constexpr int largestFileEdge = 2048;
constexpr std::size_t largestFile = 4'000'000;

// At once, of FileThread's; the others are for more than pictures.
constexpr std::size_t mostReads = 4;

template <typename Work>
auto find(const std::string& subject, Work work) {
  return FileThread::find(subject, std::move(work), mostReads);
}

constexpr std::array fileEndings{".svg", ".png", ".xpm"};

std::optional<Picture> toPicture(QImage image, int size) {
  if (image.isNull()) return std::nullopt;
  const int edge = std::clamp(size, 1, largestPicture);
  if (image.width() > edge || image.height() > edge)
    image = image.scaled(edge, edge, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  image.convertTo(QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return std::nullopt;
  Picture picture{image.width(), image.height(), {}};
  picture.pixels.reserve(static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(image.height()));
  for (int line = 0; line < image.height(); ++line) {
    const auto* first = reinterpret_cast<const std::uint32_t*>(image.constScanLine(line));
    picture.pixels.insert(picture.pixels.end(), first, first + image.width());
  }
  return picture;
}

// The path, or what stands there, may come from any program.
std::optional<Picture> pictureOfFile(const QString& path, int size) {
  const std::string name = QFile::encodeName(path).toStdString();
  const auto read = find(name, [=] { return contentOf(name, largestFile); });
  QByteArray content = QByteArray::fromStdString(read.value_or(""));
  if (content.startsWith("\x1f\x8b")) return std::nullopt;  // a few packed bytes may unpack to any number
  QBuffer file(&content);
  QImageReader reader(&file);
  reader.setDecideFormatFromContent(true);
  const QSize whole = reader.size();
  const bool isDrawing = reader.format().startsWith("svg");
  if (!whole.isValid() || (!isDrawing && std::max(whole.width(), whole.height()) > largestFileEdge))
    return std::nullopt;
  // Lets drawings be drawn at the wanted size, whatever their own.
  const int edge = std::clamp(size, 1, largestPicture);
  reader.setScaledSize(whole.scaled(edge, edge, Qt::KeepAspectRatio));
  return toPicture(reader.read(), size);
}

// Qt reads the indexes of the themes in the folder, and would wait for a pipe in the place of one.
bool isSound(const QString& folder) {
  constexpr qint64 largestIndex = 1'000'000;
  constexpr int mostThemes = 500;
  QDirIterator themes(folder, QDir::Dirs | QDir::NoDotAndDotDot);
  for (int seen = 0; themes.hasNext() && seen < mostThemes; ++seen) {
    const QDir theme(themes.next());
    const QFileInfo index(theme, QStringLiteral("index.theme"));
    const QFileInfo cache(theme, QStringLiteral("icon-theme.cache"));
    if ((index.exists() && (!index.isFile() || index.size() > largestIndex)) || (cache.exists() && !cache.isFile()))
      return false;
  }
  return !themes.hasNext();
}

// As QIcon finds it, which would open whatever stands there.
QString themeFile(const QString& name, int size) {
  static const QStringList folders = QIcon::themeSearchPaths();
  const auto check = [] {
    QStringList sound;
    std::ranges::copy_if(folders, std::back_inserter(sound), isSound);
    return sound;
  };
  const auto sound = find("themes", check);
  if (!sound || sound->isEmpty()) return {};  // no folders at all would be the system's to Qt
  if (*sound != QIcon::themeSearchPaths()) QIcon::setThemeSearchPaths(*sound);
  const QThemeIconInfo found = QIconLoader::instance()->loadIcon(name);
  const QIconLoaderEngineEntry* entry = QIconLoaderEngine::entryForSize(found, {size, size});
  return entry == nullptr ? QString() : entry->filename;
}

QString pixmapsFile(const QString& name) {
  for (const char* ending : fileEndings) {
    const QString file = QStringLiteral("pixmaps/") + name + QLatin1String(ending);
    QString found = QStandardPaths::locate(QStandardPaths::GenericDataLocation, file);
    if (!found.isEmpty()) return found;
  }
  return {};
}

// The folder may be a bare one or laid out as a theme; it belongs to one program, so that it is small. Folders count
// too: there may be any number of empty ones.
QString fileInThemeFolder(const QString& folder, const QString& name) {
  constexpr int most = 2000;
  if (folder.isEmpty() || name.contains(QLatin1Char('/'))) return {};
  QStringList names;
  for (const char* ending : fileEndings) names << name + QLatin1String(ending);
  QDirIterator files(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
  for (int seen = 0; files.hasNext() && seen < most; ++seen) {
    QString path = files.next();
    if (names.contains(files.fileName())) return path;
  }
  return {};
}

// One entry of "IconPixmap": straight ARGB in network byte order.
QImage readPixmap(const QDBusArgument& list) {
  int width = 0;
  int height = 0;
  QByteArray bytes;
  list.beginStructure();
  list >> width >> height >> bytes;
  list.endStructure();
  if (width < 1 || height < 1 || width > largestPicture || height > largestPicture) return {};
  const auto count = static_cast<qsizetype>(width) * height;
  if (bytes.size() != count * static_cast<qsizetype>(sizeof(std::uint32_t))) return {};
  QImage image(width, height, QImage::Format_ARGB32);
  qFromBigEndian<std::uint32_t>(bytes.constData(), count, image.bits());
  return image;
}

// Smallest that need not be enlarged, else the largest.
bool suitsBetter(const QImage& left, const QImage& right, int size) {
  const bool leftIsEnough = left.width() >= size;
  if (leftIsEnough != (right.width() >= size)) return leftIsEnough;
  return leftIsEnough ? left.width() < right.width() : left.width() > right.width();
}

QImage bestPixmap(const QVariant& value, int size) {
  const auto list = value.value<QDBusArgument>();
  if (list.currentSignature() != QLatin1String("a(iiay)")) return {};
  QImage best;
  list.beginArray();
  while (!list.atEnd()) {
    QImage image = readPixmap(list);
    if (!image.isNull() && (best.isNull() || suitsBetter(image, best, size))) best = std::move(image);
  }
  list.endArray();
  return best;
}

}  // namespace

std::optional<Picture> pictureOfIcon(const QString& nameOrPath, int size) {
  if (nameOrPath.isEmpty()) return std::nullopt;
  if (QDir::isAbsolutePath(nameOrPath)) return pictureOfFile(nameOrPath, size);
  if (nameOrPath.contains(QLatin1Char('/'))) return std::nullopt;  // it would lead out of the folders of icons
  if (auto picture = pictureOfFile(themeFile(nameOrPath, size), size)) return picture;
  return pictureOfFile(pixmapsFile(nameOrPath), size);
}

std::optional<Picture> pictureOfTrayItem(const QVariantMap& properties, int size) {
  if (auto picture = toPicture(bestPixmap(properties.value(QStringLiteral("IconPixmap")), size), size)) return picture;
  const QString name = properties.value(QStringLiteral("IconName")).toString();
  const QString folder = properties.value(QStringLiteral("IconThemePath")).toString();
  const auto file = find(folder.toStdString(), [=] { return fileInThemeFolder(folder, name); });
  return pictureOfIcon(file && !file->isEmpty() ? *file : name, size);
}

}  // namespace orvo
