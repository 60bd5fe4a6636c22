#include "platform/linux/desktop/StatusNotifierItem.h"

#include "platform/linux/busSupport/TestSession.h"
#include "platform/qt/QtMainQueue.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>

namespace orvo {
namespace {

using test::runUntil;

// Plays the delegate: a fresh menu at each right click, whose first row follows the state.
class StatusNotifierItemTest : public ::testing::Test {
 protected:
  StatusNotifierItemTest() {
    item_.setAction([this] { clicked(); }, leftMouseUpMask | rightMouseUpMask);
    item_.setVisible(true);
  }

  void clicked() {
    const bool right = application_.currentEventType() == EventType::rightMouseUp;
    log_ += right ? "right " : "left ";
    if (right) item_.popUpMenu(menu(), {});
  }
  Menu menu() {
    const auto row = [this](const char* title, const char* note, bool enabled) {
      return MenuItem{title, [this, note] { log_ += note; }, "", enabled, false, {}};
    };
    return {"", false, {row(title_, "toggle ", canToggle_), separatorItem(), row("Quit", "quit ", true)}};
  }
  // What is logged once everything that was posted before is done.
  std::string log() {
    bool settled = false;
    queue_.post([&] { settled = true; });
    EXPECT_TRUE(runUntil([&] { return settled; }));
    return std::exchange(log_, {});
  }

  std::string log_;
  const char* title_ = "Hide";
  bool canToggle_ = true;
  QtMainQueue queue_;
  QtApplication application_{qGuiApp};
  StatusNotifierItem item_{{QDBusConnection::sessionBus(), queue_, application_, "/themes"}};
};

TEST_F(StatusNotifierItemTest, EventsOutsideTheMaskAreNoneAndAnItemThatIsHiddenHasNoName) {
  item_.setAction([this] { clicked(); }, rightMouseUpMask);
  item_.Activate(5, 5);
  EXPECT_EQ(log(), "");
  const auto names = [] { return QDBusConnection::sessionBus().interface()->registeredServiceNames().value(); };
  EXPECT_EQ(names().filter("StatusNotifierItem").size(), 1);
  item_.setVisible(false);
  EXPECT_EQ(names().filter("StatusNotifierItem").size(), 0) << "a name that stays is an icon that stays";
}

TEST_F(StatusNotifierItemTest, AnAnnouncedMenuIsAFreshOneAndWhatIsNoChoiceDoesNothing) {
  ExportedMenu menu(QDBusConnection::sessionBus(), "/menu", queue_, [&] { menu.setMenu(this->menu()); });
  const auto label = [&] {
    MenuLayout layout;
    menu.GetLayout(0, -1, {}, layout);
    return layout.children.value(0).properties.value("label").toString();
  };
  QList<int> errors;
  EXPECT_EQ(label(), "Hide") << "there from the first question on";
  EXPECT_EQ(menu.AboutToShowGroup({0}, errors), QList<int>{});
  title_ = "Show_all";
  EXPECT_EQ(menu.AboutToShowGroup({0, 9}, errors), QList<int>{0});
  EXPECT_EQ(errors, QList<int>{9});
  EXPECT_EQ(label(), "Show__all") << "an underscore is no access key";
  title_ = "Hide";
  menu.invalidate();
  EXPECT_TRUE(runUntil([&] { return label() == "Hide"; })) << "ahead of its showing";
  EXPECT_EQ(menu.EventGroup({{1, "clicked", QDBusVariant(0), 0}, {7, "clicked", QDBusVariant(0), 0}}), QList<int>{7});
  EXPECT_EQ(log(), "toggle ");
  canToggle_ = false;
  EXPECT_TRUE(menu.AboutToShow(0));
  for (const int id : {0, 1, 2, 4, -1, 1000000}) menu.Event(id, "clicked", QDBusVariant(0), 0);
  menu.Event(3, "hovered", QDBusVariant(0), 0);
  EXPECT_EQ(log(), "") << "disabled, separator, unknown and merely hovered rows";
}

TEST_F(StatusNotifierItemTest, AMenuThatTheItemShowsItselfClosesByChoiceEscapeOrAClickElsewhere) {
  const struct {
    bool canToggle;
    std::vector<int> keys;
    std::optional<QPointF> click;
    const char* log;
  } cases[]{
      {true, {Qt::Key_Down, Qt::Key_Escape}, {}, ""},
      {true, {Qt::Key_Up, Qt::Key_Return}, {}, "quit "},
      {true, {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Enter}, {}, "toggle "},
      {false, {Qt::Key_Down, Qt::Key_Space}, {}, "quit "},
      {true, {}, QPointF(20, 15), "toggle "},
      {true, {}, QPointF(-5, 5), ""},
  };
  for (const auto& [canToggle, keys, click, logged] : cases) {
    canToggle_ = canToggle;
    item_.ContextMenu(100, 100);
    EXPECT_EQ(log_, "") << "not inside the call";
    EXPECT_EQ(log(), "right ");
    QWindow* const window = QGuiApplication::topLevelWindows().value(0);
    ASSERT_TRUE(window != nullptr && window->isVisible());
    for (const int key : keys) {
      QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
      QCoreApplication::sendEvent(window, &press);
    }
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      if (!click) continue;
      QMouseEvent event(type, *click, *click, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
      QCoreApplication::sendEvent(window, &event);
    }
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(log(), logged);
  }
}

TEST(StatusSymbolsTest, PicturesAreBigEndianLightSymbolsOnNothing) {
  for (const auto& picture : symbolPixmaps("chevron.right")) {
    ASSERT_EQ(picture.bytes.size(), picture.width * picture.height * 4);
    EXPECT_EQ(picture.bytes.at(0), 0);
    const qsizetype pixel = picture.height / 2 * picture.width + picture.width * 10 / 16;
    EXPECT_EQ(picture.bytes.mid(pixel * 4, 4), QByteArray(4, '\xFF')) << picture.width;
  }
}

}  // namespace
}  // namespace orvo
