#include "ui/settings/RowIcon.h"

#include "ui/settings/IconStore.h"

#include <QPainter>
#include <QQuickWindow>
#include <QtQml/qqml.h>

#include <cmath>

namespace orvo {

RowIcon::RowIcon(QQuickItem* parent) : QQuickPaintedItem(parent) {
  connect(this, &RowIcon::pidChanged, this, &RowIcon::fetch);
}

void RowIcon::componentComplete() {
  QQuickPaintedItem::componentComplete();
  if (IconStore* store = IconStore::of(qmlEngine(this))) {
    connect(store, &IconStore::answered, this, [this](std::int32_t pid, int size, const QImage& icon) {
      if (pid == pid_ && size == pixels()) show(icon);
    });
  }
  fetch();
}

void RowIcon::itemChange(ItemChange change, const ItemChangeData& value) {
  QQuickPaintedItem::itemChange(change, value);
  if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) fetch();
  // The program may have been too busy to answer.
  if (change == ItemSceneChange && value.window != nullptr) {
    connect(value.window, &QWindow::activeChanged, this, [this] {
      if (!available()) fetch();
    });
  }
}

int RowIcon::pixels() const {
  const double scale = window() == nullptr ? 1 : window()->effectiveDevicePixelRatio();
  return static_cast<int>(std::ceil(width() * scale));
}

void RowIcon::fetch() {
  IconStore* store = isComponentComplete() && window() != nullptr ? IconStore::of(qmlEngine(this)) : nullptr;
  if (store == nullptr || pixels() <= 0) return;
  show(store->icon(pid_, pixels()));
}

void RowIcon::show(const QImage& icon) {
  image_ = icon;
  emit availableChanged();
  update();
}

void RowIcon::paint(QPainter* painter) {
  if (image_.isNull()) return;
  painter->setRenderHint(QPainter::SmoothPixmapTransform);
  const QSizeF fitted = QSizeF(image_.size()).scaled(boundingRect().size(), Qt::KeepAspectRatio);
  QRectF place({0, 0}, fitted);
  place.moveCenter(boundingRect().center());
  painter->drawImage(place, image_);
}

}  // namespace orvo
