// Opening files, pages and applications: what the started program gets, and what it does not inherit.

#include <gmock/gmock.h>

#include "tests/desktop/desktop_fixture.h"

namespace tollvane::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class LaunchingTest : public DesktopTest {
 protected:
  LaunchingTest() : DesktopTest({.screen = false, .panel = false}) {
    // A program that writes down how it was started.
    const auto recorder = script("recorder",
                                 "{ printf 'argument %s\\n' \"$@\"; env; echo parent $PPID\n"
                                 "ls /proc/self/fd | sed 's/^/descriptor /'\n"
                                 "grep SigBlk /proc/self/status; } > \"" +
                                     (root() / "record.new").string() + "\"\nmv \"" + (root() / "record.new").string() +
                                     "\" \"" + (root() / "record").string() + "\"\nsleep 2\n");
    recorderEntry = entry("recorder", "Name=Recorder\nExec=" + recorder.string() + " --fixed %u\nMimeType=text/plain;" +
                                          "x-scheme-handler/http;x-scheme-handler/https;\n");
    write(".config/mimeapps.list",
          "[Default Applications]\ntext/plain=recorder.desktop\nx-scheme-handler/http=recorder.desktop\n"
          "x-scheme-handler/https=recorder.desktop\n");
  }

  std::string record() {
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(root() / "record"); }, desktopPatience));
    return read("record");
  }

  std::filesystem::path recorderEntry;
};

TEST_F(LaunchingTest, APageOpensInTheDefaultBrowser) {
  startProbe();
  ask("url https://example.org/a?b=c&d='e'$(f)");
  const std::string started = record();
  EXPECT_THAT(started, HasSubstr("argument --fixed\n"));
  EXPECT_THAT(started, HasSubstr("argument https://example.org/a?b=c&d='e'$(f)\n"));
}

TEST_F(LaunchingTest, APageOpensInAGivenApplication) {
  startProbe();
  EXPECT_EQ(ask("url-in https://example.org/ " + recorderEntry.string()), "started yes");
  EXPECT_THAT(record(), HasSubstr("argument https://example.org/\n"));
}

TEST_F(LaunchingTest, AnApplicationThatIsGoneIsNotStarted) {
  startProbe();
  EXPECT_EQ(ask("url-in https://example.org/ " + (root() / "gone.desktop").string()), "started no");
}

TEST_F(LaunchingTest, OnlyPagesAreOpenedByTheirAddress) {
  startProbe();
  for (const auto* url : {"file:///etc/passwd", "recorder:x", "--help", "javascript:alert(1)", "/etc/passwd", "http:"})
    ask(std::string("url ") + url);
  EXPECT_EQ(ask("url-in ftp://example.org/ " + recorderEntry.string()), "started no");
  EXPECT_FALSE(std::filesystem::exists(root() / "record"));
}

TEST_F(LaunchingTest, AFileOpensInItsDefaultProgram) {
  const auto history = write("some where/history & more.txt", "text");
  startProbe();
  ask("open " + history.string());
  EXPECT_THAT(record(), HasSubstr("history"));
}

TEST_F(LaunchingTest, AnEntryStartsItsApplication) {
  startProbe();
  ask("open " + recorderEntry.string());
  EXPECT_THAT(record(), Not(HasSubstr("argument http")));
}

TEST_F(LaunchingTest, AStartedProgramInheritsNothingThatIsMeantForTollvane) {
  startProbe({{"XDG_ACTIVATION_TOKEN", "stale"}, {"TOLLVANE_STARTED_AT_LOGIN", "1"}, {"KEPT", "yes"}});
  ask("open " + recorderEntry.string());
  const std::string started = record();
  EXPECT_THAT(started, HasSubstr("KEPT=yes\n"));
  EXPECT_THAT(started, HasSubstr("SigBlk:\t0000000000000000\n"));
  EXPECT_THAT(started, Not(HasSubstr("stale")));
  EXPECT_THAT(started, Not(HasSubstr("TOLLVANE_STARTED_AT_LOGIN")));
  EXPECT_THAT(started, Not(HasSubstr("parent " + std::to_string(probe->pid()) + "\n")));
  // Descriptor 3 is the directory /proc/self/fd while it is listed.
  EXPECT_THAT(started, Not(HasSubstr("descriptor 4\n")));
}

TEST_F(LaunchingTest, WithoutTheDesktopsToolTheEntrysOwnCommandIsRun) {
  startProbe({{"PATH", (root() / "nowhere").string()}});
  EXPECT_EQ(ask("url-in https://example.org/ " + recorderEntry.string()), "started yes");
}

TEST_F(LaunchingTest, WithoutAnyToolAPageIsNotOpenedAndNothingBreaks) {
  startProbe({{"PATH", (root() / "nowhere").string()}});
  EXPECT_EQ(ask("url https://example.org/"), "ok");
  EXPECT_EQ(ask("ask"), "ok");
}

}  // namespace
}  // namespace tollvane::test
