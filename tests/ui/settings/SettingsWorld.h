// The real settings window over the platform in memory. Main thread only; one at a time.
#pragma once

#include "model/OrvoModel.h"
#include "support/MemoryPlatform.h"
#include "ui/OrvoView.h"
#include "ui/settings/SettingsWindow.h"

#include <QImage>
#include <QQuickItem>
#include <QQuickView>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvo {

class MemoryAppearance : public Appearance {
 public:
  AppearanceTraits traits() const override { return current; }
  void setObserver(std::function<void()> newObserver) override { observer = std::move(newObserver); }
  void change(const AppearanceTraits& traits) {
    current = traits;
    if (observer) observer();
  }

  AppearanceTraits current{.dark = false, .reducesMotion = true};
  std::function<void()> observer;
};

struct NamedApp {
  std::string bundleID;
  std::string name;
};

// The first visible item that matches, in painting order from `root` on; null when there is none.
QQuickItem* findItem(QQuickItem* root, const std::function<bool(QQuickItem*)>& matches);

class SettingsWorld {
 public:
  ~SettingsWorld();

  // Makes and starts the model, then makes the window without showing it. What the platform should
  // answer is set before.
  void start();
  void show();
  // Lets the main queue, the scanner and Qt's events run until nothing is left of them.
  void turn();

  // What the menu bar shows from the next scan on.
  void setApps(const std::vector<NamedApp>& apps);
  void rescan();

  QQuickView& quickView() const { return *window->quickView(); }
  // Found by accessible name among the visible items; null when there is none.
  QQuickItem* item(const QString& accessibleName) const;
  // Found by object name, in the same way.
  QQuickItem* control(const QString& objectName) const;
  void click(QQuickItem* item);
  void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  void type(const QString& text);
  // The accessible name of the focused item; empty for none.
  QString focused() const;

  MemoryPlatform memory;
  MemoryAppearance* appearance = nullptr;
  std::shared_ptr<OrvoModel> model;
  std::unique_ptr<OrvoView> view;
  std::unique_ptr<SettingsWindow> window;
};

// `count` applications with plain names.
std::vector<NamedApp> manyApps(int count);

}  // namespace orvo
