#include "platform/linux/session/autostart_login.h"

#include <gtest/gtest.h>

#include "platform/posix/posix_files.h"
#include "tests/support/temporary_directory.h"

namespace tollvane {
namespace {

class AutostartLoginTest : public testing::Test {
 protected:
  AutostartLogin login(const std::filesystem::path& program = "/opt/Tollvane/Tollvane") {
    return AutostartLogin(files, directory.path() / "config", program);
  }
  std::filesystem::path entry() const { return directory.path() / "config/autostart/tollvane.desktop"; }
  std::string content() const { return files.read(entry(), 1 << 20).value_or(""); }
  void replace(const std::string& what, const std::string& with) {
    std::string text = content();
    text.replace(text.find(what), what.size(), with);
    ASSERT_TRUE(files.write(entry(), text));
  }

  test::TemporaryDirectory directory;
  PosixFiles files;
};

TEST_F(AutostartLoginTest, TheEntryStartsThisProgramAndSaysThatItWasAtLogin) {
  login().registerApplication();
  EXPECT_NE(content().find("\nExec=env TOLLVANE_STARTED_AT_LOGIN=1 \"/opt/Tollvane/Tollvane\"\n"), std::string::npos);
}

TEST_F(AutostartLoginTest, APathWithSpecialCharactersIsQuoted) {
  login("/home/a b/100%/$x\"`").registerApplication();
  EXPECT_NE(content().find(R"("/home/a b/100%%/\\$x\\"\\`")"), std::string::npos) << content();
  EXPECT_EQ(login("/home/a b/100%/$x\"`").status(), LoginStatus::enabled);
}

TEST_F(AutostartLoginTest, TheEntryOfAProgramElsewhereIsNotOurs) {
  login("/old/Tollvane").registerApplication();
  EXPECT_EQ(login().status(), LoginStatus::notRegistered);
  login().registerApplication();
  EXPECT_EQ(login().status(), LoginStatus::enabled);
}

TEST_F(AutostartLoginTest, AnEntryThatTheUserTurnedOffRequiresApproval) {
  for (const char* mark : {"Hidden=true", "X-GNOME-Autostart-enabled=false", "X-MATE-Autostart-enabled=false",
                           "X-KDE-autostart-enabled = false", "X-XFCE-Autostart-enabled=false"}) {
    ASSERT_EQ(login().registerApplication(), std::nullopt);
    replace("X-GNOME-Autostart-enabled=true", mark);
    EXPECT_EQ(login().status(), LoginStatus::requiresApproval) << mark;
    EXPECT_EQ(login().registerApplication(), std::nullopt);
    EXPECT_EQ(login().status(), LoginStatus::requiresApproval) << "only the user can undo it";
    login().unregisterApplication();
  }
}

TEST_F(AutostartLoginTest, AMarkInAnotherGroupMeansNothing) {
  login().registerApplication();
  replace("X-GNOME-Autostart-enabled=true", "X-GNOME-Autostart-enabled=true\n[Desktop Action x]\nHidden=true");
  EXPECT_EQ(login().status(), LoginStatus::enabled);
}

TEST_F(AutostartLoginTest, AFolderThatCannotBeMadeIsReported) {
  ASSERT_TRUE(files.write(directory.path() / "config", "a file"));
  EXPECT_EQ(login().registerApplication(),
            "The folder " + (directory.path() / "config/autostart").string() + " could not be made.");
  EXPECT_EQ(login().status(), LoginStatus::notRegistered);
}

TEST_F(AutostartLoginTest, WithoutAHomeNothingCanBeRegistered) {
  AutostartLogin homeless(files, std::nullopt, "/opt/Tollvane/Tollvane");
  EXPECT_EQ(homeless.status(), LoginStatus::notRegistered);
  EXPECT_EQ(homeless.registerApplication(), "There is no home directory for this user.");
  EXPECT_EQ(homeless.unregisterApplication(), std::nullopt);
}

}  // namespace
}  // namespace tollvane
