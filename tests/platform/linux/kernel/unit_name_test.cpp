#include "platform/linux/kernel/unit_name.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tollvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string user = "/user.slice/user-1000.slice/user@1000.service/app.slice/";

TEST(UnitName, IdsAreTakenFromScopesAndServices) {
  struct Row {
    const char* unit;
    const char* id;
  };
  const Row rows[] = {
      {"app-firefox-1234.scope", "firefox"},
      {"app-gnome-firefox\\x2desr-2345.scope", "firefox-esr"},
      {"app-gnome-org.gnome.Evolution\\x2dalarm\\x2dnotify-2345.scope", "org.gnome.Evolution-alarm-notify"},
      {"app-org.kde.dolphin@3f2a.service", "org.kde.dolphin"},
      {"app-KDE-org.kde.dolphin@3f2a.service", "org.kde.dolphin"},
      {"app-org.kde.yakuake@autostart.service", "org.kde.yakuake"},
      {"app-org.example.Player.service", "org.example.Player"},
      {"app-niri-mpv-99.scope", "mpv"},
      {"dbus-:1.2-org.gnome.Nautilus@0.service", "org.gnome.Nautilus"},
  };
  for (const Row& row : rows)
    EXPECT_THAT(applicationUnit(user + row.unit).desktopIds, ::testing::Contains(row.id)) << row.unit;
}

TEST(UnitName, TheWholeNameComesBeforeTheOneWithoutALauncher) {
  EXPECT_THAT(applicationUnit(user + "app-a-b-1.scope").desktopIds, ElementsAre("a-b", "b"));
}

TEST(UnitName, FlatpakScopesNameTheApplicationForCertain) {
  const UnitName unit = applicationUnit(user + "app-flatpak-org.mozilla.firefox-4711.scope");
  EXPECT_EQ(unit.flatpakId, "org.mozilla.firefox");
  EXPECT_THAT(unit.desktopIds, IsEmpty());
  EXPECT_EQ(applicationUnit(user + "app-flatpak-com.example.A\\x2dB-1.scope").flatpakId, "com.example.A-B");
}

TEST(UnitName, SnapScopesNameSnapAndApplication) {
  for (const char* name : {"snap.firefox.firefox-3b1f6e52-6a1c-4f0e-9f0e-0123456789ab.scope",
                           "snap.firefox.firefox.3b1f6e52-6a1c-4f0e-9f0e-0123456789ab.scope"}) {
    const UnitName unit = applicationUnit(user + name);
    EXPECT_EQ(unit.snapInstance, "firefox") << name;
    EXPECT_EQ(unit.snapApplication, "firefox") << name;
  }
  const UnitName dashes =
      applicationUnit(user + "snap.gnome-calculator.gnome-calculator-3b1f6e52-6a1c-4f0e-9f0e-0123456789ab.scope");
  EXPECT_EQ(dashes.snapApplication, "gnome-calculator");
  EXPECT_EQ(applicationUnit("/system.slice/snap.cups.cupsd.service").snapInstance, "cups");
  EXPECT_EQ(
      applicationUnit(user + "snap.firefox.hook.configure-3b1f6e52-6a1c-4f0e-9f0e-0123456789ab.scope").snapInstance,
      "");
}

TEST(UnitName, TheInnermostUnitThatNamesAnApplicationCounts) {
  EXPECT_THAT(applicationUnit(user + "app-org.kde.konsole-11.scope/tab(12).scope").desktopIds,
              ElementsAre("org.kde.konsole"));
  EXPECT_THAT(applicationUnit(user + "app-outer-11.scope/app-inner-12.scope").desktopIds, ElementsAre("inner"));
}

TEST(UnitName, OnlyAnApplicationsOwnServiceNamesItAndNotTheScopesBesideIt) {
  const UnitName server = applicationUnit(user + "app-org.gnome.Terminal.slice/gnome-terminal-server.service");
  EXPECT_THAT(server.desktopIds, ElementsAre("org.gnome.Terminal"));
  EXPECT_TRUE(server.isOwnService);
  EXPECT_THAT(applicationUnit(user + "app-org.gnome.Terminal.slice/vte-spawn-1234.scope").desktopIds, IsEmpty());
  EXPECT_FALSE(applicationUnit(user + "app-org.example.Player.service").isOwnService);
}

TEST(UnitName, OtherUnitsNameNoApplication) {
  for (const char* name :
       {"", "/", "/init.scope", "/user.slice/user-1000.slice/session-2.scope", "app-.scope", "app-firefox-1.slice",
        "/user.slice/user-1000.slice/user@1000.service/app.slice/vte-spawn-1234.scope", "snap..scope", "snap.x.scope",
        "dbus-:1.2.service", "dbus-:.service", "app-flatpak-.scope", "/system.slice/pipewire.service"}) {
    const UnitName unit = applicationUnit(name);
    EXPECT_THAT(unit.desktopIds, IsEmpty()) << name;
    EXPECT_EQ(unit.flatpakId + unit.snapInstance, "") << name;
  }
}

TEST(UnitName, BrokenEscapesStayAsTheyAre) {
  EXPECT_THAT(applicationUnit("app-a\\x2-1.scope").desktopIds, ElementsAre("a\\x2"));
  EXPECT_THAT(applicationUnit("app-a\\xzz-1.scope").desktopIds, ElementsAre("a\\xzz"));
  EXPECT_THAT(applicationUnit("app-a\\x00b-1.scope").desktopIds, ElementsAre("a\\x00b"));
}

}  // namespace
}  // namespace tollvane
