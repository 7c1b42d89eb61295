#include "detect/sound_message.h"

#include <gtest/gtest.h>
#include <re2/re2.h>

#include <algorithm>
#include <random>

#include "tests/virtual/log_lines.h"

namespace tollvane {
namespace {

using test::outputMessage;
using test::requestMessage;

std::string bundleOf(std::string_view message) {
  const auto found = soundMessage("usernoted", message);
  return found ? std::string(std::get<NotificationPresented>(*found).bundleID) : "(none)";
}

// The finding as "name pid", or "(none)" if it is absent.
template <class Finding>
std::string makerOf(std::string_view process, std::string_view message) {
  const auto found = soundMessage(process, message);
  if (!found || !std::holds_alternative<Finding>(*found)) return "(none)";
  const auto& finding = std::get<Finding>(*found);
  return std::string(finding.name) + " " + std::to_string(finding.pid);
}
std::string outputOf(std::string_view message) { return makerOf<AudioOutputStarted>("audiomxd", message); }
std::string alertOf(std::string_view message) { return makerOf<AlertSoundRequested>("systemsoundserverd", message); }

TEST(SoundMessageTest, ANotificationNamesItsBundle) {
  EXPECT_EQ(bundleOf(R"(Presenting <NotificationRecord app:"com.example.mail" ident:"7">)"), "com.example.mail");
  EXPECT_EQ(bundleOf("Request: Starting [bundle=com.example.mail, id=7]"), "com.example.mail");
  EXPECT_EQ(bundleOf("Request: Starting [id=7 bundle=com.example.mail]"), "com.example.mail");
  EXPECT_EQ(bundleOf("bundle=com.example.mail"), "com.example.mail");
}

TEST(SoundMessageTest, TheRecordIsPreferredToTheBundle) {
  EXPECT_EQ(bundleOf(R"(bundle=second NotificationRecord app:"first")"), "first");
  EXPECT_EQ(bundleOf(R"(bundle=second, NotificationRecord app:"")"), "second");
}

TEST(SoundMessageTest, ANotificationWithoutABundleIsIgnored) {
  EXPECT_EQ(bundleOf("Presenting <NotificationRecord>"), "(none)");
  EXPECT_EQ(bundleOf("bundle="), "(none)");
  EXPECT_EQ(bundleOf("bundle=]"), "(none)");
  EXPECT_EQ(bundleOf(""), "(none)");
}

TEST(SoundMessageTest, ABundleMayHoldAnythingButItsEnd) {
  EXPECT_EQ(bundleOf("NotificationRecord app:\"two\nlines\""), "two\nlines");
  EXPECT_EQ(bundleOf("bundle=å\nb,c"), "å\nb");
}

TEST(SoundMessageTest, AnAlertNamesItsClient) {
  EXPECT_EQ(alertOf(requestMessage("Mail", "4242")), "Mail 4242");
  EXPECT_EQ(alertOf(requestMessage("", "4242")), " 4242");
  EXPECT_EQ(alertOf(requestMessage("Two Words", "1")), "Two Words 1");
}

TEST(SoundMessageTest, TheFirstClientIsTheOneThatCounts) {
  EXPECT_EQ(alertOf("inClientPID 1(a) inClientPID 2(b)"), "a 1");
  EXPECT_EQ(alertOf("inClientPID 1a inClientPID 2(b)"), "b 2");
}

TEST(SoundMessageTest, TheNotificationSystemIsKnownByTheBeginningOfItsName) {
  for (const auto* name : {"NotificationCent", "NotificationCenter", "usernoted", "usernoted2"}) {
    const auto found = soundMessage("systemsoundserverd", requestMessage(name, "4242"));
    ASSERT_TRUE(found) << name;
    EXPECT_TRUE(std::holds_alternative<NotificationSoundRequested>(*found)) << name;
  }
  for (const auto* name : {"NotificationCen", "notificationcent", " usernoted", "Usernoted"})
    EXPECT_EQ(alertOf(requestMessage(name, "4242")), std::string(name) + " 4242");
}

TEST(SoundMessageTest, AnOutputThatStartedNamesItsProcess) {
  EXPECT_EQ(outputOf(outputMessage("firefox", "4242")), "firefox 4242");
  EXPECT_EQ(outputOf(outputMessage("", "4242")), " 4242");
  EXPECT_EQ(outputOf(outputMessage("My (old) player", "4242")), "My (old) player 4242");
}

TEST(SoundMessageTest, AnOutputThatStoppedIsIgnored) {
  EXPECT_EQ(outputOf(outputMessage("firefox", "4242", false)), "(none)");
  EXPECT_EQ(outputOf(R"m({"name":"firefox(4242)","output_running": true})m"), "(none)");
  EXPECT_EQ(outputOf(R"m({"name":"firefox(4242)"})m"), "(none)");
}

TEST(SoundMessageTest, AnOutputWithoutNameOrPidIsIgnored) {
  EXPECT_EQ(outputOf(R"m({"name":"firefox","output_running":true})m"), "(none)");
  EXPECT_EQ(outputOf(R"m({"name":"firefox()","output_running":true})m"), "(none)");
  EXPECT_EQ(outputOf(R"m({"name":"firefox(4242) ","output_running":true})m"), "(none)");
}

TEST(SoundMessageTest, TheSoundServersOwnOutputIsNotCountedTwice) {
  EXPECT_EQ(outputOf(outputMessage("systemsoundserverd", "123")), "(none)");
  EXPECT_EQ(outputOf(outputMessage("systemsoundserve", "123")), "(none)");
  EXPECT_EQ(outputOf(outputMessage("systemsoundserv", "123")), "systemsoundserv 123");
}

TEST(SoundMessageTest, PidsAreSigned32BitNumbersInAsciiDigits) {
  EXPECT_EQ(outputOf(outputMessage("a", "2147483647")), "a 2147483647");
  EXPECT_EQ(outputOf(outputMessage("a", "0")), "a 0");
  EXPECT_EQ(outputOf(outputMessage("a", "00042")), "a 42");
  for (const auto* pid : {"2147483648", "12345678901", "99999999999999999999999999", "", "-1", "1x", "٤٢", "4２"}) {
    EXPECT_EQ(outputOf(outputMessage("a", pid)), "(none)") << pid;
    EXPECT_EQ(alertOf(requestMessage("a", pid)), "(none)") << pid;
  }
}

TEST(SoundMessageTest, DigitsOfOtherScriptsEndTheSearch) {
  EXPECT_EQ(alertOf("inClientPID ٤٢(a) inClientPID 2(b)"), "(none)");
}

TEST(SoundMessageTest, TheQuickCheckNeverMissesAMessage) {
  for (const auto& line : {test::outputStarted("a", 1), test::soundRequested("a", 1), test::notificationPresented("a"),
                           test::logLine("usernoted", "Request: Starting [bundle=a]")}) {
    EXPECT_TRUE(mayHoldSoundMessage(line)) << line;
  }
  EXPECT_TRUE(mayHoldSoundMessage(R"m({"eventMessage":"inClient\u0050ID 1(a)"})m"));
  EXPECT_TRUE(mayHoldSoundMessage("\\u"));
}

TEST(SoundMessageTest, TheQuickCheckRejectsTextsThatCannotHoldAMessage) {
  for (const auto& line :
       {test::logLine("audiomxd", test::outputMessage("a", "1", false)), std::string(), std::string("u\\"),
        test::logLine("/usr/sbin/kernel", "output_running true, ClientPID 1, a \"quote\"")}) {
    EXPECT_FALSE(mayHoldSoundMessage(line)) << line;
  }
}

// The same patterns as regular expressions; soundMessage() must find exactly what they match.
std::optional<SoundMessage> byExpressions(std::string_view process, std::string_view message) {
  static const RE2 record(R"re(NotificationRecord app:"([^"]+)")re");
  static const RE2 bundle(R"re(bundle=([^\],]+))re");
  static const RE2 client(R"re(inClientPID (\p{Nd}+)\(([^)]*)\))re");
  static const RE2 output(R"re("name":"([^"]*)\((\p{Nd}+)\)")re");
  // Newer versions of re2 take a text type of their own, which std::string_view does not convert to.
  const re2::StringPiece text(message.data(), message.size());
  re2::StringPiece first;
  re2::StringPiece second;
  const auto view = [](re2::StringPiece piece) { return std::string_view(piece.data(), piece.size()); };
  const auto pidOf = [](re2::StringPiece digits) -> std::optional<Pid> {
    Pid pid = 0;
    const bool ascii = std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
    return ascii && digits.size() < 10 && RE2::FullMatch(digits, "([0-9]+)", &pid) ? std::optional(pid) : std::nullopt;
  };
  if (process == "usernoted") {
    if (!RE2::PartialMatch(text, record, &first) && !RE2::PartialMatch(text, bundle, &first)) return std::nullopt;
    return NotificationPresented{view(first)};
  }
  if (process == "systemsoundserverd") {
    if (!RE2::PartialMatch(text, client, &first, &second) || !pidOf(first)) return std::nullopt;
    return AlertSoundRequested{*pidOf(first), view(second)};
  }
  if (message.find("\"output_running\":true") == message.npos) return std::nullopt;
  if (!RE2::PartialMatch(text, output, &first, &second) || !pidOf(second)) return std::nullopt;
  return AudioOutputStarted{*pidOf(second), view(first)};
}

TEST(SoundMessageTest, ThePatternsMatchWhatTheirRegularExpressionsMatch) {
  const std::string_view pieces[] = {"NotificationRecord app:\"",
                                     "bundle=",
                                     "inClientPID ",
                                     "\"name\":\"",
                                     "name\":\"",
                                     "\"",
                                     "(",
                                     ")",
                                     "]",
                                     ",",
                                     "1",
                                     "42",
                                     "٤",
                                     "x",
                                     "é",
                                     "\n",
                                     " ",
                                     "\"output_running\":true"};
  std::mt19937 random(20251120);  // the same messages in each run
  int found = 0;
  for (int i = 0; i < 200'000; ++i) {
    std::string message = i % 2 == 0 ? "\"output_running\":true" : "";
    for (auto length = random() % 12; length > 0; --length) message += pieces[random() % std::size(pieces)];
    for (const auto* process : {"usernoted", "systemsoundserverd", "audiomxd"}) {
      const auto expected = byExpressions(process, message);
      found += expected.has_value();
      ASSERT_EQ(soundMessage(process, message), expected) << process << ": " << message;
    }
  }
  EXPECT_GT(found, 10'000);  // enough of the messages match
}

TEST(SoundMessageTest, MessagesOfManyMegabytesAreReadOnce) {
  const std::string much(20 << 20, '(');
  EXPECT_EQ(outputOf(outputMessage(much, "42")), much + " 42");
  EXPECT_EQ(alertOf(requestMessage(much, "42")), much + " 42");
  EXPECT_EQ(bundleOf("bundle=" + much), much);
  std::string starts;
  for (int i = 0; i < 200'000; ++i) starts += "inClientPID 1( \"name\":\"(1 NotificationRecord app:\"\" bundle=],";
  EXPECT_EQ(alertOf(starts), "(none)");
  EXPECT_EQ(outputOf("\"output_running\":true" + starts), "(none)");
  EXPECT_EQ(bundleOf(starts), "(none)");
}

TEST(SoundMessageTest, MessagesOfOtherProcessesAreIgnored) {
  for (const auto* process : {"", "Audiomxd", "audiomxd ", "systemsoundserve", "usernotedd", "kernel"}) {
    EXPECT_EQ(soundMessage(process, outputMessage("a", "1") + requestMessage("b", "2") + "bundle=c"), std::nullopt)
        << process;
  }
}

TEST(SoundMessageTest, EachDaemonReportsItsOwnKindOfSoundOnly) {
  EXPECT_EQ(soundMessage("audiomxd", requestMessage("a", "1")), std::nullopt);
  EXPECT_EQ(soundMessage("systemsoundserverd", outputMessage("a", "1")), std::nullopt);
  EXPECT_EQ(soundMessage("usernoted", outputMessage("a", "1")), std::nullopt);
}

}  // namespace
}  // namespace tollvane
