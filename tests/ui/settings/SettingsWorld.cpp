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

class SettingsWorld::Look : public Appearance {
 public:
  explicit Look(SettingsWorld& world) : world_(world) {}
  AppearanceTraits traits() const override { return world_.look_; }
  void setObserver(std::function<void()> observer) override { world_.lookChanged_ = std::move(observer); }

 private:
  SettingsWorld& world_;
};

void SettingsWorld::setApps(const std::vector<NamedApp>& apps) {
  std::vector<std::string> bundles;
  std::int32_t pid = 2000;
  for (const auto& running : memory.workspace.running) pid = std::max(pid, running.processIdentifier + 1);
  for (const NamedApp& app : apps) {
    bundles.push_back(app.bundleID);
    if (!memory.workspace.runningApplications(app.bundleID).empty()) continue;
    memory.workspace.running.push_back({app.bundleID, pid++, app.name, std::nullopt});
  }
  memory.showItems(bundles);
}

void SettingsWorld::launch() {
  const Platform& all = memory.platform;
  memory.userDefaults.setBoolean("Orvo.HasOpenedSettings", true);
  delegate =
      AppDelegate::make({all.mainQueue, all.scanExecutor, all.userDefaults, all.bundle, all.processInfo, all.fileSystem,
                         all.workspace, all.accessibility, all.eventTaps, all.hotKeys, all.loginItem, all.localizedText,
                         all.application, all.statusBar, *this, all.pasteboard, all.applicationIcons, all.words});
  model = &delegate->model();
  delegate->applicationDidFinishLaunching();
  memory.settle();
}

std::unique_ptr<Window> SettingsWorld::make(const WindowDescription& description, WindowContent& content) {
  view = dynamic_cast<OrvoView*>(&content);
  auto made = std::make_unique<SettingsWindow>(description, *view, memory.platform, std::make_unique<Look>(*this));
  window = made.get();
  return made;
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

void SettingsWorld::rescan(const std::vector<NamedApp>& apps) {
  setApps(apps);
  rescan();
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
