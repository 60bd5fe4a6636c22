#include "ui/settings/SettingsWorld.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QFile>
#include <QGuiApplication>
#include <QTest>

#include <cmath>
#include <set>

namespace orvo {

namespace {

class SettingsWindowTest : public ::testing::Test {
 protected:
  void show(const std::vector<NamedApp>& apps = {{"org.example.one", "One"}, {"org.example.two", "Two"}}) {
    world.setApps(apps);
    world.start();
    world.show();
  }
  void openPage(OrvoView::Page page) {
    world.view->page = page;
    world.turn();
  }
  QAccessible::State state(const QString& name) const {
    return QAccessible::queryAccessibleInterface(world.item(name))->state();
  }
  // The one of the row's two segments; both are below its picker.
  QQuickItem* segment(const QString& app, const QString& text) const {
    return findItem(world.item("Visibility for " + app), [&](QQuickItem* item) {
      return item->property("chosen").isValid() && item->property("text").toString() == text;
    });
  }
  // Names in the order of the Tab key, until it comes round.
  QStringList tabOrder() {
    QStringList names;
    QList<QQuickItem*> items;
    while (items.size() < 40) {
      world.key(Qt::Key_Tab);
      if (items.contains(world.quickView().activeFocusItem())) break;
      items << world.quickView().activeFocusItem();
      names << world.focused();
    }
    return names;
  }

  SettingsWorld world;
};

TEST_F(SettingsWindowTest, ChoosingHideOnARowStoresTheRule) {
  show();
  world.click(segment("Two", "Hide"));
  EXPECT_EQ(world.model->preferences().rules, (std::map<std::string, IconRule>{{"org.example.two", IconRule::hidden}}));
  EXPECT_TRUE(world.item("1 app selected to hide"));
  EXPECT_TRUE(world.item("Orvo away"));
  world.click(segment("Two", "Keep"));
  EXPECT_EQ(world.model->preferences().rules.at("org.example.two"), IconRule::visible);
}

TEST_F(SettingsWindowTest, PickersRestWhileHidingIsAppliedAndKeepTheFocus) {
  show();
  world.click(segment("Two", "Hide"));
  world.click(world.item("Hide selected icons"));
  ASSERT_EQ(world.model->state(), BarState::applying);
  EXPECT_FALSE(world.item("Visibility for Two")->isEnabled());
  EXPECT_TRUE(state("Visibility for Two").disabled);
  EXPECT_TRUE(QAccessible::queryAccessibleInterface(segment("Two", "Hide"))->state().disabled);
  EXPECT_TRUE(world.item("Reveal hidden icons")->isEnabled());
  world.click(segment("Two", "Keep"));
  EXPECT_EQ(world.model->preferences().rules.at("org.example.two"), IconRule::hidden);
  world.memory.framework.answer(0);
  world.turn();
  EXPECT_FALSE(state("Visibility for Two").disabled);
  EXPECT_EQ(world.quickView().activeFocusItem(), segment("Two", "Hide"));
}

TEST_F(SettingsWindowTest, SearchingFiltersAndIsClearedByButtonAndByEscape) {
  show();
  world.key(Qt::Key_F, Qt::ControlModifier);
  world.type("tw");
  EXPECT_EQ(world.model->searchText(), "tw");
  EXPECT_FALSE(world.item("One"));
  EXPECT_TRUE(world.item("1 of 2 apps"));
  world.click(world.item("Clear search"));
  EXPECT_EQ(world.model->searchText(), "");
  EXPECT_TRUE(world.item("One"));
  EXPECT_FALSE(world.item("Clear search"));
  world.type("zz");
  EXPECT_TRUE(world.item("No matching apps"));
  world.key(Qt::Key_Escape);
  EXPECT_EQ(world.model->searchText(), "");
  EXPECT_TRUE(world.item("Two"));
}

TEST_F(SettingsWindowTest, OnlyTheLastRowHasNoDivider) {
  show({{"a", "First"}, {"b", "Second"}, {"c", "Third"}});
  const auto dividers = [&] {
    std::vector<bool> visible;
    for (const char* name : {"First", "Second", "Third"}) {
      QQuickItem* row = world.item(name);
      if (row == nullptr) continue;
      for (QQuickItem* child : row->childItems()) {
        if (child->height() == 1) visible.push_back(child->isVisible());
      }
    }
    return visible;
  };
  EXPECT_EQ(dividers(), (std::vector{true, true, false}));
  world.setApps({{"a", "First"}, {"b", "Second"}});
  world.rescan();
  EXPECT_EQ(dividers(), (std::vector{true, false}));
}

TEST_F(SettingsWindowTest, TheLoginSwitchShowsWhatTheModelReports) {
  show();
  openPage(OrvoView::Page::behavior);
  world.memory.loginItem.failure = "no";
  for (const bool accessibly : {false, true}) {
    QQuickItem* control = world.control("loginSwitch");
    ASSERT_TRUE(control);
    auto* actions = QAccessible::queryAccessibleInterface(control)->actionInterface();
    accessibly ? actions->doAction(QAccessibleActionInterface::toggleAction()) : world.click(control);
    world.turn();
    EXPECT_FALSE(control->property("checked").toBool());
    EXPECT_TRUE(world.item("Login item could not be changed: no"));
    world.model->message = std::nullopt;
  }
  world.memory.loginItem.failure.reset();
  QQuickItem* control = world.control("loginSwitch");
  world.click(control);
  EXPECT_TRUE(control->property("checked").toBool());
  EXPECT_TRUE(world.model->launchAtLogin());
}

TEST_F(SettingsWindowTest, TheDelayPickerStoresItsOptionsAndShowsAStoredDelayOfItsOwn) {
  world.memory.userDefaults.datas["Quillet.Preferences.v1"] = R"({"rules":{},"autoRehideSeconds":45})";
  show();
  openPage(OrvoView::Page::behavior);
  QQuickItem* picker = world.control("rehidePicker");
  ASSERT_TRUE(picker);
  EXPECT_EQ(picker->property("displayText"), "After 45 seconds");
  EXPECT_EQ(picker->property("currentIndex"), -1);
  picker->forceActiveFocus(Qt::TabFocusReason);
  // Opened and left as it is, it stores nothing.
  world.key(Qt::Key_Return);
  world.key(Qt::Key_Return);
  EXPECT_EQ(world.model->preferences().autoRehideSeconds, 45);
  const std::int64_t stored[] = {0, 5, 10, 30};
  for (int option = 0; option < 4; ++option) {
    world.key(Qt::Key_Return);
    ASSERT_EQ(world.model->preferences().autoRehideSeconds, option == 0 ? 45 : stored[option - 1]);
    for (int up = 0; up < 4; ++up) world.key(Qt::Key_Up);
    for (int down = 0; down < 5 && picker->property("highlightedIndex").toInt() < option; ++down) {
      world.key(Qt::Key_Down);
    }
    world.key(Qt::Key_Return);
    EXPECT_EQ(world.model->preferences().autoRehideSeconds, stored[option]);
    EXPECT_EQ(picker->property("currentIndex"), option);
  }
}

TEST_F(SettingsWindowTest, TheCopyButtonConfirmsForTwoSeconds) {
  show();
  openPage(OrvoView::Page::about);
  world.click(world.item("Copy system details"));
  EXPECT_EQ(world.memory.pasteboard.text, world.view->diagnosticsText());
  ASSERT_TRUE(world.item("Copied"));
  world.memory.mainQueue.advance(std::chrono::milliseconds(1000));
  world.click(world.item("Copied"));
  world.memory.mainQueue.advance(std::chrono::milliseconds(1000));
  world.turn();
  EXPECT_TRUE(world.item("Copy system details"));
}

TEST_F(SettingsWindowTest, ARescanKeepsPlaceFocusAndSelection) {
  show(manyApps(60));
  segment("Application 1000", "Keep")->forceActiveFocus(Qt::TabFocusReason);
  for (int press = 0; press < 30; ++press) world.key(Qt::Key_Down);
  ASSERT_EQ(world.quickView().activeFocusItem(), segment("Application 1030", "Keep"));
  const auto placeOnScreen = [&] { return segment("Application 1030", "Keep")->mapToScene({}).y(); };
  const double before = placeOnScreen();
  auto fewer = manyApps(60);
  fewer.erase(fewer.begin() + 2, fewer.begin() + 6);
  fewer.push_back({"org.example.new", "Application 1000 again"});
  world.setApps(fewer);
  world.rescan();
  EXPECT_EQ(world.quickView().activeFocusItem(), segment("Application 1030", "Keep"));
  EXPECT_NEAR(placeOnScreen(), before, 1);
}

TEST_F(SettingsWindowTest, EveryPageIsReachedAndWorkedByKeyboardAlone) {
  show();
  const QStringList icons = tabOrder();
  for (const char* name : {"Menu bar", "Behavior", "About Orvo", "Find an app", "Refresh menu bar icons", "Keep"}) {
    EXPECT_TRUE(icons.contains(QLatin1String(name))) << name << " in " << qPrintable(icons.join(", "));
  }
  const auto openByKeyboard = [&](const QString& page) {
    for (int press = 0; press < 40 && world.focused() != page; ++press) world.key(Qt::Key_Tab);
    world.key(Qt::Key_Return);
  };
  // Within the list the arrows choose and move.
  for (int press = 0; press < 40 && world.focused() != "Keep"; ++press) world.key(Qt::Key_Tab);
  world.key(Qt::Key_Down);
  world.key(Qt::Key_Right);
  EXPECT_EQ(world.model->preferences().rules.at("org.example.two"), IconRule::hidden);
  world.key(Qt::Key_Tab);
  EXPECT_EQ(world.focused(), "Hide selected icons");
  world.key(Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_EQ(world.focused(), "Hide");

  openByKeyboard("Behavior");
  EXPECT_EQ(world.view->page(), OrvoView::Page::behavior);
  EXPECT_TRUE(state("Behavior").selected);
  EXPECT_FALSE(state("Menu bar").selected);
  const QStringList behavior = tabOrder();
  EXPECT_TRUE(behavior.contains("Open Orvo at login") && behavior.contains("Automatically hide again"))
      << qPrintable(behavior.join(", "));
  for (int press = 0; press < 40 && world.focused() != "Open Orvo at login"; ++press) world.key(Qt::Key_Tab);
  world.key(Qt::Key_Space);
  EXPECT_TRUE(world.model->launchAtLogin());

  openByKeyboard("About Orvo");
  EXPECT_EQ(world.view->page(), OrvoView::Page::about);
  const QStringList about = tabOrder();
  for (const auto& link : world.view->links()) EXPECT_TRUE(about.contains(QString::fromStdString(link.label)));
  EXPECT_TRUE(about.contains("Copy system details"));
  for (int press = 0; press < 40 && world.focused() != "macOS compatibility research"; ++press) world.key(Qt::Key_Tab);
  world.key(Qt::Key_Return);
  EXPECT_EQ(world.memory.workspace.openedURLs, std::vector{world.view->links()[1].address});
}

TEST_F(SettingsWindowTest, AccessiblePressesAct) {
  show();
  const auto press = [&](QQuickItem* item) {
    QAccessible::queryAccessibleInterface(item)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    world.turn();
  };
  press(segment("One", "Hide"));
  EXPECT_EQ(world.model->preferences().rules.at("org.example.one"), IconRule::hidden);
  EXPECT_EQ(QAccessible::queryAccessibleInterface(segment("One", "Hide"))->role(), QAccessible::RadioButton);
  EXPECT_TRUE(QAccessible::queryAccessibleInterface(segment("One", "Hide"))->state().checked);
  press(world.item("Hide selected icons"));
  EXPECT_EQ(world.model->state(), BarState::applying);
  press(world.item("About Orvo"));
  EXPECT_EQ(world.view->page(), OrvoView::Page::about);
}

TEST_F(SettingsWindowTest, ClosingGivesTheSceneBackAndKeepsPageSearchAndFrame) {
  world.memory.userDefaults.datas["NSWindow Frame Orvo.Settings"] = "0 40 850 700";
  show();
  EXPECT_EQ(world.quickView().size(), QSize(850, 700));
  EXPECT_EQ(world.quickView().framePosition(), QPoint(0, 40));
  world.model->searchText = "tw";
  openPage(OrvoView::Page::about);
  world.quickView().resize(850, 660);
  world.quickView().close();
  world.turn();
  EXPECT_EQ(world.window->quickView(), nullptr);
  EXPECT_EQ(world.memory.userDefaults.datas["NSWindow Frame Orvo.Settings"], "0 40 850 660");
  world.show();
  EXPECT_EQ(world.quickView().size(), QSize(850, 660));
  EXPECT_TRUE(world.item("Copy system details"));
  EXPECT_EQ(world.model->searchText(), "tw");
}

TEST_F(SettingsWindowTest, ADragIsStoredOnceItRests) {
  show();
  auto& stored = world.memory.userDefaults.datas;
  world.memory.mainQueue.advance(std::chrono::milliseconds(600));
  stored.clear();
  for (int step = 1; step <= 20; ++step) {
    world.quickView().setPosition(step, step);
    world.turn();
    world.memory.mainQueue.advance(std::chrono::milliseconds(20));
    ASSERT_TRUE(stored.empty());
  }
  world.memory.mainQueue.advance(std::chrono::milliseconds(500));
  EXPECT_EQ(stored.count("NSWindow Frame Orvo.Settings"), 1U);
}

TEST_F(SettingsWindowTest, TheDesktopsAppearanceIsFollowedWhileOpen) {
  show();
  const auto corner = [&] { return world.quickView().grabWindow().pixelColor(5, 400); };
  EXPECT_GT(corner().lightness(), 200);
  world.appearance->change({.dark = true, .reducesMotion = false});
  world.turn();
  EXPECT_LT(corner().lightness(), 60);
}

TEST_F(SettingsWindowTest, NothingOverlapsOrLeavesTheWindow) {
  std::vector<NamedApp> names{
      {"long", std::string(300, 'W')}, {"ar", "تطبيق الملاحظات السريعة جدا"}, {"nl", "Two\nlines"}};
  show(names);
  for (const QSize size : {QSize(850, 630), QSize(1600, 1000)}) {
    world.quickView().resize(size);
    world.turn();
    for (const NamedApp& app : names) {
      const QString name = QString::fromStdString(app.name);
      QQuickItem* picker = world.item("Visibility for " + name);
      ASSERT_TRUE(picker) << app.name;
      EXPECT_EQ(picker->width(), 126);
      QQuickItem* label = findItem(picker->parentItem(), [&](QQuickItem* item) {
        return item->property("contentHeight").isValid() && item->property("text").toString() == name;
      });
      ASSERT_TRUE(label);
      EXPECT_LE(label->mapToScene({label->width(), 0}).x(), picker->mapToScene({}).x());
      EXPECT_LE(label->property("contentHeight").toDouble(), 24);
      EXPECT_LE(picker->mapToScene({picker->width(), 0}).x(), size.width() - 28);
    }
  }
}

TEST(SymbolFilesTest, EverySymbolThatTheWindowNamesIsDrawn) {
  for (const char* name : {"chevron.left", "chevron.right", "menubar.rectangle", "slider.horizontal.3", "info.circle",
                           "magnifyingglass", "xmark.circle.fill", "arrow.clockwise", "hand.raised", "app.dashed",
                           "checkmark", "checkmark.circle", "checkmark.circle.fill", "circle",
                           "exclamationmark.triangle", "cursorarrow.click", "lock.shield", "doc.on.doc", "orvo"}) {
    QFile file(QStringLiteral(":/orvo/symbols/%1.svg").arg(name));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    // One weight, named once, which the item replaces by its own.
    if (std::string_view(name) != "orvo") {
      EXPECT_EQ(file.readAll().count("stroke-width=\"1.5\""), 1) << name;
    }
  }
}

}  // namespace

}  // namespace orvo

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  ::testing::InitGoogleTest(&argc, argv);
  const QGuiApplication application(argc, argv);
  QAccessible::setActive(true);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
