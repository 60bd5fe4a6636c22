#include "ui/settings/KeyboardNavigation.h"
#include "ui/settings/SettingsWorld.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QPointer>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>
#include <QtGui/private/qguiapplication_p.h>
#include <QTest>

#include <cmath>
#include <map>

namespace orvo {

namespace {

using enum OrvoView::Page;

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
      return each->property("chosen").isValid() && each->property("text").toString() == text;
    });
  }
  // As an assistive program does.
  void act(QQuickItem* control, const QString& action = QAccessibleActionInterface::pressAction()) {
    accessible(control)->actionInterface()->doAction(action);
    turn();
  }
  void say(const char* failure) {
    memory.loginItem.failure = failure;
    model->setLoginItem(true);
    turn();
  }
  void trust(bool trusted) {
    memory.accessibility.trusted = trusted;
    if (model != nullptr) advance(4000);
  }
  double place(QQuickItem* list) const { return list->property("contentY").toDouble(); }
  QQuickItem* focus() const { return quickView().activeFocusItem(); }
  std::string focused() const {
    QAccessibleInterface* const element = focus() == nullptr ? nullptr : accessible(focus());
    return element == nullptr ? "" : element->text(QAccessible::Name).toStdString();
  }
  void tabTo(const char* name) {
    for (int step = 0; step < 40 && focused() != name; ++step) press("Tab");
    ASSERT_EQ(focused(), name);
  }
  bool isMarked(const char* bundle) const {
    const auto& rules = model->preferences().rules;
    return rules.contains(bundle) && rules.at(bundle) == IconRule::hidden;
  }
  void expectReadable(const char* what);
};

TEST_F(SettingsWindowTest, ARowsChoiceIsStoredAndRestsWhileHidingIsApplied) {
  open();
  QQuickItem* const hide = segment("Two", "Hide");
  click(hide);
  EXPECT_EQ(accessible(item("Two"))->text(QAccessible::Description), "Orvo away");
  act(segment("Two", "Keep"));
  EXPECT_FALSE(state(hide).checked || isMarked("two"));
  act(hide);
  EXPECT_TRUE(state(hide).checked && isMarked("two"));
  click(hide);
  act(item("Hide selected icons"));
  ASSERT_EQ(model->state(), BarState::applying);
  EXPECT_TRUE(state(item("Visibility for Two")).disabled && state(hide).disabled);
  EXPECT_TRUE(item("Reveal hidden icons")->isEnabled());
  click(segment("Two", "Keep"));
  act(segment("Two", "Keep"));
  EXPECT_TRUE(isMarked("two"));
  memory.framework.answer(0);
  turn();
  EXPECT_FALSE(state(hide).disabled);
  EXPECT_EQ(focus(), hide);
}

TEST_F(SettingsWindowTest, SearchingFiltersAndIsClearedByButtonAndByEscapeWhichThenCloses) {
  open();
  press("Ctrl+F t w");
  EXPECT_TRUE(item("1 of 2 apps") && !item("One"));
  click(item("Clear search"));
  EXPECT_TRUE(item("One") && !item("Clear search"));
  press("z z");
  EXPECT_TRUE(item("No matching apps"));
  press("Esc t w");
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

TEST_F(SettingsWindowTest, RowsThatFadeInAreWhollyShownInTheEndAndAtOnceWhereNothingMoves) {
  open(manyApps(120));
  const auto faint = [](QQuickItem* each) { return each->property("bundleID").isValid() && each->opacity() < 1; };
  for (const bool reducesMotion : {true, false}) {
    setLook(false, reducesMotion);
    press("Ctrl+F 1 1 Backspace Backspace 2 Backspace");
    EXPECT_TRUE(QTest::qWaitFor([&] { return find(faint) == nullptr; }, reducesMotion ? 0 : 2000));
  }
}

TEST_F(SettingsWindowTest, IconsAreAskedForAFewAtATimeAndAnAppWithoutOneKeepsTheSymbol) {
  open(manyApps(40));
  const auto dashed = [&](const QString& app) {
    return findItem(item(app), [](QQuickItem* each) { return each->property("name") == "app.dashed"; }) != nullptr;
  };
  auto& requests = memory.applicationIcons.requests;
  std::size_t answered = 0;
  for (; answered < requests.size(); ++answered) {
    ASSERT_LE(requests.size() - answered, 6U);
    const auto request = requests[answered];
    request.answer(request.processIdentifier == 2000 ? std::nullopt : std::optional(Picture{1, 1, {0xFF00FF00U}}));
  }
  EXPECT_TRUE(answered >= 7 && answered < 40) << answered;
  EXPECT_TRUE(dashed("Application 1000") && !dashed("Application 1001"));
}

TEST_F(SettingsWindowTest, TheLoginSwitchShowsWhatTheModelReports) {
  open();
  openPage(behavior);
  QQuickItem* const control = item("loginSwitch");
  for (const bool accessibly : {false, true}) {
    memory.loginItem.failure = "no";
    accessibly ? act(control, QAccessibleActionInterface::toggleAction()) : click(control);
    EXPECT_FALSE(control->property("checked").toBool());
    EXPECT_TRUE(item("Login item could not be changed: no"));
  }
  memory.loginItem.failure.reset();
  click(control);
  EXPECT_TRUE(control->property("checked").toBool() && model->launchAtLogin());
}

TEST_F(SettingsWindowTest, TheDelayPickerStoresItsOptionsAndShowsAStoredDelayOfItsOwn) {
  memory.userDefaults.datas["Quillet.Preferences.v1"] = R"({"rules":{},"autoRehideSeconds":45})";
  open();
  openPage(behavior);
  QQuickItem* const picker = item("rehidePicker");
  EXPECT_EQ(accessible(picker)->role(), QAccessible::ComboBox);
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
    ASSERT_NE(window->quickView(), nullptr) << "Escape closed no more than the menu";
    EXPECT_EQ(focus(), picker);
  }
  press("Return");
  EXPECT_TRUE(state(picker).expanded);
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

TEST_F(SettingsWindowTest, EveryPageIsReachedAndWorkedByKeyboardAlone) {
  open();
  for (const char* name : {"About Orvo", "Find an app", "Refresh menu bar icons", "Keep"}) tabTo(name);
  // Within the list the arrows choose and move.
  press("Down Right Tab");
  EXPECT_TRUE(isMarked("two") && focused() == "Hide selected icons");
  press("Shift+Backtab");
  EXPECT_EQ(focused(), "Hide");
  tabTo("Behavior");
  press("Return");
  EXPECT_TRUE(state(item("Behavior")).selected && !state(item("Menu bar")).selected);
  tabTo("Automatically hide again");
  tabTo("Open Orvo at login");
  press("Space");
  EXPECT_TRUE(model->launchAtLogin());
  tabTo("About Orvo");
  press("Space");
  tabTo("macOS compatibility research");
  press("Return");
  EXPECT_EQ(memory.workspace.openedURLs.size(), 1U);
}

TEST_F(SettingsWindowTest, ClosingGivesTheSceneBackAndKeepsPageSearchAndFrame) {
  auto& stored = memory.userDefaults.datas;
  std::string& frame = stored["NSWindow Frame Orvo.Settings"];
  frame = "0 40 800 700";
  open();
  EXPECT_EQ(QRect(quickView().framePosition(), quickView().size()), QRect(0, 40, 800, 700));
  model->searchText = "tw";
  openPage(about);
  const QPointer keyboard(KeyboardNavigation::of(quickView().engine()));
  ASSERT_TRUE(keyboard);
  quickView().resize(800, 660);
  quickView().close();
  turn();
  EXPECT_TRUE(keyboard == nullptr && window->quickView() == nullptr);
  EXPECT_EQ(frame, "0 40 800 660");
  show();
  EXPECT_TRUE(quickView().size() == QSize(800, 660) && item("Copy system details") && model->searchText() == "tw");
  // A drag is stored once it rests.
  advance(600);
  for (int step = 1; step <= 30; ++step) {
    quickView().setFramePosition({step, step});
    turn();
    advance(20);
    ASSERT_EQ(frame, "0 40 800 660");
  }
  advance(500);
  EXPECT_EQ(frame, "30 30 800 660");
}

TEST_F(SettingsWindowTest, NothingOverlapsOrLeavesTheWindow) {
  open({{"long", std::string(300, 'W')}, {"ar", "تطبيق الملاحظات السريعة جدا"}, {"nl", "Two\nlines"}});
  for (const QSize size : {QSize(850, 630), QSize(1600, 1000)}) {
    quickView().resize(size);
    turn();
    int rows = 0;
    int dividers = 0;
    find([&](QQuickItem* each) {
      const QVariant label = each->property("label");
      if (!label.isValid() || each->width() != 126) return false;
      ++rows;
      QQuickItem* const name = findItem(each->parentItem(), [&](QQuickItem* text) {
        return text->property("contentHeight").isValid() &&
               label.toString().endsWith(text->property("text").toString());
      });
      EXPECT_LE(name->mapToScene({name->width(), 0}).x(), each->mapToScene({}).x());
      EXPECT_LE(name->property("contentHeight").toDouble(), 24);
      EXPECT_LE(each->mapToScene({each->width(), 0}).x(), size.width() - 28);
      dividers += findItem(each->parentItem(), [](QQuickItem* line) { return line->height() == 1; }) ? 1 : 0;
      return false;
    });
    EXPECT_TRUE(rows == 3 && dividers == 2) << rows << ' ' << dividers;
  }
}

TEST_F(SettingsWindowTest, AListIsScrolledByWheelFingerAndPageKeysButNeverDraggedByTheButton) {
  open(manyApps(60));
  QQuickItem* const list = item("Apps");
  const auto turnWheel = [&](int angle) {
    const QPointF at = list->mapToScene({100, 100});
    QWheelEvent event(at, at, {}, {0, angle}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&quickView(), &event);
    return place(list);
  };
  for (int notch = 1; notch <= 8; ++notch) EXPECT_EQ(turnWheel(-120), notch * 150);
  EXPECT_EQ(turnWheel(60), 8 * 150 - 75);
  const QPoint from = list->mapToScene({100, 200}).toPoint();
  QTest::mousePress(&quickView(), Qt::LeftButton, {}, from);
  for (int step = 10; step <= 150; step += 10) QTest::mouseMove(&quickView(), from - QPoint(0, step));
  QTest::mouseRelease(&quickView(), Qt::LeftButton, {}, from - QPoint(0, 150));
  EXPECT_EQ(place(list), 8 * 150 - 75);
  EXPECT_EQ(turnWheel(12000), 0);
  static QPointingDevice* const finger = QTest::createTouchDevice();
  QTest::touchEvent(&quickView(), finger).press(1, from, &quickView());
  for (int step = 10; step <= 150; step += 10)
    QTest::touchEvent(&quickView(), finger).move(1, from - QPoint(0, step), &quickView());
  QTest::touchEvent(&quickView(), finger).release(1, from - QPoint(0, 150), &quickView());
  EXPECT_NEAR(place(list), 150, 25) << "less the way after which a touch is a drag";
  tabTo("Menu bar");
  const std::tuple<const char*, int, int> keys[] = {
      {"Home", 0, 0}, {"PgDown", 50, 350}, {"End", 2000, 3000}, {"PgUp", 2000, 2600}};
  for (const auto& [code, least, most] : keys) {
    press(code);
    EXPECT_TRUE(place(list) >= least && place(list) <= most) << code << " leads to " << place(list);
  }
}

TEST_F(SettingsWindowTest, TheFocusIsWhereSomethingCanBeDoneAndLeavesWhatHasGone) {
  trust(false);
  open();
  EXPECT_EQ(focused(), "Open Settings…");
  trust(true);
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
  say("gone soon");
  tabTo("Login item could not be changed: gone soon");
  press("Ctrl+A");
  EXPECT_EQ(focus()->property("selectedText").toString().toStdString(), focused());
  model->setRule(IconRule::hidden, "one");
  model->hideSelected();
  turn();
  EXPECT_EQ(focused(), "Find an app");
  trust(false);
  EXPECT_EQ(focused(), "Open Settings…");
}

TEST_F(SettingsWindowTest, EveryControlIsReachedInASmallWindowAndAValueIsCopied) {
  open(manyApps(5));
  quickView().setMinimumSize({1, 1});
  quickView().resize(500, 300);
  const QRectF sight(0, 0, 500, 300);
  openPage(OrvoView::Page::behavior);
  say("Something went wrong.");
  QQuickItem* const told = item("Login item could not be changed: Something went wrong.");
  EXPECT_TRUE(sight.contains(told->mapRectToScene(told->boundingRect())));
  for (const OrvoView::Page page : OrvoView::allPages) {
    openPage(page);
    for (int step = 0; step < 12; ++step) {
      press("Tab");
      const QRectF place = focus()->mapRectToScene(focus()->boundingRect());
      EXPECT_TRUE(sight.contains(place)) << focused() << " at " << place.y();
    }
  }
  QQuickItem* const title = item("Version 0.2.0");
  for (const auto& [key, shows] : {std::pair{"End", false}, {"Home", true}}) {
    press(key);
    EXPECT_EQ(top(title) > 0, shows);
  }
  quickView().resize(850, 630);
  turn();
  QQuickItem* const value = find([](QQuickItem* each) { return each->property("text") == "Enabled"; });
  QTest::mouseDClick(&quickView(), Qt::LeftButton, {}, value->mapToScene({10, 8}).toPoint());
  press("Ctrl+C");
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "Enabled");
}

int shownNotifications = 0;

TEST_F(SettingsWindowTest, AssistiveProgramsReadTextsFindOneFocusAndHearEachMessageOnce) {
  open();
  QAccessible::installUpdateHandler([](QAccessibleEvent* event) {
    const auto* const shown = event->type() == QAccessible::ObjectShow ? event->accessibleInterface() : nullptr;
    if (shown != nullptr && shown->role() == QAccessible::Notification) ++shownNotifications;
  });
  for (const auto& [message, heard] :
       {std::pair{"Something went wrong.", 1}, {"So did this.", 2}, {"So did this.", 2}, {"And that.", 3}}) {
    say(message);
    EXPECT_EQ(shownNotifications, heard) << message;
  }
  QAccessible::installUpdateHandler(nullptr);
  tabTo("Keep");
  for (const OrvoView::Page page : OrvoView::allPages) {
    openPage(page);
    int focuses = 0;
    find([&](QQuickItem* each) {
      QAccessibleInterface* const element = accessible(each);
      if (element == nullptr) return false;
      if (element->state().focused) ++focuses;
      if (element->role() != QAccessible::StaticText) return false;
      EXPECT_FALSE(element->state().focusable);
      EXPECT_EQ(element->textInterface()->text(0, 999), element->text(QAccessible::Name));
      return false;
    });
    EXPECT_EQ(focuses, 1);
  }
  EXPECT_TRUE(item("Accessibility: Enabled"));
}

// From 1 to 21, as the web content accessibility guidelines define it.
double contrast(const QColor& first, const QColor& second) {
  const auto luminance = [](const QColor& color) {
    const auto linear = [](double channel) {
      return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF()) + 0.05;
  };
  const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
  return lighter / darker;
}

// What a text stands on: the colour of most of its place; none where it is not in the picture.
QColor ground(const QImage& picture, QQuickItem* item) {
  const QRect place = item->mapRectToScene(item->boundingRect()).toRect() & picture.rect();
  std::map<QRgb, int> counts;
  for (int y = place.top(); y <= place.bottom(); ++y) {
    for (int x = place.left(); x <= place.right(); ++x) ++counts[picture.pixel(x, y)];
  }
  const auto most = std::ranges::max_element(counts, {}, &std::pair<const QRgb, int>::second);
  return most == counts.end() ? QColor() : QColor(most->first);
}

// Of every text in the window that can be used, in both appearances.
void SettingsWindowTest::expectReadable(const char* what) {
  for (const bool dark : {false, true}) {
    setLook(dark);
    const QImage picture = quickView().grabWindow();
    EXPECT_EQ(picture.pixelColor(5, 400).lightness() < 60, dark);
    int texts = 0;
    find([&](QQuickItem* each) {
      const QString text = each->property("text").toString();
      const QVariant color = each->property("color");
      const QColor under = ground(picture, each);
      if (text.isEmpty() || !each->isEnabled() || !color.isValid() || !under.isValid()) return false;
      ++texts;
      EXPECT_GE(contrast(color.value<QColor>(), under), 4.5) << what << dark << qPrintable(text);
      return false;
    });
    EXPECT_GT(texts, 9) << what;
  }
}

TEST_F(SettingsWindowTest, EveryTextIsReadableInEveryStateInBothAppearances) {
  trust(false);
  open();
  expectReadable("not trusted");
  trust(true);
  model->setRule(IconRule::hidden, "two");
  say("something went wrong");
  expectReadable("one selected");
  model->hideSelected();
  expectReadable("applying");
  memory.framework.answer(0);
  expectReadable("hidden");
  model->searchText = "zz";
  expectReadable("no hits");
  openPage(behavior);
  click(item("rehidePicker"));
  expectReadable("behavior");
  openPage(about);
  expectReadable("about");
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
  // Or nothing that happens is told.
  QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(true);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
