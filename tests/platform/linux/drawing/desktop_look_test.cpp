// What is made of the desktop's own words about its look: fonts, themes, shared settings.
#include <gtest/gtest.h>

#include <QApplication>
#include <map>

#include "platform/linux/drawing/appearance.h"
#include "platform/linux/drawing/contrast.h"
#include "platform/linux/drawing/font_description.h"
#include "platform/linux/x11/xsettings.h"

namespace tollvane {
namespace {

TEST(FontDescription, FamilyStyleAndSize) {
  const auto font = fontFromDescription("Noto Sans Semi-Bold Italic 10.5");
  ASSERT_TRUE(font);
  EXPECT_EQ(font->family(), "Noto Sans");
  EXPECT_EQ(font->weight(), QFont::DemiBold);
  EXPECT_TRUE(font->italic());
  EXPECT_DOUBLE_EQ(font->pointSizeF(), 10.5);
}

TEST(FontDescription, ACommaEndsTheFamilies) {
  EXPECT_EQ(fontFromDescription("Cantarell, 11")->families(), QStringList("Cantarell"));
  EXPECT_EQ(fontFromDescription("Arial Black, 11")->family(), "Arial Black");
  EXPECT_EQ(fontFromDescription("Ubuntu,Cantarell,Sans Bold 11")->families(),
            QStringList({"Ubuntu", "Cantarell", "Sans"}));
  EXPECT_EQ(fontFromDescription("Sans 13px")->pixelSize(), 13);
}

TEST(FontDescription, WhatIsNoFontIsNone) {
  for (const char* text : {"", "Sans", "12", "Bold 12", "Sans 0", "Sans -4", "Sans 1e9", "Sans nan", "Sans 12pt",
                           ",  11", "\xff\xfe 12 \xff"})
    EXPECT_FALSE(fontFromDescription(text)) << text;
}

TEST(ThemeNames, TellADarkTheme) {
  for (const char* name : {"Adwaita-dark", "Mint-Y-Dark-Aqua", "Yaru-purple-dark", "Greybird-dark", "Dark"})
    EXPECT_EQ(schemeOfTheme(name), ColorScheme::dark) << name;
  for (const char* name : {"", "Adwaita", "Darkness", "Menta", "\xff"})
    EXPECT_EQ(schemeOfTheme(name), ColorScheme::noPreference) << name;
}

TEST(Accent, WhatIsChosenCanBeRead) {
  for (const QColor& accent : {QColor(Qt::yellow), QColor(Qt::blue), QColor(0xe66100), QColor(Qt::white)}) {
    const QPalette palette = withAccent(QApplication::palette(), accent);
    EXPECT_EQ(palette.color(QPalette::Highlight), accent);
    EXPECT_GE(contrast(palette.color(QPalette::HighlightedText), accent), visibleContrast);
  }
}

// The property of a settings' manager, as it writes it.
class Property {
 public:
  explicit Property(bool bigEndian) : bigEndian_(bigEndian) { (number(bigEndian ? 1 : 0, 1)).fill(3).number(1, 4); }

  Property& number(std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * (bigEndian_ ? size - 1 - i : i)) & 0xff);
    return *this;
  }
  Property& fill(std::size_t size) {
    bytes.append(size, '\0');
    return *this;
  }
  Property& name(std::uint32_t kind, std::string_view text) {
    return number(kind, 1).fill(1).number(static_cast<std::uint32_t>(text.size()), 2).padded(text).number(7, 4);
  }
  Property& text(std::string_view text) { return number(static_cast<std::uint32_t>(text.size()), 4).padded(text); }
  Property& padded(std::string_view text) {
    bytes += text;
    return fill((4 - text.size() % 4) % 4);
  }

  std::string bytes;

 private:
  bool bigEndian_;
};

std::string desktopsSettings(bool bigEndian) {
  Property property(bigEndian);
  property.number(4, 4);
  property.name(0, "Xft/DPI").number(98304, 4);
  property.name(1, "Gtk/FontName").text("Cantarell 11");
  property.name(2, "Gtk/Color").fill(8);
  property.name(1, "Net/ThemeName").text("Adwaita-dark");
  return property.bytes;
}

TEST(XSettings, FontAndThemeAreReadInBothByteOrders) {
  for (const bool bigEndian : {false, true})
    EXPECT_EQ(parseXSettings(desktopsSettings(bigEndian)), (XSettings{"Cantarell 11", "Adwaita-dark"})) << bigEndian;
}

TEST(XSettings, WhatIsCutOffEndsTheList) {
  const std::string whole = desktopsSettings(false);
  std::map<std::string, int> fonts;
  for (std::size_t size = 0; size < whole.size(); ++size) ++fonts[parseXSettings(whole.substr(0, size)).fontName];
  EXPECT_GT(fonts[""], 10);
  EXPECT_GT(fonts["Cantarell 11"], 10);
  EXPECT_EQ(fonts.size(), 2U);
}

TEST(XSettings, LengthsBeyondTheEndAreNotFollowed) {
  Property property(false);
  property.number(0xffffffff, 4).number(1, 1).fill(1).number(0xffff, 2);
  EXPECT_EQ(parseXSettings(property.bytes), XSettings());
  Property text(false);
  text.number(1, 4).name(1, "Gtk/FontName").number(0xffffffff, 4);
  EXPECT_EQ(parseXSettings(text.bytes), XSettings());
  Property unknown(false);
  unknown.number(2, 4).name(9, "x").name(1, "Gtk/FontName").text("Sans 10");
  EXPECT_EQ(parseXSettings(unknown.bytes), XSettings());
}

}  // namespace
}  // namespace tollvane
