// The bundle as users run it, copied to another place: with a real sound server, real players and a real history file.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <sstream>

#include "platform/linux/kernel/proc_fs.h"
#include "tests/support/private_sound.h"
#include "tests/support/process.h"
#include "tests/support/shared_session.h"
#include "tests/support/temporary_directory.h"
#include "tests/virtual/log_lines.h"

namespace tollvane::test {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class WholeProgramTest : public SharedSession<PrivateSound> {
 protected:
  WholeProgramTest() {
    fs::copy(TOLLVANE_BUNDLE, bundle, fs::copy_options::recursive);
    sound.setVariable("QT_QPA_PLATFORM", "offscreen");
    sound.setVariable("XDG_DATA_HOME", data.string());
    sound.setVariable("XDG_CONFIG_HOME", (home / "config").string());
    sound.setVariable("TZ", "UTC");
  }

  void start() { tollvane = std::make_unique<Process>(command(), options()); }
  std::vector<std::string> command() const { return {(bundle / "Tollvane").string()}; }
  Process::Options options() const {
    return {.output = Process::Output::ignored, .variables = sound.variables(), .errors = home / "errors"};
  }

  // Replaces the log tool by a shell script.
  void replaceLogTool(const std::string& script) {
    fs::remove(bundle / "TollvaneLog");
    home.write("bundle/TollvaneLog", "#!/bin/sh\n" + script + "\n");
    fs::permissions(bundle / "TollvaneLog", fs::perms::owner_all);
  }

  // The lines of the history, without their dates.
  std::vector<std::string> history() const {
    std::istringstream lines(home.read("data/Tollvane/history.txt"));
    std::vector<std::string> result;
    for (std::string line; std::getline(lines, line);) result.push_back(line.substr(std::min<size_t>(20, line.size())));
    return result;
  }
  bool historyHolds(const std::string& line) const { return std::ranges::count(history(), line) > 0; }

  std::optional<Pid> logTool() const {
    const ProcFs processes;
    for (const Pid pid : processes.all())
      if (const auto status = processes.status(pid); status && status->parent == tollvane->pid()) return pid;
    return std::nullopt;
  }
  static bool isAlive(Pid pid) { return ProcFs().executable(pid).has_value(); }

  // Sounds that start before the log tool is connected are not reported, so this plays until one is heard.
  void awaitHearing() {
    const auto probe = sound.tone(50ms);
    ASSERT_TRUE(waitUntil([&] { return sound.play({"pw-play", probe}) && !history().empty(); }, 30s));
  }

  TemporaryDirectory home;
  const fs::path bundle = home / "bundle";
  const fs::path data = home / "data";
  PrivateSound& sound = session;
  std::unique_ptr<Process> tollvane;
};

TEST_F(WholeProgramTest, NamesTheMakerOfEveryRealSoundOnce) {
  sound.start();
  start();
  awaitHearing();
  EXPECT_TRUE(sound.play({"paplay", sound.tone(100ms)}));
  EXPECT_TRUE(sound.play({"aplay", "-q", sound.tone(100ms)}));
  EXPECT_TRUE(sound.play({"paplay", "--property=media.role=event", sound.tone(100ms)}));
  EXPECT_TRUE(waitUntil([&] { return historyHolds("paplay\talert sound\t"); }));
  for (const auto* line : {"pw-play\tstarted playing audio\t", "paplay\tstarted playing audio\t",
                           "aplay\tstarted playing audio\t", "paplay\talert sound\t"})
    EXPECT_EQ(std::ranges::count(history(), line), 1) << line;
}

TEST_F(WholeProgramTest, CreditsAToolToTheApplicationThatStartedIt) {
  home.write("data/applications/terminal.desktop",
             "[Desktop Entry]\nType=Application\nName=Fine Terminal\nExec=" + (home / "fine-terminal").string() + "\n");
  fs::copy_file("/bin/bash", home / "fine-terminal");
  sound.start();
  start();
  awaitHearing();
  const auto file = sound.tone(100ms).string();
  const auto terminal = sound.begin({(home / "fine-terminal").string(), "-c", "paplay '" + file + "'; sleep 1000"});
  EXPECT_TRUE(waitUntil([&] { return historyHolds("Fine Terminal\tstarted playing audio\t"); }));
}

TEST_F(WholeProgramTest, FilesThatItCreatesAreForItsUserOnly) {
  const auto mask = ::umask(0);
  replaceLogTool("cat <<'END'\n" + outputStarted("player", 1) + "END\nsleep 1000");
  start();
  ::umask(mask);
  ASSERT_TRUE(waitUntil([&] { return historyHolds("player\tstarted playing audio\t"); }));
  EXPECT_EQ(modeOf(data / "Tollvane"), fs::perms::owner_all);
  EXPECT_EQ(modeOf(data / "Tollvane/history.txt"), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(WholeProgramTest, EndsWithItsLogToolWhenAskedTo) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    start();
    ASSERT_TRUE(waitUntil([&] { return logTool().has_value(); }));
    const Pid log = *logTool();
    tollvane->signal(signal);
    EXPECT_EQ(tollvane->exitCode(), 0);
    EXPECT_TRUE(waitUntil([&] { return !isAlive(log); }));
  }
}

TEST_F(WholeProgramTest, ALogToolDoesNotOutliveAKilledTollvane) {
  sound.start();
  start();
  awaitHearing();
  const Pid log = logTool().value();
  tollvane->kill();
  EXPECT_TRUE(waitUntil([&] { return !isAlive(log); }));
}

TEST_F(WholeProgramTest, AKilledLogToolIsStartedAgainAndHears) {
  sound.start();
  start();
  awaitHearing();
  const Pid log = logTool().value();
  ::kill(log, SIGKILL);
  ASSERT_TRUE(waitUntil([&] { return logTool().value_or(log) != log; }));
  const auto file = sound.tone(50ms);
  EXPECT_TRUE(waitUntil(
      [&] {
        return sound.play({"paplay", file}) && historyHolds("paplay\tstarted playing audio\t");
      },
      30s));
}

TEST_F(WholeProgramTest, RunsOnWithALogToolThatIsMissingOrEndsAtOnce) {
  fs::remove(bundle / "TollvaneLog");
  start();
  EXPECT_EQ(tollvane->exitCode(500ms), std::nullopt);
  tollvane->signal(SIGTERM);
  EXPECT_EQ(tollvane->exitCode(), 0);

  replaceLogTool("echo >> '" + (home / "starts").string() + "'; exit 1");
  start();
  ASSERT_TRUE(waitUntil([&] { return home.read("starts").size() >= 2; }));
  tollvane->signal(SIGTERM);
  EXPECT_EQ(tollvane->exitCode(), 0);
}

TEST_F(WholeProgramTest, AnEndlessLineNeitherHangsItNorFillsTheMemory) {
  replaceLogTool("head -c 400000000 /dev/zero | tr '\\0' x\necho\ncat <<'END'\n" + outputStarted("player", 1) +
                 "END\nsleep 1000");
  start();
  ASSERT_TRUE(waitUntil([&] { return historyHolds("player\tstarted playing audio\t"); }, 60s));
  std::ifstream status("/proc/" + std::to_string(tollvane->pid()) + "/status");
  std::string line;
  while (std::getline(status, line) && !line.starts_with("VmHWM:")) {
  }
  EXPECT_LT(std::stol(line.substr(6)), 390'000) << line;  // in KiB: less than was written
  tollvane->signal(SIGTERM);
  EXPECT_EQ(tollvane->exitCode(), 0);
}

TEST_F(WholeProgramTest, HearsOnWhenNothingCanBeStored) {
  const std::string marker = (home / "read").string();
  replaceLogTool("cat <<'END'\n" + outputStarted("player", 1) + "END\ntouch '" + marker + "'\nsleep 1000");
  home.write("data/Tollvane", "a file where the directory should be");
  start();
  ASSERT_TRUE(waitUntil([&] { return fs::exists(marker); }));
  EXPECT_EQ(tollvane->exitCode(500ms), std::nullopt);
  tollvane->signal(SIGTERM);
  EXPECT_EQ(tollvane->exitCode(), 0);
  EXPECT_EQ(home.read("data/Tollvane"), "a file where the directory should be");
}

TEST_F(WholeProgramTest, HearsOnWithoutHome) {
  const std::string marker = (home / "read").string();
  replaceLogTool("cat <<'END'\n" + outputStarted("player", 1) + "END\ntouch '" + marker + "'\nsleep 1000");
  sound.setVariable("HOME", "/proc/nowhere");
  sound.setVariable("XDG_DATA_HOME", "");
  sound.setVariable("XDG_CONFIG_HOME", "");
  start();
  ASSERT_TRUE(waitUntil([&] { return fs::exists(marker); }));
  EXPECT_EQ(tollvane->exitCode(500ms), std::nullopt);
  tollvane->signal(SIGTERM);
  EXPECT_EQ(tollvane->exitCode(), 0);
}

TEST_F(WholeProgramTest, SaysSoWhenThereIsNoDesktop) {
  Variables bare = sound.variables();
  for (const auto* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) bare.erase(name);
  Process::Options without = options();
  without.variables = bare;
  Process program(command(), without);
  EXPECT_EQ(program.exitCode(), 1);
  EXPECT_EQ(home.read("errors"),
            "Tollvane: there is no desktop session here: neither DISPLAY nor WAYLAND_DISPLAY is set.\n");
}

}  // namespace
}  // namespace tollvane::test
