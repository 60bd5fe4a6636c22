#include "platform/linux/desktop/StatusNotifierItem.h"

#include "PlainWatcher.h"
#include "PrivateSession.h"
#include "platform/qt/QtMainQueue.h"
#include "support/QtEventLoop.h"

#include <QDBusConnectionInterface>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

#include <gtest/gtest.h>

namespace orvo {
namespace {

using test::callAndWait;
using test::PlainWatcher;
using test::runUntil;

constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* menuInterface = "com.canonical.dbusmenu";
constexpr const char* menuPath = "/StatusNotifierItem/Menu";

// Plays the delegate: a fresh menu at each right click, whose first row follows the state.
class StatusNotifierItemTest : public ::testing::Test {
 protected:
  StatusNotifierItemTest() {
    item_.setAction([this] { clicked(); }, leftMouseUpMask | rightMouseUpMask);
    item_.setImage("chevron.right", "Orvo");
    item_.setVisible(true);
  }

  void clicked() {
    const auto type = application_.currentEventType().value();
    log_ += type == EventType::rightMouseUp ? "right " : "left ";
    if (type == EventType::rightMouseUp) item_.popUpMenu(menu(), {});
  }
  Menu menu() {
    Menu made;
    made.autoenablesItems = false;
    made.items.push_back({.title = hidden_ ? "Show_all" : "Hide",
                          .action = [this] { log_ += "toggle "; },
                          .keyEquivalent = "",
                          .enabled = canToggle_,
                          .submenu = {}});
    made.items.push_back(separatorItem());
    made.items.push_back({.title = "Quit", .action = [this] { log_ += "quit "; }, .keyEquivalent = "", .submenu = {}});
    return made;
  }

  QDBusMessage call(const char* path, const char* interface, const char* member, const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(QDBusConnection::sessionBus().baseService(), path, interface, member);
    message.setArguments(arguments);
    const auto reply = callAndWait(*host_, message);
    EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << member << reply.errorMessage().toStdString();
    return reply;
  }
  QDBusMessage menuCall(const char* member, const QVariantList& arguments) {
    return call(menuPath, menuInterface, member, arguments);
  }
  QVariant property(const char* name) {
    return call("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get", {itemInterface, name})
        .arguments()
        .value(0)
        .value<QDBusVariant>()
        .variant();
  }
  MenuLayout layout() {
    return qdbus_cast<MenuLayout>(menuCall("GetLayout", {0, -1, QStringList()}).arguments().value(1));
  }
  void click(int id) { menuCall("Event", {id, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U}); }
  std::string takeLog() { return std::exchange(log_, {}); }
  // Whatever was posted before is done.
  void settle() {
    bool settled = false;
    queue_.post([&] { settled = true; });
    EXPECT_TRUE(runUntil([&] { return settled; }));
  }

  std::string log_;
  bool hidden_ = false;
  bool canToggle_ = true;
  QtMainQueue queue_;
  QtApplication application_{qGuiApp};
  std::shared_ptr<QDBusConnection> host_ = test::otherConnection();
  StatusNotifierItem item_{{QDBusConnection::sessionBus(), queue_, application_, "/themes"}};
};

TEST_F(StatusNotifierItemTest, EveryWatcherThatAppearsIsToldAndAHiddenItemTellsNone) {
  for (int round = 0; round < 3; ++round) {
    PlainWatcher watcher;
    ASSERT_TRUE(runUntil([&] { return !watcher.registered.isEmpty(); })) << "watcher " << round;
    EXPECT_TRUE(QDBusConnection::sessionBus().interface()->isServiceRegistered(watcher.registered.first()));
  }
  const auto services = [] { return QDBusConnection::sessionBus().interface()->registeredServiceNames().value(); };
  EXPECT_EQ(services().filter("StatusNotifierItem").size(), 1);
  item_.setVisible(false);
  EXPECT_EQ(services().filter("StatusNotifierItem").size(), 0) << "a name that stays is an icon that stays";
  PlainWatcher watcher;
  item_.setVisible(true);
  item_.setVisible(true);
  ASSERT_TRUE(runUntil([&] { return !watcher.registered.isEmpty(); }));
}

TEST_F(StatusNotifierItemTest, ButtonsArriveAsTheirEventsAfterTheHostHasItsAnswer) {
  call("/StatusNotifierItem", itemInterface, "Activate", {5, 5});
  EXPECT_TRUE(runUntil([&] { return !log_.empty(); }));
  EXPECT_EQ(takeLog(), "left ");
  call("/StatusNotifierItem", itemInterface, "SecondaryActivate", {5, 5});
  call("/StatusNotifierItem", itemInterface, "Scroll", {120, "vertical"});
  settle();
  EXPECT_EQ(log_, "");
  item_.setAction([this] { clicked(); }, rightMouseUpMask);
  call("/StatusNotifierItem", itemInterface, "Activate", {5, 5});
  settle();
  EXPECT_EQ(log_, "") << "an event outside the mask sends no action";
  EXPECT_EQ(application_.currentEventType(), std::nullopt);
}

TEST_F(StatusNotifierItemTest, TheMenuIsThereFromTheFirstQuestionOn) {
  const auto rows = layout().children;
  ASSERT_EQ(rows.size(), 3);
  EXPECT_EQ(rows.at(0).properties.value("label"), "Hide");
  EXPECT_EQ(rows.at(1).properties.value("type"), "separator");
  const auto reply = menuCall("GetGroupProperties", {QVariant::fromValue(QList<int>{1, 3, 99, -1}), QStringList()});
  const auto groups = qdbus_cast<QList<MenuProperties>>(reply.arguments().value(0));
  ASSERT_EQ(groups.size(), 2);
  EXPECT_EQ(groups.at(0).properties, rows.at(0).properties) << "a host shows its own menu when the two differ";
  EXPECT_EQ(menuCall("GetProperty", {3, "label"}).arguments().value(0).value<QDBusVariant>().variant(), "Quit");
}

TEST_F(StatusNotifierItemTest, AnnouncingTheMenuBringsAFreshOneAndSaysWhetherItReadsDifferently) {
  menuCall("GetLayout", {0, -1, QStringList()});
  const auto announce = [this] {
    return qdbus_cast<QList<int>>(
        menuCall("AboutToShowGroup", {QVariant::fromValue(QList<int>{0})}).arguments().value(0));
  };
  takeLog();
  EXPECT_EQ(announce(), QList<int>{});
  EXPECT_EQ(takeLog(), "right ");
  hidden_ = true;
  EXPECT_EQ(announce(), QList<int>{0});
  EXPECT_EQ(layout().children.at(0).properties.value("label"), "Show__all") << "an underscore is no access key";
  canToggle_ = false;
  EXPECT_TRUE(menuCall("AboutToShow", {0}).arguments().value(0).toBool());
  EXPECT_FALSE(layout().children.at(0).properties.value("enabled").toBool());
  EXPECT_FALSE(menuCall("AboutToShow", {1}).arguments().value(0).toBool());
}

TEST_F(StatusNotifierItemTest, AChoiceRunsOnceAndNothingElseDoes) {
  layout();
  takeLog();
  click(1);
  settle();
  EXPECT_EQ(takeLog(), "toggle ");
  canToggle_ = false;
  menuCall("AboutToShow", {0});
  takeLog();
  for (const int id : {0, 1, 2, 4, -1, 1000000}) click(id);
  menuCall("Event", {3, "hovered", QVariant::fromValue(QDBusVariant(0)), 0U});
  settle();
  EXPECT_EQ(takeLog(), "") << "disabled, separator, unknown and merely hovered rows do nothing";
  const QList<MenuEvent> events{{3, "clicked", QDBusVariant(0), 0}, {7, "clicked", QDBusVariant(0), 0}};
  const auto reply = menuCall("EventGroup", {QVariant::fromValue(events)});
  EXPECT_EQ(qdbus_cast<QList<int>>(reply.arguments().value(0)), QList<int>{7});
  settle();
  EXPECT_EQ(takeLog(), "quit ");
}

TEST_F(StatusNotifierItemTest, ATurnedArrowRenewsTheMenuBeforeItIsShownAgain) {
  layout();
  hidden_ = true;
  item_.setImage("chevron.left", "Orvo");
  EXPECT_TRUE(runUntil([&] { return layout().children.at(0).properties.value("label") == "Show__all"; }));
  EXPECT_EQ(property("IconName"), "orvo-chevron-left-symbolic");
}

TEST_F(StatusNotifierItemTest, AMenuThatTheItemShowsItselfClosesByChoiceEscapeOrAClickElsewhere) {
  struct Case {
    const char* name;
    bool canToggle;
    std::vector<int> keys;
    std::optional<QPointF> click;
    const char* log;
  };
  const Case cases[]{
      {"escape", true, {Qt::Key_Down, Qt::Key_Escape}, {}, ""},
      {"first row", true, {Qt::Key_Down, Qt::Key_Return}, {}, "toggle "},
      {"up from nowhere is the last row", true, {Qt::Key_Up, Qt::Key_Return}, {}, "quit "},
      {"round past the separator", true, {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Enter}, {}, "toggle "},
      {"a disabled row is passed over", false, {Qt::Key_Down, Qt::Key_Space}, {}, "quit "},
      {"click on a row", true, {}, QPointF(20, 15), "toggle "},
      {"click elsewhere", true, {}, QPointF(-5, 5), ""},
  };
  for (const Case& way : cases) {
    SCOPED_TRACE(way.name);
    canToggle_ = way.canToggle;
    call("/StatusNotifierItem", itemInterface, "ContextMenu", {100, 100});
    QWindow* window = nullptr;
    ASSERT_TRUE(
        runUntil([&] { return (window = QGuiApplication::topLevelWindows().value(0)) && window->isVisible(); }));
    takeLog();
    for (const int key : way.keys) {
      QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
      QCoreApplication::sendEvent(window, &press);
    }
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      if (!way.click) break;
      QMouseEvent event(type, *way.click, *way.click, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
      QCoreApplication::sendEvent(window, &event);
    }
    EXPECT_FALSE(window->isVisible());
    settle();
    EXPECT_EQ(takeLog(), way.log);
  }
}

TEST_F(StatusNotifierItemTest, PropertiesAreWhatPanelsRead) {
  item_.setToolTip("Show hidden icons · ⌃⌥⌘B");
  const auto toolTip = qdbus_cast<NotifierToolTip>(property("ToolTip"));
  EXPECT_EQ(toolTip.title, QString("Show hidden icons · ⌃⌥⌘B"));
  EXPECT_EQ(property("Id"), "Orvo");
  EXPECT_EQ(property("ItemIsMenu"), false);
  EXPECT_EQ(property("Menu").value<QDBusObjectPath>().path(), menuPath);
  const auto pixmaps = qdbus_cast<NotifierPixmaps>(property("IconPixmap"));
  ASSERT_EQ(pixmaps.size(), 6);
  for (const auto& pixmap : pixmaps) {
    ASSERT_EQ(pixmap.bytes.size(), pixmap.width * pixmap.height * 4);
    // Big-endian ARGB: of a light symbol on nothing, the corner is clear and the tip opaque and white.
    EXPECT_EQ(pixmap.bytes.at(0), 0);
    const auto tip = pixmap.bytes.mid((pixmap.height / 2 * pixmap.width + pixmap.width * 10 / 16) * 4, 4);
    EXPECT_EQ(tip, QByteArray(4, '\xFF')) << pixmap.width;
  }
}

}  // namespace
}  // namespace orvo
