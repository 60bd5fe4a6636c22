#include "ui/settings/Keyboard.h"
#include "ui/settings/SettingsWorld.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QGuiApplication>
#include <QPointer>
#include <QQmlExpression>
#include <qqml.h>
#include <QTest>

#include <map>

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
  static QAccessibleInterface* accessible(QQuickItem* item) { return QAccessible::queryAccessibleInterface(item); }
  QAccessible::State state(const QString& name) const { return accessible(world.item(name))->state(); }
  // The one of the row's two segments; both are below its picker.
  QQuickItem* segment(const QString& app, const QString& text) const {
    return findItem(world.item("Visibility for " + app), [&](QQuickItem* item) {
      return item->property("chosen").isValid() && item->property("text").toString() == text;
    });
  }
  // As an assistive program does.
  void press(QQuickItem* item) {
    accessible(item)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    world.turn();
  }
  void say(const char* failure) {
    world.memory.loginItem.failure = failure;
    world.model->setLoginItem(true);
    world.turn();
  }
  void tabTo(const QString& name) {
    for (int press = 0; press < 40 && world.focused() != name; ++press) world.key(Qt::Key_Tab);
    ASSERT_EQ(world.focused(), name);
  }
  const std::map<std::string, IconRule>& rules() const { return world.model->preferences().rules; }

  SettingsWorld world;
};

TEST_F(SettingsWindowTest, ChoosingHideOnARowStoresTheRule) {
  show();
  world.click(segment("Two", "Hide"));
  EXPECT_EQ(rules(), (std::map<std::string, IconRule>{{"org.example.two", IconRule::hidden}}));
  EXPECT_TRUE(world.item("1 app selected to hide"));
  EXPECT_EQ(accessible(world.item("Two"))->text(QAccessible::Description), "Orvo away");
  EXPECT_EQ(accessible(segment("Two", "Hide"))->role(), QAccessible::RadioButton);
  EXPECT_TRUE(accessible(segment("Two", "Hide"))->state().checked);
  press(segment("Two", "Keep"));
  EXPECT_EQ(rules().at("org.example.two"), IconRule::visible);
  EXPECT_FALSE(accessible(segment("Two", "Hide"))->state().checked);
}

TEST_F(SettingsWindowTest, PickersRestWhileHidingIsAppliedAndKeepTheFocus) {
  show();
  world.click(segment("Two", "Hide"));
  press(world.item("Hide selected icons"));
  ASSERT_EQ(world.model->state(), BarState::applying);
  EXPECT_TRUE(state("Visibility for Two").disabled);
  EXPECT_TRUE(accessible(segment("Two", "Hide"))->state().disabled);
  EXPECT_TRUE(world.item("Reveal hidden icons")->isEnabled());
  world.click(segment("Two", "Keep"));
  EXPECT_EQ(rules().at("org.example.two"), IconRule::hidden);
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
  world.type("tw");
  world.click(segment("Two", "Hide"));
  world.key(Qt::Key_Escape);
  world.type("o");
  EXPECT_EQ(world.model->searchText(), "o") << "Escape in a row empties the field and goes back to it";
}

TEST_F(SettingsWindowTest, OnlyTheLastRowHasNoDivider) {
  show({{"a", "First"}, {"b", "Second"}});
  const auto isDivided = [&](const char* name) {
    return findItem(world.item(name), [](QQuickItem* item) { return item->height() == 1; }) != nullptr;
  };
  EXPECT_TRUE(isDivided("First"));
  EXPECT_FALSE(isDivided("Second"));
  world.setApps({{"a", "First"}});
  world.rescan();
  EXPECT_FALSE(isDivided("First"));
}

TEST_F(SettingsWindowTest, RowsThatFadeInAreWhollyShownInTheEnd) {
  show(manyApps(120));
  world.appearance->change({.dark = false, .reducesMotion = false});
  world.key(Qt::Key_F, Qt::ControlModifier);
  for (const int key : {Qt::Key_1, Qt::Key_1, Qt::Key_Backspace, Qt::Key_Backspace, Qt::Key_2, Qt::Key_Backspace}) {
    world.key(key);
  }
  const auto faint = [](QQuickItem* item) { return item->property("bundleID").isValid() && item->opacity() < 1; };
  EXPECT_TRUE(QTest::qWaitFor([&] { return findItem(world.quickView().contentItem(), faint) == nullptr; }, 2000));
  EXPECT_TRUE(world.item("Application 1000"));
}

TEST_F(SettingsWindowTest, IconsAreAskedForAFewAtATimeAndAnAppWithoutOneKeepsTheSymbol) {
  show(manyApps(40));
  auto& requests = world.memory.applicationIcons.requests;
  const auto dashed = [&](const QString& app) {
    return findItem(world.item(app), [](QQuickItem* item) { return item->property("name") == "app.dashed"; });
  };
  EXPECT_TRUE(dashed("Application 1000"));
  int answered = 0;
  for (; !requests.empty(); ++answered) {
    ASSERT_LE(requests.size(), 6U);
    const auto request = requests.back();
    requests.pop_back();
    const bool first = request.processIdentifier == 2000;
    request.answer(first ? std::nullopt : std::optional(Picture{1, 1, {0xFF00FF00U}}));
  }
  EXPECT_GE(answered, 7);
  EXPECT_LT(answered, 40);
  EXPECT_TRUE(dashed("Application 1000"));
  EXPECT_FALSE(dashed("Application 1001"));
}

TEST_F(SettingsWindowTest, TheLoginSwitchShowsWhatTheModelReports) {
  show();
  openPage(OrvoView::Page::behavior);
  QQuickItem* control = world.control("loginSwitch");
  world.memory.loginItem.failure = "no";
  for (const bool accessibly : {false, true}) {
    auto* actions = accessible(control)->actionInterface();
    accessibly ? actions->doAction(QAccessibleActionInterface::toggleAction()) : world.click(control);
    world.turn();
    EXPECT_FALSE(control->property("checked").toBool());
    EXPECT_TRUE(world.item("Login item could not be changed: no"));
  }
  world.memory.loginItem.failure.reset();
  world.click(control);
  EXPECT_TRUE(control->property("checked").toBool());
  EXPECT_TRUE(world.model->launchAtLogin());
}

TEST_F(SettingsWindowTest, TheDelayPickerStoresItsOptionsAndShowsAStoredDelayOfItsOwn) {
  world.memory.userDefaults.datas["Quillet.Preferences.v1"] = R"({"rules":{},"autoRehideSeconds":45})";
  show();
  openPage(OrvoView::Page::behavior);
  QQuickItem* picker = world.control("rehidePicker");
  const auto value = [&] { return accessible(picker)->textInterface()->text(0, 99); };
  const auto delay = [&] { return world.model->preferences().autoRehideSeconds; };
  EXPECT_EQ(accessible(picker)->role(), QAccessible::ComboBox);
  EXPECT_EQ(value(), "After 45 seconds");
  picker->forceActiveFocus(Qt::TabFocusReason);
  // Closed it lets keys pass; opened and left as it is, it stores nothing either.
  for (const int key : {Qt::Key_Home, Qt::Key_End, Qt::Key_N, Qt::Key_Down, Qt::Key_Return, Qt::Key_Up, Qt::Key_Escape})
    world.key(key);
  EXPECT_EQ(delay(), 45);
  ASSERT_NE(world.window->quickView(), nullptr) << "Escape closed no more than the menu";
  const std::int64_t stored[] = {0, 5, 10, 30};
  for (int option = 0; option < 4; ++option) {
    world.key(Qt::Key_Return);
    EXPECT_TRUE(accessible(picker)->state().expanded);
    world.key(Qt::Key_Home);
    for (int down = 0; down < option; ++down) world.key(Qt::Key_Down);
    world.key(Qt::Key_Return);
    EXPECT_EQ(delay(), stored[option]);
    EXPECT_EQ(value(), world.view->rehideText().c_str());
    EXPECT_EQ(world.quickView().activeFocusItem(), picker);
  }
}

TEST_F(SettingsWindowTest, ARescanKeepsPlaceAndFocusUntilTheRowItselfGoes) {
  show(manyApps(60));
  segment("Application 1000", "Keep")->forceActiveFocus(Qt::TabFocusReason);
  for (int press = 0; press < 30; ++press) world.key(Qt::Key_Down);
  QQuickItem* const focused = segment("Application 1030", "Keep");
  ASSERT_EQ(world.quickView().activeFocusItem(), focused);
  const double before = focused->mapToScene({}).y();
  auto fewer = manyApps(60);
  fewer.erase(fewer.begin() + 2, fewer.begin() + 6);
  fewer.push_back({"org.example.new", "Application 1000 again"});
  world.setApps(fewer);
  world.rescan();
  EXPECT_EQ(world.quickView().activeFocusItem(), segment("Application 1030", "Keep"));
  EXPECT_NEAR(segment("Application 1030", "Keep")->mapToScene({}).y(), before, 1);
  // The keyboard goes on from a neighbour.
  std::erase_if(fewer, [](const NamedApp& app) { return app.name == "Application 1030"; });
  world.setApps(fewer);
  world.rescan();
  world.key(Qt::Key_Down);
  world.key(Qt::Key_Right);
  EXPECT_EQ(rules().size(), 1U);
}

TEST_F(SettingsWindowTest, EveryPageIsReachedAndWorkedByKeyboardAlone) {
  show();
  for (const char* name : {"Menu bar", "Behavior", "About Orvo", "Find an app", "Refresh menu bar icons", "Keep"}) {
    tabTo(name);
  }
  // Within the list the arrows choose and move.
  world.key(Qt::Key_Down);
  world.key(Qt::Key_Right);
  EXPECT_EQ(rules().at("org.example.two"), IconRule::hidden);
  world.key(Qt::Key_Tab);
  EXPECT_EQ(world.focused(), "Hide selected icons");
  world.key(Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_EQ(world.focused(), "Hide");

  tabTo("Behavior");
  world.key(Qt::Key_Return);
  EXPECT_EQ(world.view->page(), OrvoView::Page::behavior);
  EXPECT_TRUE(state("Behavior").selected);
  EXPECT_FALSE(state("Menu bar").selected);
  tabTo("Automatically hide again");
  tabTo("Open Orvo at login");
  world.key(Qt::Key_Space);
  EXPECT_TRUE(world.model->launchAtLogin());

  tabTo("About Orvo");
  world.key(Qt::Key_Space);
  tabTo("Copy system details");
  tabTo("macOS compatibility research");
  world.key(Qt::Key_Return);
  EXPECT_EQ(world.memory.workspace.openedURLs, std::vector{world.view->links()[1].address});
}

TEST_F(SettingsWindowTest, ClosingGivesTheSceneBackAndKeepsPageSearchAndFrame) {
  world.memory.userDefaults.datas["NSWindow Frame Orvo.Settings"] = "0 40 800 700";
  show();
  EXPECT_EQ(world.quickView().size(), QSize(800, 700));
  EXPECT_EQ(world.quickView().framePosition(), QPoint(0, 40));
  world.model->searchText = "tw";
  openPage(OrvoView::Page::about);
  const QPointer keyboard(Keyboard::of(world.quickView().engine()));
  ASSERT_TRUE(keyboard);
  world.quickView().resize(800, 660);
  world.quickView().close();
  world.turn();
  EXPECT_FALSE(keyboard);
  EXPECT_EQ(world.window->quickView(), nullptr);
  EXPECT_EQ(world.memory.userDefaults.datas["NSWindow Frame Orvo.Settings"], "0 40 800 660");
  world.show();
  EXPECT_EQ(world.quickView().size(), QSize(800, 660));
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

TEST_F(SettingsWindowTest, NothingOverlapsOrLeavesTheWindow) {
  const std::vector<NamedApp> names{
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
      EXPECT_LE(label->mapToScene({label->width(), 0}).x(), picker->mapToScene({}).x());
      EXPECT_LE(label->property("contentHeight").toDouble(), 24);
      EXPECT_LE(picker->mapToScene({picker->width(), 0}).x(), size.width() - 28);
    }
  }
}

TEST_F(SettingsWindowTest, TheWheelMovesThreeRowsANotchAndTheButtonDragsNothing) {
  show(manyApps(60));
  QQuickItem* const list = world.item("Apps");
  const auto place = [&] { return list->property("contentY").toDouble(); };
  const auto turnWheel = [&](int angle) {
    const QPointF at = list->mapToScene({100, 100});
    QWheelEvent event(at, at, {}, {0, angle}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&world.quickView(), &event);
  };
  for (int notch = 1; notch <= 8; ++notch) {
    turnWheel(-120);
    EXPECT_EQ(place(), notch * 150);
  }
  turnWheel(60);
  EXPECT_EQ(place(), 8 * 150 - 75);
  for (const double x : {100.0, list->width() - 40}) {
    const QPoint from = list->mapToScene({x, 200}).toPoint();
    QTest::mousePress(&world.quickView(), Qt::LeftButton, {}, from);
    for (int step = 10; step <= 150; step += 10) QTest::mouseMove(&world.quickView(), from - QPoint(0, step));
    QTest::mouseRelease(&world.quickView(), Qt::LeftButton, {}, from - QPoint(0, 150));
    world.turn();
    EXPECT_EQ(place(), 8 * 150 - 75);
  }
  turnWheel(12000);
  EXPECT_EQ(place(), 0);
}

TEST_F(SettingsWindowTest, TheFocusIsWhereSomethingCanBeDoneAndLeavesWhatHasGone) {
  world.memory.accessibility.trusted = false;
  show();
  const auto poll = [&] {
    world.memory.mainQueue.advance(std::chrono::milliseconds(4000));
    world.turn();
  };
  EXPECT_EQ(world.focused(), "Open Settings…");
  world.memory.accessibility.trusted = true;
  poll();
  EXPECT_EQ(world.focused(), "Find an app");
  tabTo("Refresh menu bar icons");
  world.memory.scanExecutor.holds = true;
  world.rescan();
  EXPECT_EQ(world.focused(), "Refreshing menu bar icons");
  world.memory.scanExecutor.holds = false;
  world.turn();
  EXPECT_EQ(world.focused(), "Refresh menu bar icons");
  tabTo("Keep");
  world.setApps({});
  world.rescan();
  EXPECT_EQ(world.focused(), "Find an app");
  say("gone soon");
  tabTo("Login item could not be changed: gone soon");
  world.model->setRule(IconRule::hidden, "org.example.one");
  world.model->hideSelected();
  world.turn();
  EXPECT_EQ(world.focused(), "Find an app");
  world.memory.accessibility.trusted = false;
  poll();
  EXPECT_EQ(world.focused(), "Open Settings…");
}

TEST_F(SettingsWindowTest, EscapeClosesWhenThereIsNothingToEmptyAndSoDoesControlW) {
  show();
  world.model->searchText = "tw";
  tabTo("Behavior");
  world.key(Qt::Key_Escape);
  EXPECT_EQ(world.model->searchText(), "");
  for (const auto& [key, modifier] : {std::pair{Qt::Key_Escape, Qt::NoModifier}, {Qt::Key_W, Qt::ControlModifier}}) {
    world.key(key, modifier);
    EXPECT_EQ(world.window->quickView(), nullptr);
    world.show();
  }
}

TEST_F(SettingsWindowTest, EveryControlIsReachedInASmallWindow) {
  show(manyApps(5));
  world.quickView().setMinimumSize({1, 1});
  world.quickView().resize(500, 300);
  say("Something went wrong.");
  for (const OrvoView::Page page : OrvoView::allPages) {
    openPage(page);
    for (int press = 0; press < 12; ++press) {
      world.key(Qt::Key_Tab);
      const QQuickItem* const focus = world.quickView().activeFocusItem();
      const QRectF place = focus->mapRectToScene(focus->boundingRect());
      EXPECT_TRUE(QRectF(0, 0, 500, 300).contains(place)) << qPrintable(world.focused()) << " at " << place.y();
    }
  }
  QQuickItem* const title = world.item("Version 0.2.0");
  world.key(Qt::Key_End);
  EXPECT_LT(title->mapToScene({}).y(), 0);
  world.key(Qt::Key_Home);
  EXPECT_GT(title->mapToScene({}).y(), 0);
}

TEST_F(SettingsWindowTest, AssistiveProgramsReadTextsAndFindOneFocus) {
  show();
  say("Something went wrong.");
  tabTo("Keep");
  for (const OrvoView::Page page : OrvoView::allPages) {
    openPage(page);
    int focused = 0;
    findItem(world.quickView().contentItem(), [&](QQuickItem* item) {
      QAccessibleInterface* const element = accessible(item);
      if (element == nullptr) return false;
      if (element->state().focused) ++focused;
      if (element->role() != QAccessible::StaticText) return false;
      EXPECT_FALSE(element->state().focusable);
      EXPECT_EQ(element->textInterface()->text(0, 999), element->text(QAccessible::Name));
      return false;
    });
    EXPECT_EQ(focused, 1);
  }
  EXPECT_TRUE(world.item("Accessibility: Enabled"));
}

double luminance(const QColor& color) {
  const auto linear = [](double channel) {
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

// From 1 to 21, as the web content accessibility guidelines define it.
double contrast(const QColor& first, const QColor& second) {
  const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
  return (lighter + 0.05) / (darker + 0.05);
}

// What a text stands on: the colour of most of its place.
QColor ground(const QImage& picture, QQuickItem* item) {
  const QRect place = item->mapRectToScene(item->boundingRect()).toRect() & picture.rect();
  std::map<QRgb, int> counts;
  for (int y = place.top(); y <= place.bottom(); ++y) {
    for (int x = place.left(); x <= place.right(); ++x) ++counts[picture.pixel(x, y)];
  }
  const auto most = std::ranges::max_element(counts, {}, [](const auto& count) { return count.second; });
  return most == counts.end() ? QColor() : QColor(most->first);
}

// Of every text in the window that can be used; answers how many there were.
int expectReadable(SettingsWorld& world, const std::string& state) {
  int texts = 0;
  for (const bool dark : {false, true}) {
    world.appearance->change({.dark = dark, .reducesMotion = true});
    world.turn();
    const QImage picture = world.quickView().grabWindow();
    findItem(world.quickView().contentItem(), [&](QQuickItem* item) {
      const QString text = item->property("text").toString();
      if (text.isEmpty() || !item->isEnabled() || !item->property("color").isValid()) return false;
      const QColor under = ground(picture, item);
      if (!under.isValid()) return false;
      ++texts;
      EXPECT_GE(contrast(item->property("color").value<QColor>(), under), 4.5)
          << state << (dark ? ", dark: " : ", light: ") << qPrintable(text) << " on " << qPrintable(under.name());
      return false;
    });
  }
  return texts;
}

TEST_F(SettingsWindowTest, EveryTextIsReadableInEveryStateInBothAppearances) {
  world.memory.accessibility.trusted = false;
  show();
  EXPECT_GT(expectReadable(world, "not trusted"), 30);
  world.memory.accessibility.trusted = true;
  world.rescan();
  expectReadable(world, "nothing selected");
  world.model->setRule(IconRule::hidden, "org.example.two");
  world.memory.loginItem.failure = "something went wrong";
  world.model->setLoginItem(true);
  expectReadable(world, "one selected");
  world.model->hideSelected();
  expectReadable(world, "applying");
  world.memory.framework.answer(0);
  expectReadable(world, "hidden");
  world.model->searchText = "zz";
  expectReadable(world, "no hits");
  openPage(OrvoView::Page::behavior);
  world.click(world.control("rehidePicker"));
  EXPECT_GT(expectReadable(world, "behavior"), 30);
  openPage(OrvoView::Page::about);
  EXPECT_GT(expectReadable(world, "about"), 50);
}

TEST_F(SettingsWindowTest, TheDesktopsWishesAreFollowedWhileOpen) {
  show();
  QQuickItem* const content = world.quickView().rootObject();
  QQmlExpression movement(qmlContext(content), content, "Theme.movement");
  for (const bool dark : {true, false}) {
    world.appearance->change({.dark = dark, .reducesMotion = !dark});
    world.turn();
    EXPECT_EQ(world.quickView().grabWindow().pixelColor(5, 400).lightness() < 60, dark);
    EXPECT_EQ(movement.evaluate().toInt() > 0, dark);
  }
}

// What QML and the symbols complain of is a fault, whichever test brings it up.
void failOnWarning(QtMsgType, const QMessageLogContext&, const QString& message) {
  if (!message.startsWith("This plugin does not support")) ADD_FAILURE() << qPrintable(message);
}

}  // namespace

}  // namespace orvo

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  ::testing::InitGoogleTest(&argc, argv);
  const QGuiApplication application(argc, argv);
  qInstallMessageHandler(orvo::failOnWarning);
  QAccessible::setActive(true);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
