// An Orvo in memory whose settings window is the real one. Main thread only; one at a time.
#pragma once

#include "app/AppDelegate.h"
#include "model/OrvoModel.h"
#include "support/MemoryPlatform.h"
#include "ui/OrvoView.h"
#include "ui/settings/SettingsWindow.h"

#include <QQuickItem>
#include <QQuickView>

namespace orvo {

// `count` applications with plain names.
std::vector<NamedApp> manyApps(int count);

// The first visible item that matches, in painting order from `root` on; null when there is none.
QQuickItem* findItem(QQuickItem* root, const std::function<bool(QQuickItem*)>& matches);

class SettingsWorld {
  AppearanceTraits look_{.dark = false, .reducesMotion = true};
  std::function<void()> lookChanged_;

 public:
  // Starts Orvo, with its window not shown unless something is missing. What the platform should answer is set before.
  void launch();
  // Launches Orvo first where that has not been done.
  void show();
  // Lets the main queue, the scanner and Qt's events run until nothing is left of them.
  void turn();
  void advance(int milliseconds);
  void rescan();
  void openPage(OrvoView::Page page);
  void setLook(bool dark, bool reducesMotion = true);

  QQuickView& quickView() const { return *window->quickView(); }
  QQuickItem* find(const std::function<bool(QQuickItem*)>& matches) const;
  // Found by accessible name, or by object name, among the visible items; null when there is none.
  QQuickItem* item(const QString& name) const;
  void click(QQuickItem* item);
  // One after the other, as in "Ctrl+F t w".
  void press(const char* keys);

  MemoryPlatform memory;
  std::shared_ptr<AppDelegate> delegate;
  // The delegate's; the last two null until the window is first shown.
  OrvoModel* model = nullptr;
  OrvoView* view = nullptr;
  SettingsWindow* window = nullptr;

 private:
  struct Look;
};

}  // namespace orvo
