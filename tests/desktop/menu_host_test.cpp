// The menu as seen by a bar that draws menus itself. The bus is real, and the test stands in for the bar.
#include "tests/desktop/menu_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <optional>
#include <set>

#include "platform/linux/bell/exported_menu.h"
#include "tests/probes/menu_scenarios.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class MenuHostTest : public SharedSession<PrivateDesktop> {
 protected:
  MenuHostTest() : SharedSession(PrivateDesktop::Options{.screen = false, .panel = false}), bus_(desktop_) {}

  MenuHost& start(const std::string& scenario) {
    bell_.emplace(desktop_, scenario);
    bell_->tell("image bell");  // the bell's answer shows that it is on the bus
    return host_.emplace(*bus_, bell_->service());
  }

  // Waits until everything that the bell has sent has arrived.
  void settle() {
    host_->call("GetProperty", {0, QStringLiteral("label")});
    QCoreApplication::processEvents();
  }

  PrivateDesktop& desktop_ = session;
  TestBus bus_;
  std::optional<MenuBell> bell_;
  std::optional<MenuHost> host_;
};

std::string label(const DBusMenuLayout& item) { return item.properties.value("label").toString().toStdString(); }

std::set<int> numbers(const DBusMenuLayout& layout) {
  std::set<int> all{layout.id};
  for (const DBusMenuLayout& child : layout.children) all.merge(numbers(child));
  return all;
}

std::size_t itemCount(const DBusMenuLayout& layout) {
  std::size_t count = 1;
  for (const DBusMenuLayout& child : layout.children) count += itemCount(child);
  return count;
}

TEST_F(MenuHostTest, TheItemTellsWhereItsMenuIs) {
  start("five");
  const ItemOnTheBus item(*bus_, bell_->service());
  EXPECT_EQ(item.property("Menu").value<QDBusObjectPath>().path().toStdString(), DBusMenu::objectPath);
  EXPECT_EQ(item.property("ItemIsMenu"), QVariant(false));
}

TEST_F(MenuHostTest, ShowsTheWholeMenuInPlainText) {
  MenuHost& host = start("tabs");
  const DBusMenuLayout layout = host.layout();
  EXPECT_EQ(label(layout.children.at(0)), "Recent sounds · 2 unseen");
  EXPECT_EQ(layout.children.at(0).properties.value("enabled"), QVariant(false));
  EXPECT_THAT(label(layout.children.at(1)),
              HasSubstr("Firefox · started playing audio — Tab: Night music for rainy streets – YouTube"));
  const DBusMenuLayout* settings = MenuHost::find(layout, "Settings");
  ASSERT_NE(settings, nullptr);
  EXPECT_EQ(qdbus_cast<DBusMenuShortcut>(settings->properties.value("shortcut")),
            DBusMenuShortcut({{"Control", "comma"}}));
}

TEST_F(MenuHostTest, OlderSoundsAreASubmenu) {
  MenuHost& host = start("fifty");
  const DBusMenuLayout layout = host.layout();
  const DBusMenuLayout* older = MenuHost::find(layout, "Older sounds (45)");
  ASSERT_NE(older, nullptr);
  EXPECT_EQ(older->properties.value("children-display"), QVariant("submenu"));
  EXPECT_EQ(older->children.size(), 45);
  EXPECT_EQ(numbers(layout).size(), itemCount(layout)) << "two items have the same number";
  EXPECT_EQ(host.layout(0, 1).children.size(), layout.children.size());
  EXPECT_TRUE(MenuHost::find(host.layout(0, 1), "Older")->children.isEmpty());
  EXPECT_EQ(host.layout(older->id).children.size(), 45);
}

TEST_F(MenuHostTest, HostileTitlesAreOneLineOfPlainText) {
  MenuHost& host = start("hostile");
  const DBusMenuLayout layout = host.layout();
  const DBusMenuLayout* bold = MenuHost::find(layout, "Bold");
  ASSERT_NE(bold, nullptr);
  EXPECT_THAT(label(*bold), HasSubstr("<b>Bold</b> & __under__ &amp;  Tab"));
  const DBusMenuLayout* evil = MenuHost::find(layout, "evil");
  ASSERT_NE(evil, nullptr);
  EXPECT_THAT(label(*evil), HasSubstr("evil second column"));
  for (const int number : numbers(layout)) {
    const QString text =
        qdbus_cast<QDBusVariant>(host.call("GetProperty", {number, "label"}).arguments().value(0)).variant().toString();
    EXPECT_LE(text.size(), 6000);
    for (const QChar character : text) EXPECT_GE(character.unicode(), 0x20) << text.toStdString();
  }
}

TEST_F(MenuHostTest, OnlyTheRequestedPropertiesAreAnswered) {
  MenuHost& host = start("five");
  for (const DBusMenuLayout& item : host.layout(0, 1, {"enabled"}).children)
    EXPECT_THAT(item.properties.keys(), testing::AnyOf(QStringList(), QStringList("enabled")));
}

TEST_F(MenuHostTest, PropertiesOfManyItemsAreAnsweredInOneReply) {
  MenuHost& host = start("five");
  const int quit = MenuHost::find(host.layout(), "Quit")->id;
  const QDBusMessage reply =
      host.call("GetGroupProperties", {QVariant::fromValue(QList<int>{quit, 123456}), QStringList{"label"}});
  const auto answered = qdbus_cast<DBusMenuPropertiesList>(reply.arguments().value(0));
  ASSERT_EQ(answered.size(), 1);
  EXPECT_EQ(answered.first().properties, QVariantMap({{"label", "Quit Tollvane"}}));
}

TEST_F(MenuHostTest, IsMadeAnewAtEachOpeningAndAChangeIsAnnouncedOnce) {
  MenuHost& host = start("five");
  const DBusMenuLayout before = host.layout();
  EXPECT_FALSE(host.aboutToShow());
  host.sendEvent(0, "closed");
  settle();
  EXPECT_EQ(host.updates, 0);
  bell_->tell("add Mail");
  EXPECT_TRUE(waitUntilOnTheBus([&] { return host.updates == 1; })) << "for bars that never call AboutToShow";
  EXPECT_FALSE(host.aboutToShow());
  settle();
  EXPECT_EQ(host.updates, 1);
  const DBusMenuLayout after = host.layout();
  EXPECT_EQ(MenuHost::find(after, "Quit")->id, MenuHost::find(before, "Quit")->id);
  EXPECT_EQ(MenuHost::find(after, "Signal")->id, MenuHost::find(before, "Signal")->id);
  EXPECT_FALSE(numbers(before).contains(after.children.at(1).id)) << "a new sound has the number of another";
}

TEST_F(MenuHostTest, AHostThatReadsEachItemOnceIsToldOfEveryChange) {
  MenuHost& host = start("none");
  host.readNewItems();
  int updates = 0;
  for (const char* change : {"add Mail", "add Chat", "clear", "add Mail"}) {
    bell_->tell(change);
    ASSERT_TRUE(waitUntilOnTheBus([&] { return host.updates == updates + 1; })) << change;
    ++updates;
    host.readNewItems();
    const QStringList names{"label", "enabled", "type", "children-display"};
    const DBusMenuLayout fresh = host.layout(0, 1, names);
    for (const DBusMenuLayout& item : fresh.children)
      EXPECT_EQ(excerpt(host.kept[item.id], names), item.properties) << change << ": " << label(item);
  }
}

TEST_F(MenuHostTest, NothingMovesFromTheMomentItIsAboutToBeShown) {
  MenuHost& host = start("five");
  host.layout();
  host.aboutToShow();
  bell_->tell("add Mail");
  settle();
  EXPECT_EQ(host.updates, 0) << "the bar has not said yet that the menu is open";
  host.sendEvent(MenuHost::find(host.layout(), "Signal")->id, "clicked");
  EXPECT_TRUE(waitUntilOnTheBus([&] { return host.updates == 1; })) << "the choice has closed it";
}

TEST_F(MenuHostTest, DoesNotChangeWhileItIsOpen) {
  MenuHost& host = start("five");
  const DBusMenuLayout before = host.layout();
  host.sendEvent(0, "opened");
  bell_->tell("add Mail");
  settle();
  EXPECT_EQ(host.updates, 0);
  EXPECT_EQ(numbers(host.layout()), numbers(before));
  host.sendEvent(0, "closed");
  EXPECT_TRUE(waitUntilOnTheBus([&] { return host.updates == 1; }));
}

TEST_F(MenuHostTest, AHostThatNeverReportsTheClosingGetsTheNewMenuAtTheNextOpening) {
  MenuHost& host = start("five");
  host.layout();
  host.sendEvent(0, "opened");
  bell_->tell("add Mail");
  EXPECT_TRUE(host.aboutToShow());
}

TEST_F(MenuHostTest, AClickRunsTheItemThatWasShownEvenIfItIsGone) {
  MenuHost& host = start("five");
  const int signal = MenuHost::find(host.layout(), "Signal")->id;
  bell_->tell("clear");
  ASSERT_TRUE(waitUntilOnTheBus([&] { return host.updates == 1; }));
  EXPECT_EQ(host.sendEvent(signal, "clicked").type(), QDBusMessage::ReplyMessage);
  EXPECT_TRUE(bell_->prints("chosen sound "));
  EXPECT_TRUE(bell_->prints("Signal | \n"));
}

TEST_F(MenuHostTest, TheTokenOfTheClickIsThereWhenTheActionRuns) {
  MenuHost& host = start("five");
  const int settings = MenuHost::find(host.layout(), "Settings")->id;
  ItemOnTheBus(*bus_, bell_->service()).invoke("ProvideXdgActivationToken", {QStringLiteral("token-7")});
  host.sendEvent(settings, "clicked");
  EXPECT_TRUE(bell_->prints("chosen settings | token-7\n"));
}

TEST_F(MenuHostTest, DisabledItemsAndSeparatorsDoNothing) {
  MenuHost& host = start("none");
  const DBusMenuLayout layout = host.layout();
  host.sendEvent(MenuHost::find(layout, "Mark all")->id, "clicked");
  host.sendEvent(layout.children.at(1).id, "clicked");
  host.sendEvent(MenuHost::find(layout, "Clear list")->id, "clicked");
  ASSERT_TRUE(bell_->prints("chosen clearList"));
  EXPECT_EQ(bell_->count("chosen "), 1);
}

TEST_F(MenuHostTest, UnknownNumbersAreRefusedAsTheProtocolSays) {
  MenuHost& host = start("five");
  host.layout();
  for (const int unknown : {-1, 123456, 2147483647}) {
    EXPECT_EQ(host.call("GetLayout", {unknown, -1, QStringList()}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(host.sendEvent(unknown, "clicked").type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(host.call("AboutToShow", {unknown}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(host.call("GetProperty", {unknown, QStringLiteral("label")}).type(), QDBusMessage::ErrorMessage);
  }
  const QDBusMessage some = host.call("AboutToShowGroup", {QVariant::fromValue(QList<int>{0, 123456})});
  EXPECT_EQ(qdbus_cast<QList<int>>(some.arguments().value(1)), QList<int>{123456});
  const DBusMenuEvents events{{0, "opened", QDBusVariant(0), 0}, {99999, "clicked", QDBusVariant(0), 0}};
  const QDBusMessage group = host.call("EventGroup", {QVariant::fromValue(events)});
  EXPECT_EQ(qdbus_cast<QList<int>>(group.arguments().value(0)), QList<int>{99999});
}

TEST(MenuNumbers, AnIdentifierThatRepeatsHasANumberEachTime) {
  MenuItem item;
  item.identifier = "same";
  item.title = "x";
  MenuNumbers numbers;
  const ExportedMenu first(Menu{{item, item}}, numbers);
  const ExportedMenu second(Menu{{item, item}}, numbers);
  EXPECT_TRUE(second.hasSameLayout(first));
  EXPECT_NE(first.find(1), nullptr);
  EXPECT_NE(first.find(2), nullptr);
}

TEST(MenuNumbers, ANumberIsNeverGivenToAnotherIdentifier) {
  MenuNumbers numbers;
  int last = 0;
  for (int i = 0; i < 1000; ++i) {
    numbers.beginMenu();
    const int number = numbers.numberOf("sound " + std::to_string(i));
    numbers.endMenu();
    EXPECT_GT(number, last);
    last = number;
  }
}

}  // namespace
}  // namespace tollvane::test
