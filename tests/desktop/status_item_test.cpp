// The bell on a real bus. The test stands in for the watcher and the portal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusConnectionInterface>
#include <fstream>
#include <optional>

#include "platform/linux/drawing/appearance.h"
#include "platform/linux/drawing/symbols.h"
#include "tests/desktop/bell_fixture.h"
#include "tests/desktop/watcher_and_portal.h"
#include "tests/support/shared_session.h"

namespace tollvane::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class StatusItemTest : public SharedSession<PrivateDesktop> {
 protected:
  StatusItemTest() : SharedSession(PrivateDesktop::Options{.screen = false, .panel = false}), bus_(desktop_) {
    // Wait until the watcher and the portal of the test before are gone.
    EXPECT_TRUE(waitUntil([&] {
      const QStringList names = bus_->interface()->registeredServiceNames();
      return !names.contains("org.kde.StatusNotifierWatcher") && !names.contains("org.freedesktop.portal.Desktop");
    }));
  }

  Bell& startBell(const Variables& extra = {}) { return bell_.emplace(desktop_, extra); }

  // Starts a bell without a watcher, and returns its item.
  ItemOnTheBus startItem() {
    startBell().tell("image bell No sound yet");
    return {*bus_, bell_->service()};
  }

  PrivateDesktop& desktop_ = session;
  TestBus bus_;
  std::optional<Bell> bell_;
};

TEST_F(StatusItemTest, RegistersWithAWatcherThatIsThere) {
  TestWatcher watcher(desktop_);
  Bell& bell = startBell();
  ASSERT_TRUE(waitUntilOnTheBus([&] { return watcher.registrations() > 0; }));
  EXPECT_THAT(watcher.items(), ElementsAre(bell.service() + "/StatusNotifierItem"));
}

TEST_F(StatusItemTest, RegistersWithAWatcherThatComesLater) {
  Bell& bell = startBell();
  bell.tell("image bell");
  TestWatcher watcher(desktop_);
  ASSERT_TRUE(waitUntilOnTheBus([&] { return watcher.registrations() > 0; }));
  EXPECT_THAT(watcher.items(), ElementsAre(bell.service() + "/StatusNotifierItem"));
}

TEST_F(StatusItemTest, RegistersAgainWhenTheWatcherIsReplaced) {
  startBell();
  for (int round = 0; round < 3; ++round) {
    TestWatcher watcher(desktop_);
    ASSERT_TRUE(waitUntilOnTheBus([&] { return watcher.registrations() > 0; })) << "round " << round;
  }
}

TEST_F(StatusItemTest, RegistersAgainWhenAHostComesToAWatcherThatForgotTheItem) {
  TestWatcher watcher(desktop_);
  Bell& bell = startBell();
  ASSERT_TRUE(waitUntilOnTheBus([&] { return watcher.registrations() == 1; }));
  watcher.forgetItems();
  watcher.announceHost();
  ASSERT_TRUE(waitUntilOnTheBus([&] { return watcher.registrations() == 2; }));
  EXPECT_THAT(watcher.items(), ElementsAre(bell.service() + "/StatusNotifierItem"));
}

TEST_F(StatusItemTest, DoesNotRegisterAgainWhenAHostComesToAWatcherThatKnowsTheItem) {
  TestWatcher watcher(desktop_);
  const Bell& bell = startBell();
  ASSERT_TRUE(waitUntilOnTheBus([&] { return watcher.registrations() == 1; }));
  watcher.announceHost();
  ASSERT_TRUE(waitUntilOnTheBus([&] { return watcher.questions() == 1; }));
  watcher.announceHost();
  ASSERT_TRUE(waitUntilOnTheBus([&] { return watcher.questions() == 2; }));
  // The bell reads this question after the watcher's answers, so a registration would arrive before its reply.
  ItemOnTheBus(watcher.bus(), bell.service()).text("Id");
  QCoreApplication::processEvents();
  EXPECT_EQ(watcher.registrations(), 1);
}

TEST_F(StatusItemTest, EveryItemRegistersOnceUnderItsOwnName) {
  TestWatcher watcher(desktop_);
  Bell& bell = startBell();
  bell.tell("another-item");
  ASSERT_TRUE(waitUntilOnTheBus([&] { return watcher.registrations() == 2; }));
  bell.tell("image bell.fill");
  EXPECT_EQ(watcher.registrations(), 2);
  EXPECT_NE(watcher.items().at(0), watcher.items().at(1));
}

TEST_F(StatusItemTest, TheItemLeavesTheBusWithItsProcess) {
  startItem();
  const QString service = bell_->service();
  bell_->program().kill();
  EXPECT_TRUE(waitUntilOnTheBus([&] { return !bus_->interface()->isServiceRegistered(service).value(); }));
}

TEST_F(StatusItemTest, TheIconHasPicturesOnlyWhileTheWatcherIsXApps) {
  const ItemOnTheBus item = startItem();
  ASSERT_EQ(item.text("IconName"), "tollvane-bell-symbolic");
  ASSERT_TRUE(bus_->registerService("org.x.StatusNotifierWatcher"));
  EXPECT_TRUE(waitUntilOnTheBus([&] { return item.text("IconName").empty(); }));
  EXPECT_FALSE(item.pixmaps().isEmpty());
  const ItemOnTheBus later = startItem();
  EXPECT_TRUE(waitUntilOnTheBus([&] { return later.text("IconName").empty(); }));
  ASSERT_TRUE(bus_->unregisterService("org.x.StatusNotifierWatcher"));
  EXPECT_TRUE(waitUntilOnTheBus([&] { return later.text("IconName") == "tollvane-bell-symbolic"; }));
}

TEST_F(StatusItemTest, SaysWhatItIs) {
  const ItemOnTheBus item = startItem();
  EXPECT_EQ(item.text("Category"), "ApplicationStatus");
  EXPECT_EQ(item.text("Id"), "tollvane");
  EXPECT_EQ(item.text("Title"), "Tollvane");
  EXPECT_EQ(item.text("Status"), "Active");
  EXPECT_EQ(item.property("WindowId"), QVariant(0));
  EXPECT_EQ(item.text("IconThemePath"), TOLLVANE_BUNDLE "/icons");
  EXPECT_EQ(item.text("IconAccessibleDesc"), "No sound yet");
  EXPECT_EQ(item.text("OverlayIconName"), "");
  EXPECT_EQ(item.text("AttentionIconName"), "");
  EXPECT_EQ(item.property("ItemIsMenu"), QVariant(false));
  EXPECT_EQ(item.property("Menu").value<QDBusObjectPath>().path().toStdString(), "/NO_DBUSMENU");
  EXPECT_TRUE(qdbus_cast<IconPixmaps>(item.property("OverlayIconPixmap")).isEmpty());
  EXPECT_TRUE(qdbus_cast<IconPixmaps>(item.property("AttentionIconPixmap")).isEmpty());
}

TEST_F(StatusItemTest, PropertiesHaveTheTypesOfTheProtocol) {
  const ItemOnTheBus item = startItem();
  const QDBusMessage reply = item.call("org.freedesktop.DBus.Introspectable", "Introspect", {});
  const std::string xml = reply.arguments().value(0).toString().toStdString();
  for (const char* property :
       {R"~(name="IconPixmap" type="a(iiay)")~", R"~(name="ToolTip" type="(sa(iiay)ss)")~", R"~(name="Menu" type="o")~",
        R"~(name="WindowId" type="i")~", R"~(name="ItemIsMenu" type="b")~"}) {
    EXPECT_THAT(xml, HasSubstr(property));
  }
  for (const char* member : {"Activate", "SecondaryActivate", "ContextMenu", "Scroll", "ProvideXdgActivationToken"}) {
    EXPECT_THAT(xml, HasSubstr("<method name=\"" + std::string(member) + "\""));
  }
  for (const char* member : {"NewTitle", "NewIcon", "NewToolTip", "NewStatus"}) {
    EXPECT_THAT(xml, HasSubstr("<signal name=\"" + std::string(member) + "\""));
  }
}

TEST_F(StatusItemTest, ImageChangesNameAndPixels) {
  const ItemOnTheBus item = startItem();
  EXPECT_EQ(item.text("IconName"), "tollvane-bell-symbolic");
  const IconPixmaps hollow = item.pixmaps();
  EXPECT_EQ(hollow, iconPixmaps(drawIcon("tollvane-bell-symbolic", BarTone::dark)));
  bell_->tell("image bell.fill A sound");
  EXPECT_EQ(item.text("IconName"), "tollvane-bell-fill-symbolic");
  EXPECT_EQ(item.text("IconAccessibleDesc"), "A sound");
  EXPECT_EQ(item.pixmaps(), iconPixmaps(drawIcon("tollvane-bell-fill-symbolic", BarTone::dark)));
  EXPECT_NE(item.pixmaps(), hollow);
}

TEST_F(StatusItemTest, ImageOfUnknownNameLeavesTheItemWithoutOne) {
  const ItemOnTheBus item = startItem();
  bell_->tell("image trumpet A trumpet");
  EXPECT_EQ(item.text("IconName"), "");
  EXPECT_TRUE(item.pixmaps().isEmpty());
  bell_->tell("image bell");
  EXPECT_EQ(item.text("IconName"), "tollvane-bell-symbolic");
  EXPECT_FALSE(item.pixmaps().isEmpty());
}

TEST_F(StatusItemTest, SignalsAreSentOnlyWhenSomethingChanged) {
  const ItemOnTheBus item = startItem();
  // Signals that were sent before this answer have arrived when it arrives, so no signal of the start is counted below.
  item.text("Id");
  const ItemSignals heard(*bus_, bell_->service());
  bell_->tell("image bell No sound yet");
  bell_->tell("image bell.fill One sound");
  bell_->tell("image bell.fill One sound");
  bell_->tell("tooltip Mail");
  bell_->tell("tooltip Mail");
  bell_->tell("tooltip Mail and more");
  item.text("Id");
  EXPECT_TRUE(waitUntilOnTheBus([&] { return heard.icons >= 1 && heard.toolTips >= 2; }));
  EXPECT_EQ(heard.icons, 1);
  EXPECT_EQ(heard.toolTips, 2);
  EXPECT_EQ(heard.others, 0);
}

TEST_F(StatusItemTest, ToolTipIsItsTitleAlone) {
  const ItemOnTheBus item = startItem();
  EXPECT_EQ(item.toolTip().title, "");
  bell_->tell("tooltip Mail · 14:03");
  EXPECT_EQ(item.toolTip().title, "Mail · 14:03");
  EXPECT_EQ(item.toolTip().subtitle, "");
  EXPECT_EQ(item.toolTip().iconName, "");
  EXPECT_TRUE(item.toolTip().icon.isEmpty());
}

TEST_F(StatusItemTest, HostileToolTipHoldsNoMarkup) {
  const ItemOnTheBus item = startItem();
  bell_->tell("tooltip <span size='900000'>Tom & Jerry\u202E\t</span>");
  EXPECT_EQ(item.toolTip().title.toStdString(), "\u2039span size='900000'\u203ATom \uFF06 Jerry \u2039/span\u203A");
  EXPECT_EQ(item.toolTip().subtitle, "");
}

TEST_F(StatusItemTest, ToolTipThatIsNotUtf8DoesNotCostTheConnection) {
  const ItemOnTheBus item = startItem();
  bell_->tell("tooltip a\xff\xc0\x80\xed\xa0\x80z");
  EXPECT_TRUE(item.toolTip().title.startsWith(u'a'));
  EXPECT_TRUE(item.toolTip().title.endsWith(u'z'));
}

TEST_F(StatusItemTest, EveryGestureOfABarIsAnswered) {
  const ItemOnTheBus item = startItem();
  for (const char* gesture : {"Activate", "SecondaryActivate", "ContextMenu"})
    EXPECT_EQ(item.invoke(gesture, {1, 2}).type(), QDBusMessage::ReplyMessage) << gesture;
  EXPECT_EQ(item.invoke("Scroll", {120, QStringLiteral("vertical")}).type(), QDBusMessage::ReplyMessage);
  EXPECT_EQ(item.invoke("ProvideXdgActivationToken", {QStringLiteral("token-1")}).type(), QDBusMessage::ReplyMessage);
}

TEST_F(StatusItemTest, WithoutASessionBusTheBellRunsUnseen) {
  Bell& bell = startBell({{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"}});
  bell.tell("image bell No sound yet");
  bell.tell("tooltip Mail");
  bell.tell("another-item");
  bell.tell("quit");
  ASSERT_TRUE(waitUntil([&] { return !bell.program().running(); }, desktopPatience));
  EXPECT_EQ(bell.program().exitCode(), 0);
}

TEST_F(StatusItemTest, TheBellOutlivesItsBus) {
  // This test stops a bus of its own, because the connections of the fixture would end with the fixture's bus.
  PrivateDesktop other({.screen = false, .panel = false});
  Bell bell(desktop_, {{"DBUS_SESSION_BUS_ADDRESS", other.busAddress()}});
  bell.tell("image bell");
  other.killBus();
  bell.tell("image bell.fill");
  bell.tell("tooltip Mail");
  EXPECT_TRUE(bell.program().running());
}

// Light and dark.

IconPixmaps hollowFor(BarTone tone) { return iconPixmaps(drawIcon("tollvane-bell-symbolic", tone)); }

TEST_F(StatusItemTest, WithoutAPortalTheBellIsLight) {
  const ItemOnTheBus item = startItem();
  EXPECT_EQ(item.pixmaps(), hollowFor(BarTone::dark));
}

TEST_F(StatusItemTest, AskingForTheColourSchemeStartsNoPortal) {
  spoilSession();  // from now on its bus can start the services below
  const std::filesystem::path services = desktop_.runtimeDirectory() / "dbus-1/services";
  const auto install = [&](const std::string& name, const std::string& trace) {
    std::filesystem::create_directories(services);
    std::ofstream(services / (name + ".service"))
        << "[D-BUS Service]\nName=" << name << "\nExec=/usr/bin/touch " << (desktop_.root() / trace).string() << '\n';
  };
  install("org.freedesktop.portal.Desktop", "portal-was-started");
  install("org.example.Started", "other-was-started");
  ASSERT_TRUE(desktop_.run({"busctl", "--user", "call", "org.freedesktop.DBus", "/org/freedesktop/DBus",
                            "org.freedesktop.DBus", "ReloadConfig"}));
  startItem();
  // The bus gets this call after the bell's question. Once it has started this service, it would also have started the
  // portal.
  desktop_.run(
      {"busctl", "--user", "--expect-reply=no", "call", "org.example.Started", "/", "org.example.Started", "Any"});
  ASSERT_TRUE(
      waitUntil([&] { return std::filesystem::exists(desktop_.root() / "other-was-started"); }, desktopPatience));
  EXPECT_FALSE(std::filesystem::exists(desktop_.root() / "portal-was-started"));
}

TEST_F(StatusItemTest, OnALightDesktopTheBellIsDark) {
  TestPortal portal(desktop_, 2);
  const ItemOnTheBus item = startItem();
  EXPECT_TRUE(waitUntilOnTheBus([&] { return item.pixmaps() == hollowFor(BarTone::light); }));
  EXPECT_EQ(item.text("IconName"), "tollvane-bell-symbolic");
}

TEST_F(StatusItemTest, TheBellFollowsTheDesktopFromLightToDarkAndBack) {
  TestPortal portal(desktop_, 2);
  const ItemOnTheBus item = startItem();
  ASSERT_TRUE(waitUntilOnTheBus([&] { return item.pixmaps() == hollowFor(BarTone::light); }));
  const ItemSignals heard(*bus_, bell_->service());
  portal.changeTo(1);
  ASSERT_TRUE(waitUntilOnTheBus([&] { return item.pixmaps() == hollowFor(BarTone::dark); }));
  portal.changeSomethingElse();
  portal.changeTo(0);
  portal.changeTo(2);
  ASSERT_TRUE(waitUntilOnTheBus([&] { return item.pixmaps() == hollowFor(BarTone::light); }));
  ASSERT_TRUE(waitUntilOnTheBus([&] { return heard.icons >= 2; }));
  EXPECT_EQ(heard.icons, 2) << "no preference looks like dark, and a change of another setting is ignored";
}

TEST_F(StatusItemTest, APortalThatComesLaterIsAsked) {
  const ItemOnTheBus item = startItem();
  EXPECT_EQ(item.pixmaps(), hollowFor(BarTone::dark));
  TestPortal portal(desktop_, 2);
  EXPECT_TRUE(waitUntilOnTheBus([&] { return item.pixmaps() == hollowFor(BarTone::light); }));
}

TEST_F(StatusItemTest, WindowsAndMenusFollowTheDesktopFromLightToDarkAndBack) {
  TestPortal portal(desktop_, 2);
  const Appearance appearance(*bus_);
  const auto lightness = [] { return QApplication::palette().color(QPalette::Window).lightness(); };
  ASSERT_TRUE(waitUntilOnTheBus([&] { return lightness() > 180; }));
  portal.changeTo(1);
  EXPECT_TRUE(waitUntilOnTheBus([&] { return lightness() < 80; }));
  portal.changeTo(2);
  EXPECT_TRUE(waitUntilOnTheBus([&] { return lightness() > 180; }));
}

TEST_F(StatusItemTest, WindowsAndMenusHaveTheUsersAccentAndFont) {
  TestPortal portal(desktop_, 2);
  const QFont own = QApplication::font();
  const Appearance appearance(*bus_);
  const auto accent = [] { return QApplication::palette().color(QPalette::Highlight); };
  portal.changeAccent(1, 0, 0);
  EXPECT_TRUE(waitUntilOnTheBus([&] { return accent() == Qt::red; }));
  portal.changeAccent(0, 1.5, 0);
  EXPECT_TRUE(waitUntilOnTheBus([&] { return accent() != Qt::red; })) << "no accent is chosen any more";
  portal.changeFont("DejaVu Serif 17");
  EXPECT_TRUE(waitUntilOnTheBus([&] { return QApplication::font().family() == "DejaVu Serif"; }));
  portal.changeFont("nonsense");
  portal.changeAccent(0, 0, 1);
  EXPECT_TRUE(waitUntilOnTheBus([&] { return accent() == Qt::blue; }));
  EXPECT_EQ(QApplication::font().pointSize(), 17);
  QApplication::setFont(own);
}

}  // namespace
}  // namespace tollvane::test
