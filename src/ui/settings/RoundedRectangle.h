// A filled rectangle with rounded corners and a hairline border, smooth with every renderer (Qt Quick's
// own Rectangle has ragged corners with the software one). A Qt Quick item; main thread only.
#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace orvo {

class RoundedRectangle : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT

  Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
  Q_PROPERTY(QColor borderColor MEMBER borderColor_ NOTIFY changed)
  Q_PROPERTY(double borderWidth MEMBER borderWidth_ NOTIFY changed)
  // Half of the shorter edge at most.
  Q_PROPERTY(double radius MEMBER radius_ NOTIFY changed)

 public:
  explicit RoundedRectangle(QQuickItem* parent = nullptr);

  void paint(QPainter* painter) override;

 signals:
  void changed();

 private:
  QColor color_ = Qt::transparent;
  QColor borderColor_ = Qt::transparent;
  double borderWidth_ = 1;
  double radius_ = 0;
};

}  // namespace orvo
