// An Orvo in memory whose settings window is the real one. Main thread only; one at a time.
#pragma once

#include "support/World.h"
#include "ui/settings/SettingsWindow.h"

#include <QAccessible>
#include <QKeySequence>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

namespace orvo {

// `count` applications with plain names.
inline std::vector<NamedApp> manyApps(int count) {
  std::vector<NamedApp> apps;
  for (int number = 1000; number < 1000 + count; ++number)
    apps.push_back({"org.example.app" + std::to_string(number), "Application " + std::to_string(number)});
  return apps;
}

struct Look : Appearance {
  explicit Look(AppearanceTraits of) : look(of) {}
  AppearanceTraits traits() const override { return look; }
  void setObserver(std::function<void()>) override {}
  const AppearanceTraits look;
};

// The first visible item that matches, in painting order from `root` on; null when there is none.
template <typename Matches>
QQuickItem* findItem(QQuickItem* root, const Matches& matches) {
  if (root == nullptr || !root->isVisible()) return nullptr;
  if (matches(root)) return root;
  for (QQuickItem* child : root->childItems()) {
    if (QQuickItem* found = findItem(child, matches)) return found;
  }
  return nullptr;
}

class SettingsWorld : public World {
 public:
  SettingsWorld() : World(Unprepared{}) {
    memory.windows.maker = [this](const WindowDescription& description, WindowContent& content) {
      view = dynamic_cast<OrvoView*>(&content);
      auto made = std::make_unique<SettingsWindow>(description, *view, memory.platform, std::make_unique<Look>(look));
      window = made.get();
      return made;
    };
  }
  // Starts Orvo first where that has not been done: what the platform should answer is set before.
  void show() {
    if (!delegate) launch();
    window == nullptr ? (void)delegate->applicationShouldHandleReopen(false) : window->makeKeyAndOrderFront();
    turn();
  }
  // Lets the main queue, the scanner and Qt's events run until nothing is left of them.
  void turn() {
    for (int round = 0; round < 4; ++round) {
      memory.settle();
      QCoreApplication::processEvents();
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    // A frame: lists lay their rows out with it.
    if (window != nullptr && window->quickView() != nullptr && quickView().isVisible()) quickView().grabWindow();
  }
  void rescan() {
    model->refresh();
    turn();
  }
  QQuickView& quickView() const { return *window->quickView(); }
  // Found by accessible name, or by object name, among the visible items; null when there is none.
  QQuickItem* item(const QString& name) const {
    return findItem(quickView().contentItem(), [&](QQuickItem* each) {
      QAccessibleInterface* const element = QAccessible::queryAccessibleInterface(each);
      return each->objectName() == name || (element != nullptr && element->text(QAccessible::Name) == name);
    });
  }
  void click(QQuickItem* item) {
    if (item == nullptr) qFatal("There is nothing to click.");
    const QPointF center = item->mapToScene({item->width() / 2, item->height() / 2});
    QTest::mouseClick(&quickView(), Qt::LeftButton, {}, center.toPoint());
    turn();
  }
  // One after the other, as in "Ctrl+F t w".
  void press(const char* keys) {
    for (const QString& each : QString::fromLatin1(keys).split(QLatin1Char(' '))) {
      const QKeyCombination combination = QKeySequence(each)[0];
      QTest::keyClick(&quickView(), combination.key(), combination.keyboardModifiers());
      turn();
    }
  }

  AppearanceTraits look{.dark = false, .reducesMotion = true};
  // The delegate's; null until the window is first shown.
  OrvoView* view = nullptr;
  SettingsWindow* window = nullptr;
};

}  // namespace orvo
