#include "bridge/relay.h"

#include <gtest/gtest.h>

namespace tollvane::bridge {
namespace {

constexpr std::string_view hello = R"({"type":"hello","version":"1.0"})";
constexpr std::string_view audible = R"({"type":"audible","tabId":7})";

std::string line(std::string_view text) { return std::string(text) + "\n"; }

class RelayTest : public ::testing::Test {
 protected:
  static std::string taken(Outbox& outbox) {
    std::string bytes(outbox.waiting());
    outbox.clear();
    return bytes;
  }
  std::string lines() { return taken(relay.toApplication); }
  std::string frames() { return taken(relay.toBrowser); }

  Relay relay{"INTRODUCTION"};
};

TEST_F(RelayTest, TheIntroductionComesFirst) {
  relay.connected();
  relay.fromBrowser(frame(audible));
  EXPECT_EQ(lines(), "INTRODUCTION\n" + line(audible));
}

TEST_F(RelayTest, TheLastHelloIsRepeatedAtEachConnection) {
  relay.fromBrowser(frame(R"({"type":"hello","version":"0.9"})") + frame(hello));
  for (int i = 0; i < 3; ++i) {
    relay.connected();
    EXPECT_EQ(lines(), "INTRODUCTION\n" + line(hello));
    relay.disconnected();
  }
}

TEST_F(RelayTest, AHelloThatWasPassedOnIsRepeatedLater) {
  relay.connected();
  relay.fromBrowser(frame(hello));
  EXPECT_EQ(lines(), "INTRODUCTION\n" + line(hello));
  relay.disconnected();
  relay.connected();
  EXPECT_EQ(lines(), "INTRODUCTION\n" + line(hello));
}

TEST_F(RelayTest, AHelloThatIsTooLongToRememberIsPassedOn) {
  relay.fromBrowser(frame(hello));
  relay.connected();
  lines();
  const std::string longHello = R"({"type":"hello","version":")" + std::string(Relay::longestHello, '1') + "\"}";
  relay.fromBrowser(frame(longHello));
  EXPECT_EQ(lines(), line(longHello));
  relay.disconnected();
  relay.connected();
  EXPECT_EQ(lines(), "INTRODUCTION\n" + line(hello));
}

TEST_F(RelayTest, OtherMessagesAreDroppedWithoutAnApplication) {
  relay.fromBrowser(frame(audible));
  relay.connected();
  EXPECT_EQ(lines(), "INTRODUCTION\n");
}

TEST_F(RelayTest, AMessageThatOneApplicationDidNotTakeIsNotSentToTheNext) {
  relay.connected();
  relay.fromBrowser(frame(audible));
  relay.disconnected();
  relay.connected();
  EXPECT_EQ(lines(), "INTRODUCTION\n");
}

TEST_F(RelayTest, NewlinesBetweenTokensDoNotEndTheLine) {
  relay.connected();
  lines();
  relay.fromBrowser(frame("{\n  \"type\": \"audible\",\r\n  \"title\": \"a\\nb\"\n}\n"));
  EXPECT_EQ(lines(), "{   \"type\": \"audible\",\r   \"title\": \"a\\nb\" } \n");
}

TEST_F(RelayTest, ARepeatedHelloIsOneLineToo) {
  relay.fromBrowser(frame("{\n\"type\":\"hello\"\n}"));
  relay.connected();
  EXPECT_EQ(lines(), "INTRODUCTION\n{ \"type\":\"hello\" }\n");
}

TEST_F(RelayTest, MalformedFramesAreDroppedAndTheNextIsRead) {
  relay.connected();
  lines();
  for (const auto* bad : {"", "x", "[]", "{}{}", "{\"a\":\"\xFF\"}", "{\"type\":\"focus\"}\n{\"type\":\"bridge\"}"})
    relay.fromBrowser(frame(bad));
  relay.fromBrowser(frame(audible));
  EXPECT_EQ(lines(), line(audible));
}

TEST_F(RelayTest, LinesBecomeFrames) {
  relay.connected();
  relay.fromApplication("{\"type\":\"settings\"}\n{\"type\":\"whichAudible\"}\n{\"type\"");
  EXPECT_EQ(frames(), frame(R"({"type":"settings"})") + frame(R"({"type":"whichAudible"})"));
  relay.fromApplication(":\"focus\"}\n");
  EXPECT_EQ(frames(), frame(R"({"type":"focus"})"));
}

TEST_F(RelayTest, TheBrowserNeverGetsAnythingButAnObject) {
  relay.connected();
  relay.fromApplication("\n\n \n[]\n7\nnonsense\n{\n}\n{}{}\n\xEF\xBB\xBF{}\n");
  relay.fromApplication(std::string_view("{}\0\n", 4));
  EXPECT_EQ(frames(), "");
  EXPECT_FALSE(relay.answered());
}

TEST_F(RelayTest, TheBrowserNeverGetsAMessageOverItsLimit) {
  const std::string begin = R"({"a":")";
  const std::string longest = begin + std::string(longestToBrowser - begin.size() - 2, 'x') + "\"}";
  ASSERT_EQ(longest.size(), 1'048'576u);
  relay.connected();
  relay.fromApplication(begin + "x" + longest.substr(begin.size()) + "\n");
  EXPECT_EQ(frames(), "");
  relay.fromApplication(longest + "\n");
  EXPECT_TRUE(frames() == frame(longest));
}

TEST_F(RelayTest, AnEndlessLineIsNotKept) {
  relay.connected();
  for (int i = 0; i < 100; ++i) relay.fromApplication(std::string(1'000'000, 'x'));
  relay.fromApplication("\n{}\n");
  EXPECT_EQ(frames(), frame("{}"));
}

TEST_F(RelayTest, ALineThatOneApplicationBeganIsNotEndedByTheNext) {
  relay.connected();
  relay.fromApplication("{\"type\":\"foc");
  relay.disconnected();
  relay.connected();
  relay.fromApplication("us\"}\n{\"type\":\"settings\"}\n");
  EXPECT_EQ(frames(), frame(R"({"type":"settings"})"));
}

TEST_F(RelayTest, AFrameThatTheBrowserBeganSurvivesTheConnection) {
  const std::string bytes = frame(audible);
  relay.connected();
  relay.fromBrowser(bytes.substr(0, 9));
  relay.disconnected();
  relay.connected();
  relay.fromBrowser(bytes.substr(9));
  EXPECT_EQ(lines(), "INTRODUCTION\n" + line(audible));
}

TEST_F(RelayTest, TheExtensionIsToldOnceOfEachChangeOfTheApplication) {
  relay.announce();
  relay.announce();
  EXPECT_EQ(frames(), frame(R"({"type":"link","open":false})"));
  relay.connected();
  relay.announce();
  relay.announce();
  EXPECT_EQ(frames(), frame(R"({"type":"link","open":true})"));
  relay.disconnected();
  relay.connected();
  relay.announce();
  EXPECT_EQ(frames(), "");
  relay.disconnected();
  relay.announce();
  EXPECT_EQ(frames(), frame(R"({"type":"link","open":false})"));
}

TEST_F(RelayTest, TheExtensionIsToldWhichProcessTheBrowserIs) {
  Relay known{"INTRODUCTION", "b00-77-4711"};
  known.connected();
  known.announce();
  EXPECT_EQ(taken(known.toBrowser), frame(R"({"type":"link","open":true,"browser":"b00-77-4711"})"));
}

TEST_F(RelayTest, AnApplicationHasAnsweredIfItSentALine) {
  relay.connected();
  EXPECT_FALSE(relay.answered());
  relay.fromApplication("{}\n");
  EXPECT_TRUE(relay.answered());
  relay.disconnected();
  EXPECT_FALSE(relay.answered());
}

}  // namespace
}  // namespace tollvane::bridge
