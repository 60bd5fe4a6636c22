#include "platform/linux/appearance/DesktopAppearance.h"

#include <gtest/gtest.h>

namespace orvo {

namespace {

// Writes settings as a manager does.
class Settings {
 public:
  explicit Settings(bool bigEndian) : bigEndian_(bigEndian) {}

  Settings& integer(const std::string& name, std::int32_t value) {
    header(0, name);
    body_ += number(static_cast<std::uint32_t>(value), 4);
    return *this;
  }
  Settings& text(const std::string& name, const std::string& value) {
    header(1, name);
    body_ += number(static_cast<std::uint32_t>(value.size()), 4) + padded(value);
    return *this;
  }
  Settings& color(const std::string& name) {
    header(2, name);
    body_ += std::string(8, '\xFF');
    return *this;
  }
  std::string bytes() const {
    return std::string(1, bigEndian_ ? '\1' : '\0') + std::string(3, '\0') + number(7, 4) + number(count_, 4) + body_;
  }

 private:
  void header(char kind, const std::string& name) {
    ++count_;
    body_ +=
        std::string(1, kind) + '\0' + number(static_cast<std::uint32_t>(name.size()), 2) + padded(name) + number(1, 4);
  }
  std::string number(std::uint32_t value, std::size_t width) const {
    std::string text;
    for (std::size_t place = 0; place < width; ++place) {
      const std::size_t shift = 8 * (bigEndian_ ? width - 1 - place : place);
      text += static_cast<char>((value >> shift) & 0xFFU);
    }
    return text;
  }
  static std::string padded(const std::string& text) { return text + std::string((4 - text.size() % 4) % 4, '\0'); }

  bool bigEndian_;
  std::uint32_t count_ = 0;
  std::string body_;
};

std::string desktop(bool bigEndian) {
  return Settings(bigEndian)
      .color("Gtk/ColorScheme")
      .text("Net/ThemeName", "Adwaita-Dark")
      .integer("Gtk/EnableAnimations", 0)
      .text("Gtk/FontName", "Sans 10")
      .bytes();
}

TEST(XSettingsTest, SettingsOfBothByteOrdersAreRead) {
  for (const bool bigEndian : {false, true}) {
    const XSettingsValues values = parseXSettings(desktop(bigEndian));
    EXPECT_EQ(std::get<std::string>(values.at("Net/ThemeName")), "Adwaita-Dark");
    EXPECT_EQ(std::get<std::string>(values.at("Gtk/FontName")), "Sans 10");
    EXPECT_EQ(std::get<std::int32_t>(values.at("Gtk/EnableAnimations")), 0);
    EXPECT_EQ(values.size(), 3U);
  }
}

TEST(XSettingsTest, BytesThatBreakOffKeepWhatCameBefore) {
  const std::string whole = desktop(false);
  std::size_t most = 0;
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    const std::size_t count = parseXSettings(std::string_view(whole).substr(0, length)).size();
    EXPECT_GE(count, most) << length;
    most = count;
  }
  EXPECT_EQ(most, 3U);
  // Lengths beyond the end, and a kind that does not exist.
  std::string wild = whole;
  wild.replace(12 + 2, 2, "\xFF\xFF");
  EXPECT_TRUE(parseXSettings(wild).empty());
  wild = whole;
  wild[12] = 9;
  EXPECT_TRUE(parseXSettings(wild).empty());
}

TEST(DesktopAppearanceTest, ThePortalSpeaksFirstThenTheThemesName) {
  struct Case {
    const char* theme;
    unsigned portal;
    std::optional<bool> dark;
  };
  for (const Case& one : {Case{"Adwaita-dark", 0, true}, Case{"Arc-Dark", 7, true}, Case{"Adwaita", 0, false},
                          Case{"Adwaita-dark", 2, false}, Case{"Adwaita", 1, true}, Case{"", 0, std::nullopt}}) {
    EXPECT_EQ(appearanceTraits({{"Net/ThemeName", std::string(one.theme)}}, one.portal).dark, one.dark) << one.theme;
  }
  EXPECT_EQ(appearanceTraits({}, 1).dark, true);
  EXPECT_FALSE(appearanceTraits({}, 0).reducesMotion);
  EXPECT_FALSE(appearanceTraits({{"Gtk/EnableAnimations", 1}}, 0).reducesMotion);
  EXPECT_TRUE(appearanceTraits({{"Gtk/EnableAnimations", 0}}, 0).reducesMotion);
}

}  // namespace

}  // namespace orvo
