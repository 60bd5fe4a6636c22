#include "platform/linux/desktop/StatusNotifierItem.h"

#include "platform/linux/busSupport/TestSession.h"
#include "platform/qt/QtMainQueue.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

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
      return MenuItem{.title = title,
                      .action = [this, note] { log_ += note; },
                      .keyEquivalent = "",
                      .enabled = enabled,
                      .submenu = {}};
    };
    return {.title = "",
            .autoenablesItems = false,
            .items = {row(title_, "toggle ", canToggle_), separatorItem(), row("Quit", "quit ", true)}};
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

TEST_F(StatusNotifierItemTest, ButtonsArriveAsTheirEventsAfterTheHostHasItsAnswerAndAHiddenItemHasNoName) {
  item_.Activate(5, 5);
  EXPECT_EQ(log_, "") << "not inside the call";
  EXPECT_EQ(log(), "left ");
  item_.setAction([this] { clicked(); }, rightMouseUpMask);
  item_.Activate(5, 5);
  EXPECT_EQ(log(), "") << "an event outside the mask";
  const auto names = [] { return QDBusConnection::sessionBus().interface()->registeredServiceNames().value(); };
  EXPECT_EQ(names().filter("StatusNotifierItem").size(), 1);
  item_.setVisible(false);
  EXPECT_EQ(names().filter("StatusNotifierItem").size(), 0) << "a name that stays is an icon that stays";
}

TEST_F(StatusNotifierItemTest, AnAnnouncedMenuIsAFreshOneAndItsChoiceRunsOnce) {
  ExportedMenu menu(QDBusConnection::sessionBus(), "/menu", queue_, [&] { menu.setMenu(this->menu()); });
  const auto label = [&] {
    MenuLayout layout;
    menu.GetLayout(0, -1, {}, layout);
    return layout.children.value(0).value<MenuLayout>().properties.value("label").toString();
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
  EXPECT_EQ(log(), "") << "disabled, separator, unknown and merely hovered rows do nothing";
}

TEST(StatusSymbolsTest, PicturesAreBigEndianLightSymbolsOnNothing) {
  for (const auto& picture : symbolPixmaps("chevron.right")) {
    ASSERT_EQ(picture.bytes.size(), picture.width * picture.height * 4);
    EXPECT_EQ(picture.bytes.at(0), 0);
    const qsizetype pixel = picture.height / 2 * picture.width + picture.width * 10 / 16;
    const auto tip = picture.bytes.mid(pixel * 4, 4);
    EXPECT_EQ(tip, QByteArray(4, '\xFF')) << picture.width;
  }
}

}  // namespace
}  // namespace orvo
