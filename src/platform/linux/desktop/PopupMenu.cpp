#include "platform/linux/desktop/PopupMenu.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPalette>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace orvo {

namespace {

// In points.
constexpr int rowHeight = 28;
constexpr int separatorHeight = 9;
constexpr int sideMargin = 16;
constexpr int edge = 4;

int heightOf(const MenuItem& item) { return item.separator ? separatorHeight : rowHeight; }

QSize sizeOf(const Menu& menu) {
  const QFontMetrics metrics(QGuiApplication::font());
  int width = 0;
  int height = 2 * edge;
  for (const MenuItem& item : menu.items) {
    width = std::max(width, metrics.horizontalAdvance(QString::fromStdString(item.title)));
    height += heightOf(item);
  }
  return {width + 2 * (sideMargin + edge), height};
}

QRect placed(QPoint position, QSize size) {
  const QScreen* screen = QGuiApplication::screenAt(position);
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  const QRect bounds = screen->geometry();
  return {std::clamp(position.x(), bounds.left(), std::max(bounds.left(), bounds.right() - size.width())),
          std::clamp(position.y(), bounds.top(), std::max(bounds.top(), bounds.bottom() - size.height())), size.width(),
          size.height()};
}

}  // namespace

PopupMenu::PopupMenu(Menu menu, QPoint position, std::function<void(const std::function<void()>&)> choose)
    : menu_(std::move(menu)), choose_(std::move(choose)) {
  setFlags(Qt::Popup | Qt::FramelessWindowHint);
  setTitle("Orvo");
  setGeometry(placed(position, sizeOf(menu_)));
  // With another window of the program focused, Qt gives that one the grabbed keys.
  QCoreApplication::instance()->installEventFilter(this);
  show();
  raise();
}

PopupMenu::~PopupMenu() = default;

// A grab can only be had once the window is on the screen.
void PopupMenu::exposeEvent(QExposeEvent* event) {
  if (isExposed()) {
    setMouseGrabEnabled(true);
    setKeyboardGrabEnabled(true);
  }
  QRasterWindow::exposeEvent(event);
}

bool PopupMenu::event(QEvent* event) {
  if (event->type() == QEvent::Leave) highlight(none);
  return QRasterWindow::event(event);
}

bool PopupMenu::eventFilter(QObject* watched, QEvent* event) {
  if (!isVisible() || event->type() != QEvent::KeyPress || !watched->isWindowType()) return false;
  press(static_cast<const QKeyEvent*>(event)->key());
  return true;
}

void PopupMenu::press(int key) {
  switch (key) {
    case Qt::Key_Escape:
      close();
      break;
    case Qt::Key_Down:
      moveHighlight(1);
      break;
    case Qt::Key_Up:
      moveHighlight(-1);
      break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
      chooseRow(highlighted_);
      break;
    default:
      break;
  }
}

void PopupMenu::mouseMoveEvent(QMouseEvent* event) { highlight(rowAt(event->position().toPoint())); }

void PopupMenu::mousePressEvent(QMouseEvent* event) {
  if (!QRect(QPoint(), size()).contains(event->position().toPoint())) close();
}

void PopupMenu::mouseReleaseEvent(QMouseEvent* event) { chooseRow(rowAt(event->position().toPoint())); }

void PopupMenu::chooseRow(int row) {
  if (!isVisible() || !mayChoose(row)) return;
  close();
  choose_(std::get<std::function<void()>>(itemAt(row).action));
}

void PopupMenu::moveHighlight(int step) {
  const int count = static_cast<int>(menu_.items.size());
  int row = highlighted_ == none && step < 0 ? 0 : highlighted_;
  for (int tried = 0; tried < count; ++tried) {
    row = (row + step + count) % count;
    if (mayChoose(row)) return highlight(row);
  }
}

void PopupMenu::highlight(int row) {
  const int wanted = mayChoose(row) ? row : none;
  if (std::exchange(highlighted_, wanted) != wanted) update();
}

bool PopupMenu::mayChoose(int row) const {
  return row >= 0 && row < static_cast<int>(menu_.items.size()) && isChoosable(menu_, itemAt(row));
}

const MenuItem& PopupMenu::itemAt(int row) const { return menu_.items[static_cast<std::size_t>(row)]; }

QRect PopupMenu::rowRect(int row) const {
  int top = edge;
  for (int above = 0; above < row; ++above) top += heightOf(itemAt(above));
  return {edge, top, width() - 2 * edge, heightOf(itemAt(row))};
}

int PopupMenu::rowAt(QPoint point) const {
  for (int row = 0; row < static_cast<int>(menu_.items.size()); ++row) {
    if (rowRect(row).contains(point)) return row;
  }
  return none;
}

void PopupMenu::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QPalette palette = QGuiApplication::palette();
  painter.fillRect(QRect(QPoint(), size()), palette.window());
  painter.setPen(palette.color(QPalette::Mid));
  painter.drawRect(0, 0, width() - 1, height() - 1);
  for (int row = 0; row < static_cast<int>(menu_.items.size()); ++row) paintRow(painter, row);
}

void PopupMenu::paintRow(QPainter& painter, int row) const {
  const QPalette palette = QGuiApplication::palette();
  const QRect area = rowRect(row);
  if (itemAt(row).separator) {
    painter.setPen(palette.color(QPalette::Mid));
    painter.drawLine(area.left(), area.center().y(), area.right(), area.center().y());
    return;
  }
  const bool lit = row == highlighted_;
  if (lit) painter.fillRect(area, palette.highlight());
  const auto group = mayChoose(row) ? QPalette::Active : QPalette::Disabled;
  painter.setPen(palette.color(group, lit ? QPalette::HighlightedText : QPalette::WindowText));
  painter.drawText(area.adjusted(sideMargin, 0, 0, 0), Qt::AlignVCenter, QString::fromStdString(itemAt(row).title));
}

}  // namespace orvo
