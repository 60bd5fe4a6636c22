#include "ui/settings/SettingsWorld.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QKeySequence>
#include <QTest>

#include <algorithm>

namespace orvo {

std::vector<NamedApp> manyApps(int count) {
  std::vector<NamedApp> apps;
  for (int index = 0; index < count; ++index) {
    const std::string number = std::to_string(1000 + index);
    apps.push_back({"org.example.app" + number, "Application " + number});
  }
  return apps;
}

QQuickItem* findItem(QQuickItem* root, const std::function<bool(QQuickItem*)>& matches) {
  if (root == nullptr || !root->isVisible()) return nullptr;
  if (matches(root)) return root;
  for (QQuickItem* child : root->childItems()) {
    if (QQuickItem* found = findItem(child, matches)) return found;
  }
  return nullptr;
}

struct SettingsWorld::Look : Appearance {
  explicit Look(SettingsWorld& of) : world(of) {}
  AppearanceTraits traits() const override { return world.look_; }
  void setObserver(std::function<void()> observer) override { world.lookChanged_ = std::move(observer); }
  SettingsWorld& world;
};

void SettingsWorld::launch() {
  memory.userDefaults.setBoolean("Orvo.HasOpenedSettings", true);
  memory.windows.maker = [this](const WindowDescription& description, WindowContent& content) {
    view = dynamic_cast<OrvoView*>(&content);
    auto made = std::make_unique<SettingsWindow>(description, *view, memory.platform, std::make_unique<Look>(*this));
    window = made.get();
    return made;
  };
  delegate = AppDelegate::make(memory.platform);
  model = &delegate->model();
  delegate->applicationDidFinishLaunching();
  memory.settle();
}

void SettingsWorld::show() {
  if (!delegate) launch();
  window == nullptr ? (void)delegate->applicationShouldHandleReopen(false) : window->makeKeyAndOrderFront();
  turn();
}

void SettingsWorld::turn() {
  for (int round = 0; round < 4; ++round) {
    memory.settle();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  // A frame: lists lay their rows out with it.
  if (window != nullptr && window->quickView() != nullptr && quickView().isVisible()) quickView().grabWindow();
}

void SettingsWorld::advance(int milliseconds) {
  memory.mainQueue.advance(std::chrono::milliseconds(milliseconds));
  turn();
}

void SettingsWorld::rescan() {
  model->refresh();
  turn();
}

void SettingsWorld::openPage(OrvoView::Page page) {
  view->page = page;
  turn();
}

void SettingsWorld::setLook(bool dark, bool reducesMotion) {
  look_ = {.dark = dark, .reducesMotion = reducesMotion};
  if (lookChanged_) lookChanged_();
  turn();
}

QQuickItem* SettingsWorld::find(const std::function<bool(QQuickItem*)>& matches) const {
  return findItem(quickView().contentItem(), matches);
}

QQuickItem* SettingsWorld::item(const QString& name) const {
  return find([&](QQuickItem* each) {
    QAccessibleInterface* const element = QAccessible::queryAccessibleInterface(each);
    return each->objectName() == name || (element != nullptr && element->text(QAccessible::Name) == name);
  });
}

void SettingsWorld::click(QQuickItem* item) {
  if (item == nullptr) qFatal("There is nothing to click.");
  const QPointF center = item->mapToScene({item->width() / 2, item->height() / 2});
  QTest::mouseClick(&quickView(), Qt::LeftButton, {}, center.toPoint());
  turn();
}

void SettingsWorld::press(const char* keys) {
  for (const QString& each : QString::fromLatin1(keys).split(QLatin1Char(' '))) {
    const QKeyCombination combination = QKeySequence(each)[0];
    QTest::keyClick(&quickView(), combination.key(), combination.keyboardModifiers());
    turn();
  }
}

}  // namespace orvo
