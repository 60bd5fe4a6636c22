#include "ui/settings/WindowFrame.h"

#include <gtest/gtest.h>

#include <QList>

namespace orvo {

TEST(WindowFrameTest, OnlyATextThatIsExactlyAFrameIsOneAndItComesBackToAScreen) {
  for (const char* text :
       {"", "1 2 3", "1 2 3 4 5", "1 2 x 4", "1 2 0 4", "1 2 3 99999999999999999999", "1 2 3 1048577"})
    EXPECT_EQ(decodeWindowFrame(text), std::nullopt) << text;
  const QList<QRect> screens{{0, 0, 1920, 1080}, {1920, 0, 1280, 1024}};
  for (const auto& [stored, shown] : {std::pair{"2000 40 880 680", "2000 40 880 680"},
                                      {"5000 5000 880 680", "1040 400 880 680"},  // a screen that has gone
                                      {"1800 900 880 680", "1920 344 880 680"},   // straddles: where most of it is
                                      {"-300 -20 3000 3000", "0 0 1920 1080"},    // larger than the screen
                                      {"10 10 200 200", "10 10 850 630"}})
    EXPECT_EQ(encode(fitted(*decodeWindowFrame(stored), {850, 630}, screens).value()), shown);
  EXPECT_EQ(fitted({{0, 0}, {900, 900}}, {850, 630}, {}), std::nullopt);
}

}  // namespace orvo
