#include "platform/qt/QtScreenObserver.h"

#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace orvo {

namespace {

QList<QRect> currentGeometry() {
  QList<QRect> geometry;
  for (const QScreen* screen : QGuiApplication::screens()) geometry.append(screen->geometry());
  return geometry;
}

}  // namespace

QtScreenObserver::QtScreenObserver(MainQueue& queue, NotificationCenter& center)
    : queue_(queue), center_(center), geometry_(currentGeometry()) {
  for (QScreen* screen : QGuiApplication::screens()) follow(screen);
  connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
    follow(screen);
    changeSeen();
  });
  connect(qGuiApp, &QGuiApplication::screenRemoved, this, &QtScreenObserver::changeSeen);
}

void QtScreenObserver::follow(QScreen* screen) {
  connect(screen, &QScreen::geometryChanged, this, &QtScreenObserver::changeSeen);
}

void QtScreenObserver::changeSeen() {
  queue_.cancel(settle_);
  settle_ = queue_.runAfter(screenSettleTime, [this] { settled(); });
}

void QtScreenObserver::settled() {
  settle_ = MainQueue::Handle::none;
  auto geometry = currentGeometry();
  if (geometry == geometry_) return;
  geometry_ = std::move(geometry);
  center_.post(Notification::screenParametersChanged);
}

}  // namespace orvo
