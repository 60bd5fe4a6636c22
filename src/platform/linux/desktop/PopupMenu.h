// A menu in a window of its own, for the panels that ask an item to show its menu itself. Owned by
// the status item; main thread only. A choice, Escape or a click elsewhere closes it.
#pragma once

#include "platform/Menu.h"

#include <QRasterWindow>

#include <functional>

namespace orvo {

class PopupMenu final : public QRasterWindow {
 public:
  // Shown at `position` of the screen, moved as far as it takes to stay on it. `choose` is called at
  // most once, with the action of the chosen row, after the menu is closed.
  PopupMenu(Menu menu, QPoint position, std::function<void(const std::function<void()>&)> choose);
  ~PopupMenu() override;

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void exposeEvent(QExposeEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  static constexpr int none = -1;

  bool mayChoose(int row) const;
  const MenuItem& itemAt(int row) const;
  QRect rowRect(int row) const;
  int rowAt(QPoint point) const;
  void highlight(int row);
  void moveHighlight(int step);
  void press(int key);
  void chooseRow(int row);
  void paintRow(QPainter& painter, int row) const;

  const Menu menu_;
  const std::function<void(const std::function<void()>&)> choose_;
  int highlighted_ = none;
};

}  // namespace orvo
