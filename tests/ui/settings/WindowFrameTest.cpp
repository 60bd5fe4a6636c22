#include "ui/settings/WindowFrame.h"

#include <gtest/gtest.h>

#include <QList>

namespace orvo {

namespace {

TEST(WindowFrameTest, OnlyATextThatIsExactlyAFrameIsOne) {
  const WindowFrame frame{{-40, 12}, {900, 700}};
  EXPECT_EQ(decodeWindowFrame(encode(frame)), frame);
  for (const char* text :
       {"", "1 2 3", "1 2 3 4 5", "1 2 x 4", "1 2 0 4", "1 2 -3 4", "1 2 3 99999999999999999999", "1 2 3 1048577"}) {
    EXPECT_EQ(decodeWindowFrame(text), std::nullopt) << text;
  }
}

TEST(WindowFrameTest, AFrameComesBackToAScreen) {
  const QSize minimum(850, 630);
  const QList<QRect> screens{{0, 0, 1920, 1080}, {1920, 0, 1280, 1024}};
  struct Case {
    WindowFrame stored, shown;
  };
  const Case cases[] = {
      {{{100, 100}, {880, 680}}, {{100, 100}, {880, 680}}},
      {{{2000, 40}, {880, 680}}, {{2000, 40}, {880, 680}}},     // second screen
      {{{5000, 5000}, {880, 680}}, {{1040, 400}, {880, 680}}},  // a screen that has gone
      {{{1800, 900}, {880, 680}}, {{1920, 344}, {880, 680}}},   // straddles: where most of it is
      {{{-300, -20}, {3000, 3000}}, {{0, 0}, {1920, 1080}}},    // larger than the screen
      {{{10, 10}, {200, 200}}, {{10, 10}, {850, 630}}},
  };
  for (const Case& one : cases) EXPECT_EQ(fitted(one.stored, minimum, screens), one.shown) << encode(one.stored);
  EXPECT_EQ(fitted({{0, 0}, {900, 900}}, minimum, {{0, 0, 640, 480}}), (WindowFrame{{0, 0}, {640, 480}}));
  EXPECT_EQ(fitted({{0, 0}, {900, 900}}, minimum, {}), std::nullopt);
}

}  // namespace

}  // namespace orvo
