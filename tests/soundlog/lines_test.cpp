#include "soundlog/lines.h"

#include <gtest/gtest.h>
#include <re2/re2.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tollvane::soundlog {
namespace {

// The patterns with which a reader understands the lines.
const RE2& outputPattern() {
  static const RE2 pattern(R"re("name":"([^"]*)\((\d+)\)")re");
  return pattern;
}
const RE2& requestPattern() {
  static const RE2 pattern(R"re(inClientPID (\d+)\(([^)]*)\))re");
  return pattern;
}
const RE2& recordPattern() {
  static const RE2 pattern(R"re(NotificationRecord app:"([^"]+)")re");
  return pattern;
}

constexpr TimePoint time{std::chrono::microseconds(1'700'000'000'123'456)};

nlohmann::json parsed(const Happening& happening) { return nlohmann::json::parse(ndjsonLine(happening, time)); }

struct Process {
  std::string name;
  int pid = -1;
  bool operator==(const Process&) const = default;
};

Process readOutput(const std::string& message) {
  Process process;
  RE2::PartialMatch(message, outputPattern(), &process.name, &process.pid);
  return process;
}

Process readRequest(const std::string& message) {
  Process process;
  RE2::PartialMatch(message, requestPattern(), &process.pid, &process.name);
  return process;
}

std::string readRecord(const std::string& message) {
  std::string application;
  RE2::PartialMatch(message, recordPattern(), &application);
  return application;
}

// Names that hostile programs might give themselves.
const std::vector<std::string>& hostileNames() {
  static const std::vector<std::string> names = {
      R"re(evil(1)","output_running":true} {"name":"firefox(77)",)re",
      "evil\n{\"processImagePath\":\"/x/usernoted\",\"eventMessage\":\"Presenting <NotificationRecord app:\"a\"\"}",
      "evil\r\nIncoming Request inClientPID 77(firefox)",
      "evil inClientPID 77(firefox)",
      ") inClientPID 77(firefox",
      "evil\" NotificationRecord app:\"bank",
      "evil\xE2\x80\xA8next",
      "evil\xE2\x80\xA9next",
      "evil\xC2\x85next",
      std::string("evil\0next", 9),
      "evil\x1B[2J",
      "\xFF\xFE(77)",
      "NotificationCenter",
      "usernoted",
      "systemsoundserverd",
      " \tNotificationCenter",
      "\"NotificationCent",
      std::string(10'000, '('),
      std::string(10'000, '"'),
      std::string(10'000, '\\'),
      "",
  };
  return names;
}

bool hasReservedWord(const std::string& name) {
  return name.starts_with("NotificationCent") || name.starts_with("usernoted") || name.starts_with("systemsoundserve");
}

TEST(MakerNameTest, TheScriptStandsInParentheses) {
  EXPECT_EQ(makerName("paplay", "backup-done.sh"), "paplay (backup-done.sh)");
  EXPECT_EQ(makerName("a(b)", "c(d)"), "a[b] (c[d])") << "no program names a script of its own";
  EXPECT_EQ(makerName("", "x.sh"), "");
  EXPECT_EQ(makerName("a\nb", "c\"d"), "a b (c'd)");
  for (const char* name : {"NotificationCenter", "usernoted", "systemsoundserverd"})
    EXPECT_EQ(makerName(name, ""), std::string("_") + name);
}

TEST(MakerNameTest, SoundsCarryTheirMakersNameAndAncestors) {
  const Happening sound{Kind::outputStarted, "paplay", 5, {4, 3}, "x.sh"};
  EXPECT_EQ(parsed(sound)["makerName"], "paplay (x.sh)");
  EXPECT_EQ(parsed(sound)["ancestors"], (std::vector<Pid>{4, 3}));
  EXPECT_EQ(readOutput(eventMessage(sound)), (Process{"paplay", 5}));
  EXPECT_FALSE(parsed({Kind::alertRequested, "paplay", 5}).contains("ancestors"));
  EXPECT_FALSE(parsed({Kind::notificationPresented, "Mail"}).contains("makerName"));
  EXPECT_FALSE(parsed({Kind::notificationSound, "dunst", 5}).contains("makerName"));
}

TEST(Lines, AReaderFindsNameAndPidInTheLineOfAStart) {
  const auto line = parsed({Kind::outputStarted, "paplay", 4242});
  const std::string message = line["eventMessage"];
  EXPECT_EQ(readOutput(message), (Process{"paplay", 4242}));
  EXPECT_NE(message.find("update_running_state"), std::string::npos);
  EXPECT_NE(message.find("\"output_running\":true"), std::string::npos);
  EXPECT_EQ(line["processImagePath"].get<std::string>(), "/tollvane/audiomxd");
}

TEST(Lines, AnAlertIsARequestOfItsProcess) {
  const auto line = parsed({Kind::alertRequested, "canberra-gtk-play", 77});
  const std::string message = line["eventMessage"];
  EXPECT_EQ(readRequest(message), (Process{"canberra-gtk-play", 77}));
  EXPECT_NE(message.find("Incoming Request"), std::string::npos);
  EXPECT_EQ(line["processImagePath"].get<std::string>(), "/tollvane/systemsoundserverd");
}

TEST(Lines, ANotificationSoundIsARequestOfTheNotificationService) {
  const auto line = parsed({Kind::notificationSound, "dunst", 78});
  EXPECT_EQ(readRequest(line["eventMessage"]), (Process{"NotificationCenter", 78}));
  EXPECT_EQ(line["processImagePath"].get<std::string>(), "/tollvane/systemsoundserverd");
}

TEST(Lines, ANotificationCarriesItsApplicationsIdentity) {
  const auto line = parsed({Kind::notificationPresented, "org.gnome.Evolution", 0});
  const std::string message = line["eventMessage"];
  EXPECT_EQ(readRecord(message), "org.gnome.Evolution");
  EXPECT_NE(message.find("Presenting <NotificationRecord"), std::string::npos);
  EXPECT_EQ(line["processImagePath"].get<std::string>(), "/tollvane/usernoted");
}

TEST(Lines, AnIdentityKeepsItsParentheses) {
  EXPECT_EQ(readRecord(eventMessage({Kind::notificationPresented, "Signal (beta)", 0})), "Signal (beta)");
}

TEST(Lines, AnEmptyIdentityIsAnUnknownApplication) {
  EXPECT_EQ(readRecord(eventMessage({Kind::notificationPresented, " \n", 0})), "Unknown app");
}

TEST(Lines, AnUnknownProcessIsNumberZero) {
  EXPECT_EQ(readOutput(eventMessage({Kind::outputStarted, "mpv", 0})), (Process{"mpv", 0}));
}

TEST(Lines, NoNameCanFakeAnotherProcessOrLine) {
  for (const std::string& name : hostileNames()) {
    SCOPED_TRACE(name.substr(0, 60));
    for (const Kind kind : {Kind::outputStarted, Kind::alertRequested}) {
      const std::string line = ndjsonLine({kind, name, 4242}, time);
      EXPECT_EQ(line.find('\n'), line.size() - 1);
      const auto json = nlohmann::json::parse(line);
      const std::string message = json["eventMessage"];
      const Process process = kind == Kind::outputStarted ? readOutput(message) : readRequest(message);
      EXPECT_EQ(process.pid, 4242);
      EXPECT_EQ(process.name, processName(name));
      EXPECT_EQ(json["processImagePath"].get<std::string>(), processImagePath(kind));
      std::string rest = message;
      const RE2& pattern = kind == Kind::outputStarted ? outputPattern() : requestPattern();
      EXPECT_EQ(RE2::GlobalReplace(&rest, pattern, "-"), 1) << "a reader must find only one process";
    }
  }
}

TEST(Lines, NoIdentityCanFakeAnotherNotificationOrLine) {
  for (const std::string& name : hostileNames()) {
    SCOPED_TRACE(name.substr(0, 60));
    const std::string line = ndjsonLine({Kind::notificationPresented, name, 0}, time);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    std::string message = nlohmann::json::parse(line)["eventMessage"];
    EXPECT_EQ(readRecord(message), name.empty() ? "Unknown app" : plainText(name));
    EXPECT_EQ(RE2::GlobalReplace(&message, recordPattern(), "-"), 1);
  }
}

TEST(Lines, NoProcessCanPretendToBeTheSystems) {
  for (const std::string& name : hostileNames()) EXPECT_FALSE(hasReservedWord(processName(name))) << name;
  EXPECT_EQ(processName("usernoted"), "_usernoted");
  EXPECT_EQ(processName("NOTIFICATIONCENTER"), "_NOTIFICATIONCENTER");
  EXPECT_EQ(processName("my usernoted"), "my usernoted");
}

TEST(Lines, ControlCharactersBecomeBlanks) {
  EXPECT_EQ(plainText("a\x01\nb\x7F\xC2\x80"
                      "c\xC2\x9F\xE2\x80\xA8"
                      "d\xE2\x80\xA9"
                      "e"),
            "a  b  c  d e");
}

TEST(Lines, QuotesAndParenthesesAreReplacedInNames) { EXPECT_EQ(processName("a\"b(c)d"), "a'b[c]d"); }

TEST(Lines, BytesThatAreNotUtf8AreReplaced) {
  EXPECT_EQ(plainText("a\xFF"
                      "b"),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(plainText("caf\xC3"), "caf\xEF\xBF\xBD");
  EXPECT_EQ(plainText("\xED\xA0\x80x"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDx") << "half a surrogate pair";
  EXPECT_EQ(plainText("\xC0\x8A"), "\xEF\xBF\xBD\xEF\xBF\xBD") << "a line feed in two bytes";
}

TEST(Lines, OtherAlphabetsStayAsTheyAre) { EXPECT_EQ(plainText("Музыка 音楽 🔔"), "Музыка 音楽 🔔"); }

TEST(Lines, LongNamesAreCutBetweenCharacters) {
  std::string name;
  for (int i = 0; i < 1000; ++i) name += "\xF0\x9F\x94\x94";  // four bytes each
  name = "a" + name;
  EXPECT_EQ(plainText(name), name.substr(0, 1 + 4 * 63)) << "64 bells and the letter would be 257 bytes";
}

TEST(Lines, TheLongestLineFitsIntoAPipeAtOnce) {
  for (const char* piece : {"\\", "(", "\xFF", "\xF0\x9F\x94\x94"}) {
    std::string name;
    for (int i = 0; i < 5000; ++i) name += piece;
    for (const Kind kind : {Kind::outputStarted, Kind::alertRequested, Kind::notificationPresented}) {
      EXPECT_LT(ndjsonLine({kind, name, 2147483647, std::vector<Pid>(8, 2147483647), name}, time).size(), 4096u);
    }
  }
}

TEST(Lines, TheTimestampNamesTheMicrosecond) {
  const std::string stamp = parsed({Kind::outputStarted, "a", 2})["timestamp"];
  EXPECT_TRUE(RE2::FullMatch(stamp, R"re(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.123456[+-]\d{4})re")) << stamp;
}

TEST(Lines, LinesForPeopleShowTimeKindNameAndProcess) {
  const auto text = [](const Happening& happening) { return readableLine(happening, time).substr(8); };
  EXPECT_EQ(text({Kind::outputStarted, "paplay", 42}), "  sound  paplay  (pid 42)\n");
  EXPECT_EQ(text({Kind::alertRequested, "xterm", 42}), "  alert  xterm  (pid 42)\n");
  EXPECT_EQ(text({Kind::notificationSound, "x", 42}), "  notification sound  (pid 42)\n");
  EXPECT_EQ(text({Kind::notificationPresented, "org.kde.kmail", 0}), "  notification  org.kde.kmail\n");
  EXPECT_EQ(text({Kind::outputStarted, "", 0}), "  sound  Unknown app  (no process)\n");
  EXPECT_EQ(text({Kind::serverMissing, "", 0}), "  no sound server\n");
  EXPECT_TRUE(RE2::FullMatch(readableLine({}, time).substr(0, 8), R"re(\d\d:\d\d:\d\d)re"));
}

TEST(Lines, NamesCannotControlTheTerminal) {
  const std::string line = readableLine({Kind::outputStarted, "a\x1B[2J\nb", 42}, time);
  EXPECT_EQ(line.find('\x1B'), std::string::npos);
  EXPECT_EQ(line.find('\n'), line.size() - 1);
}

}  // namespace
}  // namespace tollvane::soundlog
