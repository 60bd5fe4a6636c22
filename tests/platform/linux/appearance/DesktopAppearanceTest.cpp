#include "platform/linux/appearance/DesktopAppearance.h"

#include <gtest/gtest.h>

namespace orvo {
namespace {

// Writes settings as a manager does.
struct Writer {
  std::string number(std::size_t value, std::size_t width) const {
    std::string text;
    for (std::size_t place = 0; place < width; ++place)
      text += static_cast<char>(value >> 8 * (bigEndian ? width - 1 - place : place) & 0xFFU);
    return text;
  }
  static std::string padded(const std::string& text) { return text + std::string((4 - text.size() % 4) % 4, '\0'); }
  std::string text(const std::string& value) const { return number(value.size(), 4) + padded(value); }
  std::string setting(char kind, const std::string& name, const std::string& value) const {
    return std::string{kind, '\0'} + number(name.size(), 2) + padded(name) + number(1, 4) + value;
  }
  std::string desktop() const {
    return std::string{bigEndian ? '\1' : '\0', '\0', '\0', '\0'} + number(7, 4) + number(4, 4) +
           setting(2, "Gtk/ColorScheme", std::string(8, '\xFF')) + setting(1, "Net/ThemeName", text("Adwaita-Dark")) +
           setting(0, "Gtk/EnableAnimations", number(0, 4)) + setting(1, "Gtk/FontName", text("Sans 10"));
  }

  bool bigEndian = false;
};

TEST(XSettingsTest, SettingsOfBothByteOrdersAreRead) {
  for (const bool bigEndian : {false, true}) {
    const XSettingsValues values = parseXSettings(Writer{bigEndian}.desktop());
    EXPECT_EQ(std::get<std::string>(values.at("Net/ThemeName")), "Adwaita-Dark");
    EXPECT_EQ(std::get<std::string>(values.at("Gtk/FontName")), "Sans 10");
    EXPECT_EQ(std::get<std::int32_t>(values.at("Gtk/EnableAnimations")), 0);
    EXPECT_EQ(values.size(), 3U);
  }
}

TEST(XSettingsTest, BytesThatBreakOffOrLieKeepWhatCameBefore) {
  const std::string whole = Writer().desktop();
  std::size_t most = 0;
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    const std::size_t count = parseXSettings(std::string_view(whole).substr(0, length)).size();
    EXPECT_GE(count, most) << length;
    most = count;
  }
  EXPECT_EQ(most, 3U);
  EXPECT_TRUE(parseXSettings(std::string(whole).replace(12 + 2, 2, "\xFF\xFF")).empty()) << "a name beyond the end";
  EXPECT_TRUE(parseXSettings(std::string(whole).replace(12, 1, "\x09")).empty()) << "a kind that does not exist";
}

TEST(DesktopAppearanceTest, ThePortalSpeaksFirstThenTheThemesName) {
  const struct {
    const char* theme;
    unsigned portal;
    std::optional<bool> dark;
  } cases[]{{"Adwaita-dark", 0, true},  {"Arc-Dark", 7, true}, {"Adwaita", 0, false},
            {"Adwaita-dark", 2, false}, {"Adwaita", 1, true},  {"", 0, std::nullopt}};
  for (const auto& [theme, portal, dark] : cases)
    EXPECT_EQ(appearanceTraits({{"Net/ThemeName", std::string(theme)}}, portal).dark, dark) << theme;
  EXPECT_EQ(appearanceTraits({}, 1).dark, true);
  EXPECT_FALSE(appearanceTraits({}, 0).reducesMotion);
  for (const int animations : {0, 1})
    EXPECT_EQ(appearanceTraits({{"Gtk/EnableAnimations", animations}}, 0).reducesMotion, animations == 0);
}

}  // namespace
}  // namespace orvo
