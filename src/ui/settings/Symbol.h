// One of Orvo's own line symbols, drawn in one colour and with one line weight at whatever size its
// place gives it. A Qt Quick item; main thread only.
#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace orvo {

class Symbol : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT

  Q_PROPERTY(QString name MEMBER name_ NOTIFY changed)
  // A transparent colour keeps the drawing's own colours.
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
  Q_PROPERTY(double size MEMBER size_ NOTIFY changed)
  // The line's width, in the units of `size`.
  Q_PROPERTY(double weight MEMBER weight_ NOTIFY changed)

 public:
  explicit Symbol(QQuickItem* parent = nullptr);

  void paint(QPainter* painter) override;

 signals:
  void changed();

 private:
  QString name_;
  QColor color_ = Qt::black;
  double size_ = 16;
  double weight_ = 1.4;
};

}  // namespace orvo
