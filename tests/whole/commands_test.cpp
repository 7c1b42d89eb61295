// The commands of the bundle as users run them, in a home of their own and without a desktop.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace tollvane::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class CommandsTest : public testing::Test {
 protected:
  struct Answer {
    int exitCode = -1;
    std::string output;
    std::string errors;
  };
  Answer run(const std::vector<std::string>& options) {
    std::vector<std::string> command = {TOLLVANE_BUNDLE "/Tollvane"};
    command.insert(command.end(), options.begin(), options.end());
    Variables variables = {{"HOME", home.path().string()},
                           {"PATH", "/usr/bin:/bin"},
                           {"LANG", "C.UTF-8"},
                           {"XDG_RUNTIME_DIR", (home / "run").string()}};
    if (const char* sanitizer = std::getenv("TSAN_OPTIONS")) variables.emplace("TSAN_OPTIONS", sanitizer);
    Process process(command, {.output = Process::Output::read, .variables = variables, .errors = home / "errors"});
    Answer answer;
    answer.output = process.rest();
    answer.exitCode = process.exitCode().value_or(-1);
    answer.errors = home.read("errors");
    return answer;
  }

  TemporaryDirectory home;
};

TEST_F(CommandsTest, HelpAndVersionNeedNoDesktop) {
  EXPECT_THAT(run({"--help"}).output, HasSubstr("--uninstall --all"));
  const Answer version = run({"--version"});
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_THAT(version.output, StartsWith("Tollvane 0."));
}

TEST_F(CommandsTest, TheDoctorSaysWhatIsWrongAndNamesNeitherHomeNorTabs) {
  home.write(".local/share/Tollvane/history.txt", "2026-11-22 09:00:01\tMail\talert sound\tSecret  (example.org)\n");
  const Answer text = run({"--doctor"});
  EXPECT_EQ(text.exitCode, 1);
  EXPECT_THAT(text.output, HasSubstr("There is no session bus"));
  EXPECT_THAT(text.output, HasSubstr("No sound server answers"));
  EXPECT_THAT(text.output, HasSubstr("The last sound was heard on 2026-11-22 09:00:01."));
  const Answer json = run({"--doctor", "--json"});
  EXPECT_THAT(json.output, StartsWith("{"));
  for (const Answer& answer : {text, json}) {
    EXPECT_THAT(answer.output, Not(HasSubstr(home.path().string())));
    EXPECT_THAT(answer.output, Not(HasSubstr("Secret")));
    EXPECT_THAT(answer.output, Not(HasSubstr("example.org")));
  }
}

TEST_F(CommandsTest, TheDoctorWritesNothing) {
  run({"--doctor"});
  EXPECT_FALSE(fs::exists(home / ".local"));
  EXPECT_FALSE(fs::exists(home / ".config"));
}

TEST_F(CommandsTest, UninstallTakesBackWhatWasWrittenButHistoryAndSettings) {
  for (const char* file :
       {".config/autostart/tollvane.desktop", ".config/chromium/NativeMessagingHosts/com.quarnel.tollvane.json",
        ".mozilla/native-messaging-hosts/com.quarnel.tollvane.json", ".local/share/Tollvane/bin/TollvaneBridge"}) {
    home.write(file, "x");
  }
  home.write(".config/chromium/Preferences", "the browser's own");
  home.write(".local/share/Tollvane/history.txt", "a line\n");
  home.write(".config/Tollvane/defaults.json", "{}");
  const Answer answer = run({"--uninstall"});
  EXPECT_EQ(answer.exitCode, 0) << answer.errors;
  EXPECT_FALSE(fs::exists(home / ".config/autostart/tollvane.desktop"));
  EXPECT_FALSE(fs::exists(home / ".config/chromium/NativeMessagingHosts"));
  EXPECT_FALSE(fs::exists(home / ".mozilla/native-messaging-hosts"));
  EXPECT_FALSE(fs::exists(home / ".local/share/Tollvane/bin"));
  EXPECT_TRUE(fs::exists(home / ".config/chromium/Preferences"));
  EXPECT_EQ(home.read(".local/share/Tollvane/history.txt"), "a line\n");
  EXPECT_EQ(home.read(".config/Tollvane/defaults.json"), "{}");
}

TEST_F(CommandsTest, UninstallAllRemovesHistoryAndSettingsAndFollowsNoLinks) {
  home.write(".local/share/Tollvane/history.txt", "a line\n");
  home.write(".config/Tollvane/defaults.json", "{}");
  home.write("pictures/holiday.png", "x");
  fs::create_directory_symlink(home / "pictures", home / ".local/share/Tollvane/pictures");
  EXPECT_EQ(run({"--uninstall", "--all"}).exitCode, 0);
  EXPECT_FALSE(fs::exists(home / ".local/share/Tollvane"));
  EXPECT_FALSE(fs::exists(home / ".config/Tollvane"));
  EXPECT_EQ(home.read("pictures/holiday.png"), "x");
}

TEST_F(CommandsTest, OptionsThatDoNotGoTogetherAreRefusedAndDoNothing) {
  home.write(".local/share/Tollvane/history.txt", "a line\n");
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{"--uninstall", "--json"}, {"--doctor", "--all"}, {"--uninstall", "--everything"}}) {
    const Answer answer = run(options);
    EXPECT_EQ(answer.exitCode, 1);
    EXPECT_THAT(answer.errors, HasSubstr("these options do not go together"));
  }
  EXPECT_TRUE(fs::exists(home / ".local/share/Tollvane/history.txt"));
}

}  // namespace
}  // namespace tollvane::test
