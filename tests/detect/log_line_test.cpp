#include "detect/log_line.h"

#include <gtest/gtest.h>

#include <string>

#include "support/line_buffer.h"

namespace tollvane {
namespace {

class LogLineTest : public testing::Test {
 protected:
  // The result as "process: message", or "(none)" if it is absent.
  std::string read(std::string_view line) {
    padded = std::string(line);
    padded.reserve(line.size() + LineBuffer::padding);
    const auto found = reader.read(padded);
    return found ? std::string(found->process) + ": " + std::string(found->message) : "(none)";
  }
  bool wellFormed(std::string_view line) { return read(line) != "(none)"; }

  std::string padded;
  LogLineReader reader;
};

TEST_F(LogLineTest, TheProcessIsTheLastComponentOfItsPath) {
  EXPECT_EQ(read(R"({"processImagePath":"/usr/sbin/audiomxd","eventMessage":"m"})"), "audiomxd: m");
  EXPECT_EQ(read(R"({"eventMessage":"m","processImagePath":"audiomxd"})"), "audiomxd: m");
  EXPECT_EQ(read(R"({"eventMessage":"m","processImagePath":"\/usr\/sbin\/audiomxd"})"), "audiomxd: m");
  EXPECT_EQ(read(R"({"eventMessage":"m","processImagePath":"/usr/sbin/"})"), ": m");
}

TEST_F(LogLineTest, AMissingPathIsAnEmptyProcess) {
  EXPECT_EQ(read(R"({"eventMessage":"m"})"), ": m");
  EXPECT_EQ(read(R"({"eventMessage":"m","processImagePath":7})"), ": m");
  EXPECT_EQ(read(R"({"eventMessage":"m","processImagePath":null})"), ": m");
}

TEST_F(LogLineTest, AMissingMessageIsNoLine) {
  EXPECT_EQ(read(R"({"processImagePath":"/usr/sbin/audiomxd"})"), "(none)");
  EXPECT_EQ(read(R"({"processImagePath":"/usr/sbin/audiomxd","eventMessage":["m"]})"), "(none)");
  EXPECT_EQ(read(R"({})"), "(none)");
}

TEST_F(LogLineTest, ATextThatIsNotAnObjectIsNoLine) {
  for (const auto* line :
       {"", " ", "null", "\"eventMessage\"", "[{\"eventMessage\":\"m\"}]", "7", "Filtering the log data", "}"})
    EXPECT_EQ(read(line), "(none)") << line;
}

TEST_F(LogLineTest, OtherMembersOfAnyTypeAreIgnored) {
  EXPECT_EQ(
      read(R"( { "a" : {"eventMessage":"inner"} , "b":[1,[2,{}]], "eventMessage" : "m" , "c":null,"d":-1.5e9 } )"),
      ": m");
}

TEST_F(LogLineTest, ANumberMayBeAsLargeAsJsonAllows) {
  for (const char* number :
       {"18446744073709551616", "-9223372036854775809", "1e400", "-1E-400", "0.5e+1", "1e999999999",
        "123456789012345678901234567890.5", "[1e400,-0,{\"a\":99999999999999999999}]"}) {
    EXPECT_EQ(read(R"({"machTimestamp":)" + std::string(number) + R"(,"eventMessage":"at 1e400 \"-01"})"),
              ": at 1e400 \"-01")
        << number;
  }
}

TEST_F(LogLineTest, ANumberThatIsNoneMakesTheLineBroken) {
  for (const char* number :
       {"01", "1.", ".5", "1e", "1e+", "-", "+1", "1.5.2", "1-2", "0x10", "NaN", "-Infinity", "1 2"})
    EXPECT_FALSE(wellFormed(R"({"eventMessage":"m","big":1e400,"n":)" + std::string(number) + "}")) << number;
}

TEST_F(LogLineTest, TheLastOfARepeatedMemberCounts) {
  EXPECT_EQ(read(R"({"eventMessage":"first","eventMessage":"second"})"), ": second");
  EXPECT_EQ(read(R"({"eventMessage":"first","eventMessage":2})"), "(none)");
  EXPECT_EQ(read(R"({"eventMessage":1,"eventMessage":"second"})"), ": second");
}

TEST_F(LogLineTest, EscapesAreReadInKeysAndValues) {
  EXPECT_EQ(read(R"({"event\u004dessage":"a\"b\\c\n\u00e5\ud83d\ude00"})"), ": a\"b\\c\nå😀");
  EXPECT_EQ(read(R"({"eventMessage\u0000":"x","eventMessage":"m"})"), ": m");
  EXPECT_EQ(read(R"({"eventMessage":"a\u0000b"})"), std::string(": a\0b", 5));
}

TEST_F(LogLineTest, BrokenLinesAreNotWellFormed) {
  const std::string whole = R"({"processImagePath":"/x/usernoted","eventMessage":"m","n":[1,2,{"k":true}]})";
  ASSERT_TRUE(wellFormed(whole));
  for (std::size_t length = 0; length < whole.size(); ++length) EXPECT_FALSE(wellFormed(whole.substr(0, length)));
  for (const auto* tail : {"x", "}", "{}", ",", "\"\""}) EXPECT_FALSE(wellFormed(whole + tail)) << tail;
  for (const auto* line :
       {R"({"eventMessage":"m","n":nul})", R"({"eventMessage":"m","n":01})", R"({"eventMessage":"m",})",
        R"({"eventMessage":"m" "n":1})", R"({eventMessage:"m"})", R"(["eventMessage"])", R"("eventMessage")"})
    EXPECT_FALSE(wellFormed(line)) << line;
}

TEST_F(LogLineTest, TextThatIsNotUtf8IsNotWellFormed) {
  EXPECT_FALSE(wellFormed("{\"eventMessage\":\"\xff\"}"));
  EXPECT_FALSE(wellFormed("{\"eventMessage\":\"\xc0\x80\"}"));
  EXPECT_FALSE(wellFormed("{\"eventMessage\":\"\xed\xa0\x80\"}"));
  EXPECT_FALSE(wellFormed(R"({"eventMessage":"\ud800"})"));
}

TEST_F(LogLineTest, RawControlCharactersAndNulsAreNotWellFormed) {
  EXPECT_FALSE(wellFormed(std::string_view("{\"eventMessage\":\"a\0b\"}", 22)));
  EXPECT_FALSE(wellFormed("{\"eventMessage\":\"a\tb\"}"));
  EXPECT_FALSE(wellFormed(std::string_view("{\"eventMessage\":\"ab\"}\0", 22)));
}

TEST_F(LogLineTest, DeepNestingIsRefused) {
  const std::string deep(1'000'000, '[');
  EXPECT_FALSE(wellFormed(R"({"eventMessage":"m","d":)" + deep + std::string(1'000'000, ']') + "}"));
  EXPECT_FALSE(wellFormed(R"({"eventMessage":"m","d":)" + deep));
  EXPECT_TRUE(wellFormed(R"({"eventMessage":"m","d":[[[[[[[[[[]]]]]]]]]]})"));
}

TEST_F(LogLineTest, AVeryLongLineIsReadAndTheNextOneToo) {
  const std::string message(3'000'000, 'x');
  EXPECT_EQ(read(R"({"eventMessage":")" + message + "\"}"), ": " + message);
  EXPECT_EQ(read(R"({"eventMessage":"m"})"), ": m");
}

}  // namespace
}  // namespace tollvane
