#include "browser/bridge_connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/browser/bridge_fixture.h"

namespace tollvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::chrono_literals;

using BridgeConnectionTest = BridgeSocketTest;

TEST_F(BridgeConnectionTest, ABridgeIntroducesItsBrowserAndItsExtension) {
  link->start();
  const Bridge bridge = connect();
  EXPECT_THAT(link->connections, SizeIs(1));
  EXPECT_EQ(changes, 0);
  bridge.write("{\"type\":\"bridge\",\"bundleID\":\"org.mozilla.firefox\"}\n{\"type\":\"hello\",\"version\":\"1\"}\n");
  system.queue.drainDescriptors();
  EXPECT_TRUE(link->isConnected(Browser::firefox));
  EXPECT_EQ(bridge.read(), "{\"type\":\"settings\"}\n");
  EXPECT_EQ(changes, 2);
}

TEST_F(BridgeConnectionTest, ABridgeThatGoesAwayBeforeItsExtensionAnswersMakesTheTabUnreachableAtOnce) {
  link->start();
  Bridge bridge = connect();
  bridge.write("{\"type\":\"bridge\",\"bundleID\":\"org.mozilla.firefox\"}\n{\"type\":\"hello\"}\n");
  system.queue.drainDescriptors();
  std::vector<FocusResult> results;
  link->focus(7, Browser::firefox, [&](FocusResult result, auto) { results.push_back(result); });
  EXPECT_THAT(results, IsEmpty());
  bridge.close();
  system.queue.drainDescriptors();
  EXPECT_THAT(results, ElementsAre(FocusResult::unreachable));
}

TEST_F(BridgeConnectionTest, MessagesOfOneReadAreHandledInOrderAndASplitOneWhenItIsWhole) {
  link->start();
  const Bridge bridge = connect();
  bridge.write("{\"type\":\"audible\",\"tabId\":1}\n{\"type\":\"audible\",\"tabId\":2}\n{\"type\":\"aud");
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, SizeIs(2));
  bridge.write("ible\",\"tabId\":3}");
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, SizeIs(2));
  bridge.write("\n");
  system.queue.drainDescriptors();
  ASSERT_THAT(reports, SizeIs(3));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(reports[static_cast<std::size_t>(i)]["tabId"], i + 1);
}

TEST_F(BridgeConnectionTest, BrokenLinesAreDroppedAndLaterOnesHandled) {
  link->start();
  const Bridge bridge = connect();
  const std::string noise("\x00\xff\xfe{}\n", 6);
  bridge.write("no json\n\n[1,2]\n7\n\"text\"\nnull\n{\"type\":\n" + noise + std::string(1'000, '[') +
               "\n{\"type\":\"audible\"}\n");
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, SizeIs(1));
}

TEST_F(BridgeConnectionTest, AMillionNewlinesAreIgnored) {
  link->start();
  const Bridge bridge = connect();
  const std::string newlines(50'000, '\n');
  for (int i = 0; i < 20; ++i) {
    bridge.write(newlines);
    system.queue.drainDescriptors();
  }
  bridge.write("{\"type\":\"audible\"}\n");
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, SizeIs(1));
}

TEST_F(BridgeConnectionTest, ALineOfAMebibyteIsReadAndALongerOneDropped) {
  link->start();
  const Bridge bridge = connect();
  const auto write = [&](std::size_t titleSize) {
    const std::string line = "{\"type\":\"audible\",\"title\":\"" + std::string(titleSize, 'x') + "\"}\n";
    for (std::size_t at = 0; at < line.size(); at += 65536) {
      bridge.write(std::string_view(line).substr(at, 65536));
      system.queue.drainDescriptors();
    }
  };
  write((1 << 20) - 30);
  EXPECT_THAT(reports, SizeIs(1));
  write(1 << 20);
  EXPECT_THAT(reports, SizeIs(1));
  write(1);
  EXPECT_THAT(reports, SizeIs(2));
}

TEST_F(BridgeConnectionTest, FiveMegabytesOfOpenBracketsAreDropped) {
  link->start();
  const Bridge bridge = connect();
  const std::string brackets(50'000, '[');
  for (int i = 0; i < 100; ++i) {
    bridge.write(brackets);
    system.queue.drainDescriptors();
  }
  bridge.write("\n{\"type\":\"audible\",\"x\":" + std::string(1000, '[') + std::string(1000, ']') +
               "}\n{\"type\":\"audible\"}\n");
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, SizeIs(1));
}

TEST_F(BridgeConnectionTest, ABusyBridgeLeavesTheOthersTheirTurn) {
  link->start();
  const Bridge busy = connect();
  const Bridge calm = connect();
  std::string storm;
  for (int i = 0; i < 5000; ++i) storm += "{\"type\":\"audible\"}\n";
  busy.write(storm);
  calm.write("{\"type\":\"audible\",\"tabId\":7}\n");
  system.queue.pollDescriptors();
  EXPECT_LT(reports.size(), 400u);
  EXPECT_EQ(std::count_if(reports.begin(), reports.end(), [](const Message& each) { return each.contains("tabId"); }),
            1);
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, SizeIs(5001));
}

TEST_F(BridgeConnectionTest, ABridgeThatGoesIsForgottenAndReportedOnce) {
  link->start();
  Bridge first = connect();
  const Bridge second = connect();
  first.write("{\"type\":\"aud");  // mid-line
  first.close();
  system.queue.drainDescriptors();
  EXPECT_THAT(link->connections, SizeIs(1));
  EXPECT_EQ(changes, 1);
  system.queue.drainDescriptors();
  EXPECT_EQ(changes, 1);
  second.write("{\"type\":\"audible\"}\n");
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, SizeIs(1));
}

TEST_F(BridgeConnectionTest, WritingToABridgeThatHasGoneDoesNotEndTheProcess) {
  link->start();
  Bridge bridge = connect();
  bridge.close();
  link->connections[0]->send({{"type", "settings"}});
  link->connections[0]->send({{"type", "settings"}});
  system.queue.drainDescriptors();
  EXPECT_THAT(link->connections, IsEmpty());
}

TEST_F(BridgeConnectionTest, ABridgeThatReadsLateGetsEveryMessage) {
  link->start();
  const Bridge bridge = connect();
  const Message message = {{"type", "settings"}, {"filler", std::string(10'000, 'x')}};
  for (int i = 0; i < 80; ++i) link->connections[0]->send(message);
  std::string received;
  do {
    received += bridge.read();
  } while (system.queue.pollDescriptors() > 0);
  std::string expected;
  for (int i = 0; i < 80; ++i) expected += message.dump() + "\n";
  EXPECT_EQ(received.size(), expected.size());
  EXPECT_TRUE(received == expected);
  EXPECT_EQ(system.queue.pollDescriptors(), 0) << "nothing is watched for room that is not needed";
}

TEST_F(BridgeConnectionTest, ABridgeThatNeverReadsIsShutDownAndNeverGetsHalfAMessage) {
  link->start();
  const Bridge bridge = connect();
  const Message message = {{"type", "settings"}, {"filler", std::string(10'000, 'x')}};
  const std::string line = message.dump() + "\n";
  for (int i = 0; i < 1000; ++i) link->connections[0]->send(message);
  const std::string received = bridge.read();
  EXPECT_GT(received.size(), line.size());
  EXPECT_LT(received.size(), 1000 * line.size());
  for (std::size_t at = 0; at < received.size(); at += line.size())
    ASSERT_TRUE(line.starts_with(received.substr(at, line.size()))) << "nothing may follow half a message";
  EXPECT_TRUE(bridge.closed());
  system.queue.drainDescriptors();
  EXPECT_THAT(link->connections, IsEmpty());
  EXPECT_EQ(changes, 1);
}

TEST_F(BridgeConnectionTest, AStormOfHellosFromABridgeThatNeverReadsEndsThatBridgeOnly) {
  link->start();
  link->settings = [] { return Message{{"filler", std::string(100'000, 'x')}}; };
  const Bridge stormy = connect();
  const Bridge calm = connect();
  for (int i = 0; i < 100 && !stormy.closed(); ++i) {
    if (::send(stormy.fd(), "{\"type\":\"hello\"}\n", 17, MSG_NOSIGNAL) != 17) break;
    system.queue.drainDescriptors();
  }
  link->settings = [] { return Message::object(); };
  calm.write("{\"type\":\"hello\"}\n");
  system.queue.drainDescriptors();
  const std::string answers = stormy.read();
  EXPECT_LT(std::count(answers.begin(), answers.end(), '\n'), 100);
  EXPECT_TRUE(stormy.closed());
  EXPECT_EQ(calm.read(), "{\"type\":\"settings\"}\n");
  EXPECT_THAT(link->connections, SizeIs(1));
}

TEST_F(BridgeConnectionTest, ALinkThatEndsClosesItsConnectionsAndRemovesTheSocket) {
  link->start();
  const Bridge bridge = connect();
  link.reset();
  EXPECT_TRUE(bridge.closed());
  EXPECT_FALSE(std::filesystem::exists(path()));
  system.queue.drainDescriptors();
}

TEST_F(BridgeConnectionTest, AConnectionThatOutlivesTheLinkDoesNothing) {
  link->start();
  const Bridge bridge = connect();
  const auto connection = link->connections[0];
  link.reset();
  bridge.write("{\"type\":\"audible\"}\n");
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, IsEmpty());
}

}  // namespace
}  // namespace tollvane
