#include "platform/linux/windows/settings_look.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFontMetrics>

#include "platform/linux/drawing/appearance.h"
#include "platform/linux/drawing/contrast.h"
#include "platform/linux/menu/menu_style.h"

namespace tollvane {
namespace {

constexpr TextColor allColors[] = {TextColor::label, TextColor::secondaryLabel, TextColor::controlAccent,
                                   TextColor::green, TextColor::orange};

ui::Text text(ui::TextStyle style) { return {"Text", style}; }

QPalette dressed(ColorScheme scheme) { return paletteFor(scheme, QApplication::palette()); }

QPalette withAccent(QPalette palette, const QColor& accent) {
  palette.setColor(QPalette::Highlight, accent);
  return palette;
}

std::vector<QPalette> palettes() {
  std::vector<QPalette> all;
  for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
    for (const QColor accent : {Qt::blue, Qt::yellow, Qt::black, Qt::white, Qt::gray})
      all.push_back(withAccent(dressed(scheme), accent));
  }
  all.push_back(QPalette(Qt::white, Qt::white));
  all.push_back(QPalette(Qt::black, Qt::black));
  all.push_back(QPalette(Qt::gray, Qt::gray));
  return all;
}

TEST(SettingsLook, EveryTextIsReadableOnTheGroupWhateverTheAccent) {
  for (const QPalette& palette : palettes()) {
    const SettingsLook look(palette, QApplication::font());
    for (const TextColor role : allColors) {
      EXPECT_GE(contrast(look.color(role), look.group()), 4.5)
          << static_cast<int>(role) << " on " << look.group().name().toStdString();
    }
  }
}

TEST(SettingsLook, EveryTextIsReadableBesideTheGroup) {
  for (const QPalette& palette : palettes()) {
    const SettingsLook look(palette, QApplication::font());
    for (const TextColor role : allColors)
      EXPECT_GE(contrast(look.color(role), palette.color(QPalette::Window)), 4.5) << static_cast<int>(role);
  }
}

TEST(SettingsLook, ASwitchIsVisibleOnAndOffAndSoIsItsKnobOnItsRail) {
  for (const QPalette& palette : palettes()) {
    const SettingsLook look(palette, QApplication::font());
    for (const bool on : {false, true}) EXPECT_GE(contrast(look.railEdge(on), look.group()), 3) << on;
    EXPECT_GE(contrast(look.knob(true), look.rail(true)), 2);
  }
}

TEST(SettingsLook, GreenIsGreenAndOrangeIsOrange) {
  for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
    const SettingsLook look(dressed(scheme), QApplication::font());
    const QColor green = look.color(TextColor::green);
    EXPECT_GT(green.green(), green.red());
    EXPECT_GT(green.green(), green.blue());
    const QColor orange = look.color(TextColor::orange);
    EXPECT_GT(orange.red(), orange.green());
    EXPECT_GT(orange.green(), orange.blue());
  }
}

TEST(SettingsLook, FontSizesFollowTheApplicationFont) {
  QFont body;
  body.setPointSizeF(13);
  const SettingsLook look(QApplication::palette(), body);
  EXPECT_DOUBLE_EQ(look.font(ui::Text{}).pointSizeF(), 13);
  EXPECT_NEAR(look.font(text(ui::TextStyle::title)).pointSizeF(), 20.8, 0.1);
  EXPECT_DOUBLE_EQ(look.font(text(ui::TextStyle::callout)).pointSizeF(), 13) << "not smaller than the desktop's";
  EXPECT_DOUBLE_EQ(look.font(text(ui::TextStyle::caption)).pointSizeF(), 13);
  EXPECT_EQ(look.font({"", ui::TextStyle::body, TextColor::label, FontWeight::semibold}).weight(), QFont::DemiBold);
  EXPECT_EQ(look.font(ui::Text{}).weight(), QFont::Normal);
}

TEST(SettingsLook, AFontGivenInPixelsKeepsItsSize) {
  QFont body;
  body.setPixelSize(20);
  const SettingsLook look(QApplication::palette(), body);
  EXPECT_NEAR(QFontMetrics(look.font(ui::Text{})).height(), QFontMetrics(body).height(), 1);
  EXPECT_EQ(look.pixels(13), 20);
}

}  // namespace
}  // namespace tollvane
