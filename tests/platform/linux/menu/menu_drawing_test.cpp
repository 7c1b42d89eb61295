// The menu that the bell opens, drawn without a screen.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QFontMetricsF>
#include <QImage>
#include <QKeyEvent>
#include <QPainter>
#include <QRegularExpression>
#include <any>
#include <iostream>
#include <memory>
#include <set>

#include "platform/linux/drawing/appearance.h"
#include "platform/linux/drawing/contrast.h"
#include "platform/linux/menu/menu_style.h"
#include "platform/linux/menu/menu_title.h"
#include "platform/linux/menu/menu_widget.h"
#include "platform/linux/menu/rich_menu.h"
#include "tests/probes/menu_scenarios.h"

namespace tollvane::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Ge;

constexpr Font digits{FontFamily::monospacedDigits};

MenuItem entry(AttributedText title) {
  MenuItem item;
  item.attributedTitle = std::move(title);
  return item;
}

MenuItem sound(const std::string& time, const std::string& app) {
  return entry({{time + "   ", digits, TextColor::secondaryLabel}, {app, {}, TextColor::label}});
}

QImage drawn(MenuTitle& title, QSize size = {400, 60}) {
  QImage image(size, QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  title.draw(painter, {0, 0}, [](TextColor) { return QColor(Qt::black); });
  return image;
}

// The first column, starting with `from`, that is not white; the width if all are white.
int inkFrom(const QImage& image, int from, int top, int bottom) {
  for (int x = from; x < image.width(); ++x) {
    for (int y = top; y < bottom; ++y)
      if (qGray(image.pixel(x, y)) < 200) return x;
  }
  return image.width();
}

// Titles.

TEST(MenuTitle, TheTabStandsExactlyUnderTheApplication) {
  MenuTitle title(entry({{"3:07:42 PM   ", digits}, {"Hail", {}}, {"\n              ", digits}, {"Hab", {}}}),
                  QApplication::font());
  title.arrange(title.leadWidth(), 400);
  EXPECT_EQ(title.textStarts()[0], title.textStarts()[1]);
  const QImage image = drawn(title);
  const int half = static_cast<int>(title.size().height()) / 2;
  const int start = static_cast<int>(title.textStarts()[0]) - 2;
  EXPECT_EQ(inkFrom(image, start, 0, half), inkFrom(image, start, half, image.height()));
}

TEST(MenuTitle, TimesOfDifferentLengthsLeaveTheirApplicationsInOneColumn) {
  MenuTitle narrow(sound("1:11:11 AM", "Mail"), QApplication::font());
  MenuTitle wide(sound("12:48:48 PM", "Mail"), QApplication::font());
  const qreal column = std::max(narrow.leadWidth(), wide.leadWidth());
  narrow.arrange(column, 400);
  wide.arrange(column, 400);
  EXPECT_EQ(narrow.textStarts(), wide.textStarts());
}

TEST(MenuTitle, DigitsAreEquallyWideInEveryFont) {
  QFont proportional = QApplication::font();
  proportional.setLetterSpacing(QFont::PercentageSpacing, 101);
  for (const QFont& font : {QApplication::font(), proportional}) {
    EXPECT_EQ(MenuTitle(sound("1:11:11 AM", ""), font).leadWidth(),
              MenuTitle(sound("8:48:48 AM", ""), font).leadWidth());
  }
}

TEST(MenuTitle, ATitleThatIsTooLongIsCut) {
  MenuTitle title(entry({{std::string(500, 'W'), {}}, {"   " + std::string(300, 'm'), {}}}), QApplication::font());
  title.arrange(0, 200);
  EXPECT_LE(title.size().width(), 200);
  EXPECT_EQ(inkFrom(drawn(title), 202, 0, 60), 400) << "it is drawn beyond its width";
}

TEST(MenuTitle, ALongHostLosesItsMiddle) {
  const std::string host = std::string(200, 'a') + ".example.org";
  MenuTitle title(entry({{"Firefox", {}}, {"\n   ", digits}, {"Tab: Inbox  (" + host + ")", {}}}),
                  QApplication::font());
  title.arrange(0, 300);
  const QString tab = title.texts().at(1);
  EXPECT_TRUE(tab.startsWith("Tab: Inbox  (aaa")) << tab.toStdString();
  EXPECT_TRUE(tab.endsWith("example.org)")) << tab.toStdString();
  EXPECT_LE(title.size().width(), 300);
}

TEST(MenuTitle, TheEllipsisOfARightToLeftTitleStandsOnTheLeft) {
  std::string name;
  for (int i = 0; i < 60; ++i) name += "שלום ";
  MenuTitle title(entry({{name, {}}}), QApplication::font());
  title.arrange(0, 200);
  // The dots are the only ink near the line's bottom: Hebrew without points stands on it.
  const QImage image = drawn(title);
  const int bottom = static_cast<int>(QFontMetricsF(QApplication::font()).ascent()) - 1;
  const int inked = inkFrom(image, 0, bottom, bottom + 1);
  EXPECT_LT(inked, 8) << "the line begins with the ellipsis";
  EXPECT_TRUE(title.texts().front().endsWith(QStringLiteral("\u2026\u200F")));
}

TEST(MenuTitle, LineFeedsFromOutsideBeginNoNewLine) {
  MenuTitle one(entry({{"a", {}}}), QApplication::font());
  MenuTitle many(entry({{"a\nb\r\nc\u2028"
                         "d",
                         {}},
                        {"\ne", {}}}),
                 QApplication::font());
  one.arrange(0, 400);
  many.arrange(0, 400);
  EXPECT_EQ(one.size().height(), many.size().height());
}

TEST(MenuTitle, ThereAreNeverMoreThanTwoLines) {
  AttributedText title{{"a", {}}};
  for (int i = 0; i < 20; ++i) title.push_back({"\n   ", digits});
  MenuTitle twenty(entry(title), QApplication::font());
  MenuTitle two(entry({{"a", {}}, {"\n   ", digits}}), QApplication::font());
  EXPECT_EQ(twenty.size().height(), two.size().height());
}

TEST(MenuTitle, SmallerTypeIsSmallerThanTheUsersOwn) {
  MenuTitle normal(entry({{"Firefox", {}}}), QApplication::font());
  MenuTitle small(entry({{"Firefox", {FontFamily::system, 12}}}), QApplication::font());
  normal.arrange(0, 400);
  small.arrange(0, 400);
  EXPECT_LT(small.size().width(), normal.size().width());
}

TEST(MenuEntry, IsReadAloudInOneLineWithoutMarkupOrMnemonics) {
  const MenuItem item =
      entry({{"3:07 PM   ", digits}, {"Tom & Jerry", {}}, {"\n     ", digits}, {"Tab: <b>x</b>", {}}});
  EXPECT_EQ(spokenTitle(item).toStdString(), "3:07 PM Tom & Jerry Tab: <b>x</b>");
  EXPECT_EQ(MenuEntry(item, QApplication::font(), nullptr).text().toStdString(), "3:07 PM Tom && Jerry Tab: <b>x</b>");
}

TEST(MenuEntry, ToolTipsAreNeverMarkup) {
  MenuItem item = entry({{"x", {}}});
  item.toolTip = "Click to open <img src='file:///x'> & <b>y</b>";
  const QString toolTip = MenuEntry(item, QApplication::font(), nullptr).toolTip();
  EXPECT_EQ(toolTip.count(u'<'), 2) << toolTip.toStdString();
  EXPECT_TRUE(toolTip.contains("&lt;img")) << toolTip.toStdString();
}

TEST(MenuEntry, ToolTipsHaveFewLongLines) {
  MenuItem item = entry({{"x", {}}});
  item.toolTip = "Click to open Some Application With A Name Of Seven Words";
  EXPECT_EQ(MenuEntry(item, QApplication::font(), nullptr).toolTip().count("<br>"), 0);
  item.toolTip = std::string(200, 'x') + " & " + std::string(90, 'y');
  const QString toolTip = MenuEntry(item, QApplication::font(), nullptr).toolTip();
  for (QString line : toolTip.split("<br>"))
    EXPECT_LE(line.remove(QRegularExpression("<[^>]*>")).size(), 80) << line.toStdString();
}

TEST(MenuEntry, KeysAreFoundByTheirPlaceOnALayoutWithoutLatinLetters) {
  MenuItem quit;
  quit.title = "Quit Tollvane";
  quit.keyEquivalent = "q";
  auto menu = std::make_shared<Menu>();
  menu->items.push_back(quit);
  std::string chosen;
  MenuWidget widget(menu);
  QObject::connect(&widget, &QMenu::triggered, &widget,
                   [&](QAction* action) { chosen = action->text().toStdString(); });
  const auto press = [&](int key, quint32 place) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::ControlModifier, place, 0, 0);
    QCoreApplication::sendEvent(&widget, &event);
  };
  press(Qt::Key_A, 24);
  EXPECT_EQ(chosen, "") << "a Latin letter counts as itself, wherever it stands";
  constexpr int cyrillicShortI = 0x0419;  // on the key of Q
  press(cyrillicShortI, 25);
  EXPECT_EQ(chosen, "");
  press(cyrillicShortI, 24);
  EXPECT_EQ(chosen, "Quit Tollvane");
}

// Colours.

QPalette palette(QColor window, QColor text, QColor highlight, QColor highlighted) {
  QPalette made;
  made.setColor(QPalette::Window, window);
  made.setColor(QPalette::Base, window);
  made.setColor(QPalette::WindowText, text);
  made.setColor(QPalette::Highlight, highlight);
  made.setColor(QPalette::HighlightedText, highlighted);
  return made;
}

TEST(MenuColors, AreReadableOnEveryPalette) {
  for (const QColor& accent :
       {QColor(Qt::yellow), QColor(Qt::blue), QColor(Qt::white), QColor(Qt::black), QColor(0x308cc6)}) {
    for (const QColor& window :
         {QColor(0xefefef), QColor(0x2b2b2b), QColor(0x808080), QColor(Qt::black), QColor(Qt::white)}) {
      const QPalette user = palette(window, contrast(window, Qt::white) > 4 ? Qt::white : Qt::black, accent, accent);
      const MenuColors colors(user);
      for (const TextColor role :
           {TextColor::unset, TextColor::label, TextColor::secondaryLabel, TextColor::controlAccent})
        EXPECT_GE(contrast(colors.of(role), window), readableContrast);
      EXPECT_GE(contrast(colors.of(TextColor::tertiaryLabel), window), visibleContrast);
      EXPECT_GE(contrast(colors.selected(), accent), visibleContrast);
    }
  }
}

TEST(MenuColors, FadedIsFainterThanSecondaryWhichIsFainterThanPrimary) {
  for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
    const QPalette user = paletteFor(scheme, QApplication::palette());
    const QColor window = user.color(QPalette::Window);
    const MenuColors colors(user);
    EXPECT_LT(contrast(colors.of(TextColor::tertiaryLabel), window),
              contrast(colors.of(TextColor::secondaryLabel), window));
    EXPECT_LT(contrast(colors.of(TextColor::secondaryLabel), window), contrast(colors.of(TextColor::label), window));
  }
}

TEST(Appearance, ThePaletteIsKeptIfItFitsTheColourScheme) {
  const QPalette light = palette(0xefefef, Qt::black, Qt::blue, Qt::white);
  EXPECT_EQ(paletteFor(ColorScheme::light, light), light);
  EXPECT_EQ(paletteFor(ColorScheme::noPreference, light), light);
  EXPECT_LT(paletteFor(ColorScheme::dark, light).color(QPalette::Window).lightness(), 80);
  EXPECT_EQ(paletteFor(ColorScheme::dark, light).color(QPalette::Highlight), QColor(Qt::blue));
}

// Whole menus.

class OpenMenu {
 public:
  explicit OpenMenu(std::string_view name)
      : scenario(name, [this](const std::string& each) { chosen.push_back(each); }), menu(scenario) {
    menu.toggle({700, 5});
    QCoreApplication::processEvents();
  }

  void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {}) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(QApplication::activePopupWidget(), &event);
    QCoreApplication::processEvents();
  }
  void type(char letter) { press(toupper(letter), Qt::NoModifier, QString(QChar::fromLatin1(letter))); }
  std::string active() {
    const auto* entry = dynamic_cast<MenuEntry*>(menu.widget()->activeAction());
    return entry ? entry->typed().toStdString() : "";
  }

  std::vector<std::string> chosen;
  MenuScenario scenario;
  RichMenu menu;
};

TEST(RichMenu, EveryScenarioIsOnTheScreenWithAllItsEntries) {
  for (const char* name : {"none", "five", "six", "fifty", "tabs", "hint", "update", "hostile"}) {
    OpenMenu open(name);
    ASSERT_TRUE(open.menu.isOpen()) << name;
    const QRect shownOn = open.menu.widget()->screen()->geometry();
    EXPECT_TRUE(shownOn.contains(open.menu.widget()->geometry())) << name;
    for (MenuWidget* below : open.menu.widget()->submenus())
      EXPECT_LE(below->sizeHint().width(), shownOn.width()) << name;
  }
}

TEST(RichMenu, IsMadeAnewAtEachOpeningAndStaysAsItWasWhileOpen) {
  OpenMenu open("five");
  const auto before = open.menu.widget()->actions().size();
  open.scenario.clear();
  EXPECT_EQ(open.menu.widget()->actions().size(), before);
  open.menu.toggle({});
  EXPECT_FALSE(open.menu.isOpen());
  open.menu.toggle({});
  EXPECT_LT(open.menu.widget()->actions().size(), before);
  EXPECT_EQ(open.scenario.timesMade(), 2);
}

TEST(RichMenu, ChoosingAnEntryThatWasClearedMeanwhileDoesNoHarm) {
  OpenMenu open("five");
  open.press(Qt::Key_Down);
  open.scenario.clear();
  open.press(Qt::Key_Return);
  EXPECT_EQ(open.chosen.size(), 1U);
}

TEST(RichMenu, KeysOfCommandsWorkWhileItIsOpen) {
  const std::pair<int, const char*> keys[] = {
      {Qt::Key_H, "openHistory"}, {Qt::Key_Comma, "settings"}, {Qt::Key_Q, "quit"}};
  for (const auto& [key, command] : keys) {
    OpenMenu open("five");
    open.press(key, Qt::ControlModifier);
    EXPECT_THAT(open.chosen, ElementsAre(command));
    EXPECT_FALSE(open.menu.isOpen());
  }
}

TEST(RichMenu, TypingFindsNamesByTheirBeginnings) {
  OpenMenu open("tabs");
  open.type('s');
  EXPECT_EQ(open.active(), "Signal");
  open.type('e');
  EXPECT_EQ(open.active(), "Settings…");
  open.type('x');
  EXPECT_EQ(open.active(), "Settings…") << "no name begins like that";
}

TEST(RichMenu, ArrowsHomeAndEndReachEveryEntryButTheHeader) {
  OpenMenu open("five");
  std::set<std::string> reached;
  for (int i = 0; i < 30; ++i) {
    open.press(Qt::Key_Down);
    reached.insert(open.active());
  }
  EXPECT_FALSE(reached.contains("Recent sounds · 2 unseen"));
  EXPECT_TRUE(reached.contains("Quit Tollvane"));
  open.press(Qt::Key_Home);
  EXPECT_EQ(open.active(), "Mail");
  open.press(Qt::Key_End);
  EXPECT_EQ(open.active(), "Quit Tollvane");
  open.press(Qt::Key_Escape);
  EXPECT_FALSE(open.menu.isOpen());
  EXPECT_TRUE(open.chosen.empty());
}

TEST(RichMenu, EveryEntryHasANameForScreenReaders) {
  OpenMenu open("hostile");
  const QAccessibleInterface* menu = QAccessible::queryAccessibleInterface(open.menu.widget());
  EXPECT_EQ(menu->role(), QAccessible::PopupMenu);
  EXPECT_EQ(menu->text(QAccessible::Name), "Tollvane");
  ASSERT_EQ(menu->childCount(), static_cast<int>(open.menu.widget()->entries().size()));
  std::cout << "menu \"Tollvane\"\n";
  for (int i = 0; i < menu->childCount(); ++i) {
    const QAccessibleInterface* entry = menu->child(i);
    if (entry->role() == QAccessible::Separator) continue;
    const std::string name = entry->text(QAccessible::Name).toStdString();
    std::cout << "  item \"" << name << "\"" << (entry->state().disabled ? ", disabled" : "") << '\n';
    EXPECT_EQ(entry->role(), QAccessible::MenuItem);
    EXPECT_FALSE(name.empty());
    EXPECT_EQ(name.find("\u200b"), std::string::npos);
    EXPECT_EQ(entry->state().disabled, !open.menu.widget()->entries()[static_cast<std::size_t>(i)]->isEnabled());
  }
}

// The strongest contrast in a row of the menu.
double strongestInk(const QImage& image, const QRect& row) {
  const QColor behind = image.pixelColor(row.left() + 2, row.top() + 1);
  double strongest = 1;
  for (int y = row.top(); y <= row.bottom(); ++y) {
    for (int x = row.left(); x <= row.right(); ++x)
      strongest = std::max(strongest, contrast(image.pixelColor(x, y), behind));
  }
  return strongest;
}

TEST(RichMenu, TextsCanBeReadAndSeenSoundsAreFainter) {
  const QFont own = QApplication::font();
  QFont large = own;
  large.setPixelSize(20);  // at this size, letters have pixels in their full colour
  QApplication::setFont(large);
  for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
    QApplication::setPalette(paletteFor(scheme, QApplication::palette()));
    OpenMenu open("five");
    const QImage image = open.menu.widget()->grab().toImage();
    double unseen = 21;
    double seen = 1;
    for (const MenuEntry* entry : open.menu.widget()->entries()) {
      const QRect row = open.menu.widget()->actionGeometry(const_cast<MenuEntry*>(entry));
      if (entry->isSeparator() || !image.rect().contains(row)) continue;
      const double ink = strongestInk(image, row);
      const auto* event = std::any_cast<std::shared_ptr<SoundEvent>>(&entry->item().representedObject);
      const bool isFaint = !entry->isEnabled() || (event != nullptr && (*event)->seen);
      EXPECT_GE(ink, isFaint ? visibleContrast : readableContrast) << entry->typed().toStdString();
      if (event != nullptr)
        ((*event)->seen ? seen : unseen) = (*event)->seen ? std::max(seen, ink) : std::min(unseen, ink);
    }
    EXPECT_GT(unseen, 1.5 * seen) << "told apart at a glance";
    EXPECT_GT(seen, 1);
  }
  QApplication::setPalette(QPalette());
  QApplication::setFont(own);
}

TEST(RichMenu, MayEndWithItsOwnerWhileItIsOpenOrAChoiceIsPending) {
  std::vector<std::string> chosen;
  MenuScenario scenario("five", [&](const std::string& each) { chosen.push_back(each); });
  {
    RichMenu menu(scenario);
    menu.toggle({});
    menu.widget()->entries().at(1)->trigger();
  }
  QCoreApplication::processEvents();
  EXPECT_TRUE(chosen.empty());
}

}  // namespace
}  // namespace tollvane::test
