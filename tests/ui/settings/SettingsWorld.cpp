#include "ui/settings/SettingsWorld.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QTest>

#include <algorithm>
#include <functional>

namespace orvo {

namespace {

QString accessibleName(QQuickItem* item) {
  QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(item);
  return interface == nullptr ? QString() : interface->text(QAccessible::Name);
}

WindowDescription description() {
  WindowDescription description;
  description.contentSize = {880, 680};
  description.minimumSize = {850, 630};
  description.styleMask = windowStyleTitled | windowStyleClosable | windowStyleMiniaturizable | windowStyleResizable |
                          windowStyleFullSizeContentView;
  description.title = "Orvo Settings";
  description.frameAutosaveName = "Orvo.Settings";
  description.releasedWhenClosed = false;
  return description;
}

}  // namespace

QQuickItem* findItem(QQuickItem* root, const std::function<bool(QQuickItem*)>& matches) {
  if (root == nullptr || !root->isVisible()) return nullptr;
  if (matches(root)) return root;
  for (QQuickItem* child : root->childItems()) {
    if (QQuickItem* found = findItem(child, matches)) return found;
  }
  return nullptr;
}

SettingsWorld::~SettingsWorld() {
  if (model) model->stop();
}

void SettingsWorld::start() {
  model = OrvoModel::make(memory.platform);
  model->start();
  view = std::make_unique<OrvoView>(model, memory.platform);
  auto desktop = std::make_unique<MemoryAppearance>();
  appearance = desktop.get();
  window = std::make_unique<SettingsWindow>(description(), *view, memory.platform, std::move(desktop));
  window->center();
  memory.settle();
}

void SettingsWorld::show() {
  window->makeKeyAndOrderFront();
  turn();
}

void SettingsWorld::turn() {
  for (int round = 0; round < 4; ++round) {
    memory.settle();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  // A frame: lists lay their rows out with it.
  if (window && window->quickView() != nullptr && window->quickView()->isVisible()) quickView().grabWindow();
}

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

void SettingsWorld::rescan() {
  model->refresh();
  turn();
}

QQuickItem* SettingsWorld::item(const QString& name) const {
  return findItem(quickView().contentItem(), [&](QQuickItem* candidate) { return accessibleName(candidate) == name; });
}

void SettingsWorld::click(QQuickItem* item) {
  if (item == nullptr) qFatal("There is nothing to click.");
  const QPointF center = item->mapToScene({item->width() / 2, item->height() / 2});
  QTest::mouseClick(&quickView(), Qt::LeftButton, {}, center.toPoint());
  turn();
}

void SettingsWorld::key(int key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(&quickView(), static_cast<Qt::Key>(key), modifiers);
  turn();
}

void SettingsWorld::type(const QString& text) {
  for (const QChar letter : text) QTest::keyClick(&quickView(), letter.toLatin1());
  turn();
}

QQuickItem* SettingsWorld::control(const QString& objectName) const {
  return findItem(quickView().contentItem(),
                  [&](QQuickItem* candidate) { return candidate->objectName() == objectName; });
}

QString SettingsWorld::focused() const {
  QQuickItem* focus = quickView().activeFocusItem();
  return focus == nullptr ? QString() : accessibleName(focus);
}

std::vector<NamedApp> manyApps(int count) {
  std::vector<NamedApp> apps;
  for (int index = 0; index < count; ++index) {
    const std::string number = std::to_string(1000 + index);
    apps.push_back({"org.example.app" + number, "Application " + number});
  }
  return apps;
}

}  // namespace orvo
