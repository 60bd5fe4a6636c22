#include "ui/settings/SettingsWorld.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QPointer>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>
#include <QtGui/private/qguiapplication_p.h>

#include <algorithm>
#include <random>

namespace orvo {

namespace {

QAccessibleInterface* accessible(QQuickItem* item) { return QAccessible::queryAccessibleInterface(item); }
QAccessible::State state(QQuickItem* item) { return accessible(item)->state(); }
double top(QQuickItem* item) { return item->mapToScene({}).y(); }

class SettingsWindowTest : public ::testing::Test, protected SettingsWorld {
 protected:
  // Opens the window with these applications, or has them found where it is open.
  void open(const std::vector<NamedApp>& apps = {{"one", "One"}, {"two", "Two"}}) {
    memory.showItems(apps);
    window == nullptr ? show() : rescan();
  }
  // One of the row's two segments; both are below its picker.
  QQuickItem* segment(const QString& app, const QString& text) const {
    return findItem(item("Visibility for " + app), [&](QQuickItem* each) {
      return each->property("chosen").isValid() && each->property("text") == text;
    });
  }
  // As an assistive program does.
  void act(QQuickItem* control, const QString& action = QAccessibleActionInterface::pressAction()) {
    accessible(control)->actionInterface()->doAction(action);
    turn();
  }
  QQuickItem* focus() const { return quickView().activeFocusItem(); }
  std::string focused() const {
    QAccessibleInterface* const element = focus() == nullptr ? nullptr : accessible(focus());
    return element == nullptr ? "" : element->text(QAccessible::Name).toStdString();
  }
  void tabTo(const char* name) {
    for (int step = 0; step < 40 && focused() != name; ++step) press("Tab");
    ASSERT_EQ(focused(), name);
  }
};

TEST_F(SettingsWindowTest, ARowsChoiceIsStoredAndRestsWhileHidingIsApplied) {
  open();
  QQuickItem* const hide = segment("Two", "Hide");
  click(hide);
  EXPECT_TRUE(state(hide).checked && model->selectedCount() == 1);
  act(segment("Two", "Keep"));
  EXPECT_FALSE(state(hide).checked || model->selectedCount() > 0);
  act(hide);
  act(item("Hide selected icons"));
  EXPECT_TRUE(state(item("Visibility for Two")).disabled && state(hide).disabled);
  click(segment("Two", "Keep"));
  act(segment("Two", "Keep"));
  EXPECT_TRUE(model->selectedCount() == 1 && item("Reveal hidden icons")->isEnabled());
  memory.framework.answer(0);
  turn();
  EXPECT_FALSE(state(hide).disabled);
}

TEST_F(SettingsWindowTest, SearchingFiltersAndIsClearedByButtonAndByEscapeWhichThenCloses) {
  open();
  press("Ctrl+F t w");
  EXPECT_TRUE(item("1 of 2 apps") && !item("One"));
  click(item("Clear search"));
  EXPECT_TRUE(item("One") && !item("Clear search"));
  press("t w");
  click(segment("Two", "Hide"));
  press("Esc o");
  EXPECT_EQ(model->searchText(), "o") << "Escape in a row empties the field and goes back to it";
  tabTo("Behavior");
  press("Esc");
  EXPECT_EQ(model->searchText(), "");
  for (const char* closing : {"Esc", "Ctrl+W"}) {
    press(closing);
    EXPECT_EQ(window->quickView(), nullptr);
    show();
  }
}

TEST_F(SettingsWindowTest, TheDelayPickerStoresItsOptionsAndShowsAStoredDelayOfItsOwn) {
  memory.userDefaults.datas[preferencesKey] = R"({"rules":{},"autoRehideSeconds":45})";
  open();
  click(item("Behavior"));
  QQuickItem* const picker = item("rehidePicker");
  picker->forceActiveFocus(Qt::TabFocusReason);
  const std::tuple<const char*, std::int64_t, const char*> steps[] = {
      // Closed it lets keys pass; opened and left as it is, it stores nothing either.
      {"Home End N Down Return Up Esc", 45, "After 45 seconds"},
      {"Return Home Return", 0, "Never"},
      {"Down Down Down Return", 10, "After 10 seconds"},
      {"Space End Return", 30, "After 30 seconds"}};
  for (const auto& [keys, delay, value] : steps) {
    press(keys);
    EXPECT_EQ(model->preferences().autoRehideSeconds, delay);
    EXPECT_EQ(accessible(picker)->textInterface()->text(0, 99), value);
    ASSERT_TRUE(window->quickView() != nullptr && focus() == picker) << "Escape closed no more than the menu";
  }
}

TEST_F(SettingsWindowTest, ARescanKeepsPlaceAndFocusUntilTheRowItselfGoes) {
  auto apps = manyApps(60);
  open(apps);
  const auto kept = [&] { return segment("Application 1030", "Keep"); };
  segment("Application 1000", "Keep")->forceActiveFocus(Qt::TabFocusReason);
  for (int step = 0; step < 30; ++step) press("Down");
  ASSERT_EQ(focus(), kept());
  const double before = top(kept());
  apps.erase(apps.begin() + 2, apps.begin() + 6);
  apps.push_back({"new", "Application 1000 again"});
  open(apps);
  EXPECT_EQ(focus(), kept());
  EXPECT_NEAR(top(kept()), before, 1);
  // The keyboard goes on from a neighbour.
  std::erase_if(apps, [](const NamedApp& app) { return app.name == "Application 1030"; });
  open(apps);
  press("Down Right");
  EXPECT_EQ(model->preferences().rules.size(), 1U);
}

TEST_F(SettingsWindowTest, AnyListBecomesAnyOtherRowByRow) {
  std::mt19937 random(7);
  for (int round = 0; round < 40; ++round) {
    std::vector<NamedApp> apps;
    std::ranges::sample(manyApps(5), std::back_inserter(apps), static_cast<int>(random() % 6), random);
    open(apps);
    std::map<double, std::string> shown;
    findItem(quickView().contentItem(), [&](QQuickItem* each) {
      if (each->property("bundleID").isValid()) shown[top(each)] = each->property("bundleID").toString().toStdString();
      return false;
    });
    EXPECT_TRUE(std::ranges::equal(shown, apps, {}, &decltype(shown)::value_type::second, &NamedApp::bundleID))
        << round;
  }
}

TEST_F(SettingsWindowTest, EveryPageIsWorkedByKeyboardAloneInASmallWindowAndShowsWhatTheModelReports) {
  open();
  quickView().setMinimumSize({1, 1});
  quickView().resize(500, 300);
  for (const char* name : {"About Orvo", "Find an app", "Refresh menu bar icons", "Keep"}) tabTo(name);
  // Within the list the arrows choose and move.
  press("Down Right Tab");
  EXPECT_TRUE(model->selectedCount() == 1 && focused() == "Hide selected icons");
  press("Shift+Backtab");
  EXPECT_EQ(focused(), "Hide");
  tabTo("Behavior");
  press("Return");
  EXPECT_TRUE(state(item("Behavior")).selected && !state(item("Menu bar")).selected);
  tabTo("Automatically hide again");
  tabTo("Open Orvo at login");
  const QRectF sight(0, 0, 500, 300);
  const auto shows = [&](QQuickItem* each) { return sight.contains(each->mapRectToScene(each->boundingRect())); };
  for (const std::string reason : {"no", "on"}) {  // Alike in height.
    memory.loginItem.failure = reason;
    press("Home Space");
    EXPECT_FALSE(item("loginSwitch")->property("checked").toBool());
    EXPECT_TRUE(shows(item("Login item could not be changed: " + QString::fromStdString(reason)))) << reason;
  }
  memory.loginItem.failure.reset();
  act(item("loginSwitch"), QAccessibleActionInterface::toggleAction());
  EXPECT_TRUE(item("loginSwitch")->property("checked").toBool() && model->launchAtLogin());
  tabTo("About Orvo");
  press("Space");
  tabTo("macOS compatibility research");
  EXPECT_TRUE(shows(focus()));
  press("Return");
  EXPECT_EQ(memory.workspace.openedURLs.size(), 1U);
}

TEST_F(SettingsWindowTest, AKeyThatIsHeldActsOnce) {
  open();
  click(item("Behavior"));
  tabTo("Open Orvo at login");
  quint64 moment = 1000;
  const auto send = [&](QEvent::Type type, Qt::Key key) {
    QKeyEvent event(type, key, {});
    event.setTimestamp(moment);
    QCoreApplication::sendEvent(&quickView(), &event);
  };
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) {
    const bool before = model->launchAtLogin();
    send(QEvent::KeyPress, key);
    for (int repeat = 0; repeat < 3; ++repeat) {
      moment += 40;
      send(QEvent::KeyRelease, key);
      send(QEvent::KeyPress, key);
    }
    ++moment;
    send(QEvent::KeyRelease, key);
    EXPECT_NE(model->launchAtLogin(), before) << key;
  }
}

TEST_F(SettingsWindowTest, ClosingGivesTheSceneBackAndKeepsPageSearchAndFrame) {
  std::string& frame = memory.userDefaults.datas["NSWindow Frame Orvo.Settings"];
  frame = "0 40 800 700";
  open();
  EXPECT_EQ(QRect(quickView().framePosition(), quickView().size()), QRect(0, 40, 800, 700));
  press("Ctrl+F t w");
  click(item("About Orvo"));
  const QPointer scene(quickView().rootObject());
  quickView().resize(800, 660);
  quickView().close();
  turn();
  EXPECT_TRUE(scene == nullptr && window->quickView() == nullptr);
  EXPECT_EQ(frame, "0 40 800 660");
  show();
  EXPECT_TRUE(quickView().size() == QSize(800, 660) && item("Copy system details") && model->searchText() == "tw");
  // Moved, it is stored once it rests.
  quickView().setFramePosition({30, 30});
  turn();
  EXPECT_EQ(frame, "0 40 800 660");
  play("500ms");
  EXPECT_EQ(frame, "30 30 800 660");
}

TEST_F(SettingsWindowTest, TheFocusIsWhereSomethingCanBeDoneAndLeavesWhatHasGone) {
  memory.accessibility.trusted = false;
  open();
  EXPECT_EQ(focused(), "Open Settings…");
  press("Return");
  EXPECT_EQ(memory.accessibility.prompts, 1);
  memory.accessibility.trusted = true;
  play("4000ms");
  turn();
  EXPECT_EQ(focused(), "Find an app");
  tabTo("Refresh menu bar icons");
  memory.scanExecutor.holds = true;
  rescan();
  EXPECT_EQ(focused(), "Refreshing menu bar icons");
  memory.scanExecutor.holds = false;
  turn();
  EXPECT_EQ(focused(), "Refresh menu bar icons");
  tabTo("Keep");
  open({});
  EXPECT_EQ(focused(), "Find an app");
  memory.loginItem.failure = "gone soon";
  play("login");
  turn();
  tabTo("Login item could not be changed: gone soon");
  press("Ctrl+A");
  EXPECT_EQ(focus()->property("selectedText").toString().toStdString(), focused());
  model->setRule(IconRule::hidden, "one");
  model->hideSelected();
  turn();
  EXPECT_EQ(focused(), "Find an app");
}

// What QML and the symbols complain of is a fault, whichever test brings it up.
void failOnWarning(QtMsgType, const QMessageLogContext&, const QString& message) {
  if (!message.startsWith("This plugin does not support")) ADD_FAILURE() << qPrintable(message);
}

}  // namespace

}  // namespace orvo

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  const QGuiApplication application(argc, argv);
  qInstallMessageHandler(orvo::failOnWarning);
  QAccessible::setActive(true);
  // Or nothing that happens is told.
  QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(true);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
