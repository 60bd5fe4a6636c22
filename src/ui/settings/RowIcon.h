// The icon of a running application in its row. While there is none, `available` is false and nothing
// is drawn. A Qt Quick item; main thread only.
#pragma once

#include <QImage>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace orvo {

class RowIcon : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT

  Q_PROPERTY(int pid MEMBER pid_ NOTIFY pidChanged)
  Q_PROPERTY(bool available READ available NOTIFY availableChanged)

 public:
  explicit RowIcon(QQuickItem* parent = nullptr);

  bool available() const { return !image_.isNull(); }
  Q_INVOKABLE void fetch();
  void paint(QPainter* painter) override;

 signals:
  void pidChanged();
  void availableChanged();

 protected:
  void componentComplete() override;
  void itemChange(ItemChange change, const ItemChangeData& value) override;

 private:
  int pixels() const;
  void show(const QImage& icon);

  int pid_ = 0;
  QImage image_;
};

}  // namespace orvo
