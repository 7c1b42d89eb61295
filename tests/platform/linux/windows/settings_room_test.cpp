// Nothing in the settings window is clipped, in any of its states, in any common font, light or dark. Run at scale 1
// and 2.
#include <gtest/gtest.h>

#include <QApplication>
#include <QEventLoop>
#include <QFontInfo>
#include <QPushButton>
#include <QScrollArea>
#include <ostream>
#include <string>
#include <tuple>

#include "platform/linux/drawing/appearance.h"
#include "platform/linux/windows/control_views.h"
#include "platform/linux/windows/settings_window.h"
#include "platform/linux/windows/switch_button.h"
#include "tests/probes/settings_scenarios.h"

namespace tollvane::test {
namespace {

struct NamedFont {
  const char* family;
  double points;
};

std::ostream& operator<<(std::ostream& out, const NamedFont& font) { return out << font.family << ' ' << font.points; }

class SettingsRoom : public testing::TestWithParam<std::tuple<std::string, NamedFont, ColorScheme>> {
 protected:
  SettingsRoom() {
    const auto& [scenario, font, scheme] = GetParam();
    QFont wanted(QString::fromLatin1(font.family));
    wanted.setPointSizeF(font.points);
    QApplication::setFont(wanted);
    QApplication::setPalette(paletteFor(scheme, QApplication::palette()));
    page.setFixedSize(520, 640);
    page.setContent(SettingsScenario(scenario).content());
    page.show();
    while (QEventLoop().processEvents()) {
    }  // a layout within a layout needs one more round
  }
  void SetUp() override {
    const char* family = std::get<NamedFont>(GetParam()).family;
    if (QFontInfo(QApplication::font()).family() != QLatin1String(family))
      GTEST_SKIP() << family << " is not installed";
  }
  ~SettingsRoom() override {
    QApplication::setFont(ownFont);
    QApplication::setPalette(QPalette());
  }

  static std::string describe(const QWidget& widget) {
    if (const auto* label = dynamic_cast<const QLabel*>(&widget)) return label->text().toStdString();
    return widget.accessibleName().toStdString() + " (" + widget.metaObject()->className() + ")";
  }

  static void expectItFits(const QWidget& widget) {
    const int needed = widget.hasHeightForWidth() ? widget.heightForWidth(widget.width()) : widget.sizeHint().height();
    EXPECT_GE(widget.height(), needed) << describe(widget);
    EXPECT_GE(widget.width(), widget.minimumSizeHint().width()) << describe(widget);
  }

  const QFont ownFont = QApplication::font();
  SettingsPage page;
};

TEST_P(SettingsRoom, EveryTextAndControlHasTheRoomItNeeds) {
  int texts = 0;
  for (const auto* label : page.findChildren<QLabel*>()) {
    if (label->isHidden()) continue;
    ++texts;
    expectItFits(*label);
  }
  EXPECT_GT(texts, 10);
  for (const auto* button : page.findChildren<QAbstractButton*>()) expectItFits(*button);
  for (const auto* button : page.findChildren<QPushButton*>())
    EXPECT_GE(button->width(), button->sizeHint().width()) << button->text().toStdString();
}

TEST_P(SettingsRoom, EachPartStaysInsideItsParent) {
  const auto* scroll = page.findChild<QScrollArea*>();
  ASSERT_NE(scroll, nullptr);
  EXPECT_LE(scroll->widget()->width(), scroll->viewport()->width()) << "the form only scrolls up and down";
  EXPECT_GE(scroll->height(), 120) << "a part of the form is in sight";
  for (const auto* widget : page.findChildren<QWidget*>()) {
    if (widget == scroll->widget() || !widget->isVisible()) continue;
    const QRect outside = widget->parentWidget()->rect();
    EXPECT_TRUE(outside.contains(widget->geometry())) << describe(*widget);
  }
}

TEST_P(SettingsRoom, NoTextOverlapsAnother) {
  const auto labels = page.findChildren<QLabel*>();
  for (const auto* one : labels) {
    for (const auto* other : labels) {
      if (one >= other || !one->isVisible() || !other->isVisible() || one->parent() != other->parent()) continue;
      EXPECT_FALSE(one->geometry().intersects(other->geometry())) << describe(*one) << " / " << describe(*other);
    }
  }
}

std::string nameOf(const testing::TestParamInfo<SettingsRoom::ParamType>& info) {
  const auto& [scenario, font, scheme] = info.param;
  std::string name = scenario + "_" + font.family + std::to_string(static_cast<int>(font.points)) +
                     (scheme == ColorScheme::dark ? "_dark" : "_light");
  std::erase(name, ' ');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Desktops, SettingsRoom,
                         testing::Combine(testing::ValuesIn(SettingsScenario::names()),
                                          testing::Values(NamedFont{"DejaVu Sans", 10}, NamedFont{"Noto Sans", 10},
                                                          NamedFont{"Cantarell", 11}, NamedFont{"DejaVu Sans", 7},
                                                          NamedFont{"DejaVu Sans", 14}),
                                          testing::Values(ColorScheme::light, ColorScheme::dark)),
                         nameOf);

}  // namespace
}  // namespace tollvane::test
