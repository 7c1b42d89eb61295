#include "platform/linux/session/autostart_login.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

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
  login().registerApplication(AskedBy::program);
  EXPECT_NE(content().find("\nExec=env TOLLVANE_STARTED_AT_LOGIN=1 \"/opt/Tollvane/Tollvane\"\n"), std::string::npos);
}

TEST_F(AutostartLoginTest, APathWithSpecialCharactersIsQuoted) {
  login("/home/a b/100%/$x\"`").registerApplication(AskedBy::program);
  EXPECT_NE(content().find(R"("/home/a b/100%%/\\$x\\"\\`")"), std::string::npos) << content();
  EXPECT_EQ(login("/home/a b/100%/$x\"`").status(), LoginStatus::enabled);
}

TEST_F(AutostartLoginTest, TheEntryOfAProgramElsewhereIsNotOurs) {
  login("/old/Tollvane").registerApplication(AskedBy::program);
  EXPECT_EQ(login().status(), LoginStatus::notRegistered);
  login().registerApplication(AskedBy::program);
  EXPECT_EQ(login().status(), LoginStatus::enabled);
}

TEST_F(AutostartLoginTest, AnEntryThatTheUserTurnedOffRequiresApproval) {
  for (const char* mark : {"Hidden=true", "X-GNOME-Autostart-enabled=false", "X-MATE-Autostart-enabled=false",
                           "X-KDE-autostart-enabled = false", "X-XFCE-Autostart-enabled=false"}) {
    ASSERT_EQ(login().registerApplication(AskedBy::program), std::nullopt);
    replace("X-GNOME-Autostart-enabled=true", mark);
    EXPECT_EQ(login().status(), LoginStatus::requiresApproval) << mark;
    EXPECT_EQ(login().registerApplication(AskedBy::program), std::nullopt);
    EXPECT_EQ(login().status(), LoginStatus::requiresApproval) << "only the user can undo it";
    EXPECT_EQ(login().registerApplication(AskedBy::user), std::nullopt);
    EXPECT_EQ(login().status(), LoginStatus::enabled);
    login().unregisterApplication();
  }
}

TEST_F(AutostartLoginTest, AMarkInAnotherGroupMeansNothing) {
  login().registerApplication(AskedBy::program);
  replace("X-GNOME-Autostart-enabled=true", "X-GNOME-Autostart-enabled=true\n[Desktop Action x]\nHidden=true");
  EXPECT_EQ(login().status(), LoginStatus::enabled);
}

// As a desktop would start it: the entry's command, read by the rules for Exec.
TEST_F(AutostartLoginTest, AnyPathIsStarted) {
  for (const char* name : {"plain", "a=b", "two\nlines", "100%", "%f", "$HOME `id` \"x\" \\ '"}) {
    const auto program = directory / name / "Tollvane";
    directory.write(std::string(name) + "/Tollvane", "#!/bin/sh\necho \"$TOLLVANE_STARTED_AT_LOGIN $#\" >\"$0.ran\"\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    ASSERT_EQ(login(program).registerApplication(AskedBy::program), std::nullopt);
    EXPECT_EQ(login(program).status(), LoginStatus::enabled) << name;
    ASSERT_EQ(std::system(("gio launch " + entry().string()).c_str()), 0) << name << '\n' << content();
    const std::string ran = program.string() + ".ran";
    while (readPlainFile(ran, 100).value_or("").empty()) std::this_thread::yield();
    EXPECT_EQ(readPlainFile(ran, 100), "1 0\n") << name;
  }
}

TEST_F(AutostartLoginTest, AnEntryOfOursWhoseProgramIsGoneIsRepaired) {
  directory.write("here/Tollvane", "");
  for (const char* old : {"gone/Tollvane", "100%/a=b/Tollvane"}) {
    login(directory / old).registerApplication(AskedBy::program);
    login(directory / "here/Tollvane").repair();
    EXPECT_EQ(login(directory / "here/Tollvane").status(), LoginStatus::enabled) << old;
  }
  login().repair();
  EXPECT_EQ(login(directory / "here/Tollvane").status(), LoginStatus::enabled) << "its program is there";
}

TEST_F(AutostartLoginTest, NothingIsRepairedThatIsTurnedOffOrNotOurs) {
  login("/gone/Tollvane").registerApplication(AskedBy::program);
  replace("X-GNOME-Autostart-enabled=true", "Hidden=true");
  login().repair();
  EXPECT_EQ(login().status(), LoginStatus::requiresApproval);
  ASSERT_TRUE(files.write(entry(), "[Desktop Entry]\nExec=/gone/Tollvane\n"));
  login().repair();
  EXPECT_EQ(content(), "[Desktop Entry]\nExec=/gone/Tollvane\n");
  ASSERT_TRUE(files.remove(entry()));
  login().repair();
  EXPECT_FALSE(files.exists(entry()));
}

TEST_F(AutostartLoginTest, AFolderThatCannotBeMadeIsReported) {
  ASSERT_TRUE(files.write(directory.path() / "config", "a file"));
  EXPECT_EQ(login().registerApplication(AskedBy::program),
            "The folder " + (directory.path() / "config/autostart").string() + " could not be made: Not a directory.");
  EXPECT_EQ(login().status(), LoginStatus::notRegistered);
}

TEST_F(AutostartLoginTest, WithoutAHomeNothingCanBeRegistered) {
  AutostartLogin homeless(files, std::nullopt, "/opt/Tollvane/Tollvane");
  EXPECT_EQ(homeless.status(), LoginStatus::notRegistered);
  EXPECT_EQ(homeless.registerApplication(AskedBy::program), "There is no home directory for this user.");
  EXPECT_EQ(homeless.unregisterApplication(), std::nullopt);
}

}  // namespace
}  // namespace tollvane
