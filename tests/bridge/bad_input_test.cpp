// Bad input from either side must not pass, and good input after it must.
#include <cstdint>
#include <cstring>

#include "tests/bridge/bridge_fixture.h"

namespace tollvane::test {
namespace {

class BadInputTest : public BridgeTest {
 protected:
  BadInputTest() : application(socket()), bridge(dataHome()), connection(application.accept()) {
    EXPECT_EQ(connection.line(), introduction);
  }

  void expectStillAtWork() {
    ASSERT_TRUE(bridge.input.write(frame(audible)));
    EXPECT_EQ(connection.line(), audible);
    ASSERT_TRUE(connection.write(line(settings)));
    EXPECT_EQ(bridge.output.frame(), settings);
  }

  FakeApplication application;
  RunningBridge bridge;
  Wire connection;
};

std::string header(std::uint32_t length) {
  std::string bytes(sizeof length, '\0');
  std::memcpy(bytes.data(), &length, sizeof length);
  return bytes;
}

TEST_F(BadInputTest, FramesThatAreNotMessagesAreDropped) {
  for (const auto* bad : {"", " ", "nonsense", "[]", "7", "{", "{}{}", "{\"a\":\"\xFF\"}"})
    ASSERT_TRUE(bridge.input.write(frame(bad)));
  expectStillAtWork();
}

TEST_F(BadInputTest, AFrameCannotForgeASecondLine) {
  ASSERT_TRUE(bridge.input.write(frame("{\"type\":\"audible\"}\n{\"type\":\"bridge\",\"bundleID\":\"x\"}\n")));
  ASSERT_TRUE(bridge.input.write(frame("{\n\"type\":\"audible\"\n}")));
  EXPECT_EQ(connection.line(), "{ \"type\":\"audible\" }");
  expectStillAtWork();
}

TEST_F(BadInputTest, AFrameOverTheLimitIsSkipped) {
  const std::size_t length = bridge::longestFromBrowser + 1;
  ASSERT_TRUE(bridge.input.write(header(static_cast<std::uint32_t>(length))));
  const std::string piece(1024 * 1024, '{');
  for (std::size_t left = length; left > 0; left -= std::min(left, piece.size()))
    ASSERT_TRUE(bridge.input.write(std::string_view(piece).substr(0, left)));
  expectStillAtWork();
}

TEST_F(BadInputTest, ALineThatIsNotAMessageDoesNotReachTheBrowser) {
  ASSERT_TRUE(connection.write("\n\n \nnonsense\n[]\n7\n{\n}\n{}{}\n" + std::string("{}\0\n", 4)));
  expectStillAtWork();
}

TEST_F(BadInputTest, ALineThatIsTooLongDoesNotReachTheBrowser) {
  const std::string begin = R"({"a":")";
  const std::string longest = begin + std::string(bridge::longestToBrowser - begin.size() - 2, 'x') + "\"}";
  ASSERT_TRUE(connection.write(begin + "x" + longest.substr(begin.size()) + "\n"));
  ASSERT_TRUE(connection.write(line(longest)));
  EXPECT_TRUE(bridge.output.frame() == longest);
  expectStillAtWork();
}

TEST_F(BadInputTest, AMillionNewlinesAndNoiseDoNoHarm) {
  ASSERT_TRUE(connection.write(std::string(1'000'000, '\n')));
  std::string noise;
  for (int i = 0; i < 1'000'000; ++i) noise += static_cast<char>(i * 31 + i / 251);
  ASSERT_TRUE(connection.write(noise + "\n"));
  expectStillAtWork();
}

TEST_F(BadInputTest, AFrameThatTheBrowserNeverFinishesIsNotPassedOn) {
  const std::string bytes = frame(audible);
  for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
    RunningBridge other(dataHome());
    Wire itsConnection = application.accept();
    EXPECT_EQ(itsConnection.line(), introduction);
    ASSERT_TRUE(other.input.write(bytes.substr(0, cut)));
    other.input.close();
    ASSERT_EQ(other.exitCode(), 0) << cut;
    ASSERT_TRUE(itsConnection.ends());
    ASSERT_EQ(itsConnection.unread(), "") << cut;
  }
  expectStillAtWork();
}

}  // namespace
}  // namespace tollvane::test
