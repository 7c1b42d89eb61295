// Bytes in odd pieces, sides that do not read, and messages of every size.
#include <algorithm>
#include <cstdint>
#include <random>

#include "tests/bridge/bridge_fixture.h"

namespace tollvane::test {
namespace {

// If a bridge grows by more than this, it keeps memory that it should free.
#ifdef TOLLVANE_SANITIZED  // the sanitizer keeps freed memory for a while
constexpr std::size_t little = 1 << 30;
constexpr std::size_t longestHere = 4 << 20;  // sanitizers take too long for more
#else
constexpr std::size_t little = 4 << 20;
constexpr std::size_t longestHere = bridge::longestFromBrowser;
#endif

class PressureTest : public BridgeTest {
 protected:
  PressureTest() : application(socket()), bridge(dataHome()), connection(application.accept()) {
    EXPECT_EQ(connection.line(), introduction);
    baseline = bridge.residentBytes();
  }

  std::size_t grown() const { return bridge.residentBytes() - std::min(bridge.residentBytes(), baseline); }

  FakeApplication application;
  RunningBridge bridge;
  Wire connection;
  std::size_t baseline = 0;
};

std::string numbered(int number, std::size_t size) {
  return "{\"n\":" + std::to_string(number) + ",\"text\":\"" + std::string(size, 'x') + "\"}";
}

TEST_F(PressureTest, AFrameMayBeCutAtEachByte) {
  const std::string bytes = frame(audible);
  for (std::size_t cut = 1; cut < bytes.size(); ++cut) {
    ASSERT_TRUE(bridge.input.write(bytes.substr(0, cut)));
    ASSERT_TRUE(bridge.readsAll());
    ASSERT_TRUE(bridge.input.write(bytes.substr(cut)));
    ASSERT_EQ(connection.line(), audible) << cut;
  }
}

TEST_F(PressureTest, ALineMayBeCutAtEachByte) {
  const std::string bytes = line(settings);
  for (std::size_t cut = 1; cut < bytes.size(); ++cut) {
    ASSERT_TRUE(connection.write(bytes.substr(0, cut)));
    // When the report arrives, the bridge has read the first part of the line.
    ASSERT_TRUE(bridge.input.write(frame(audible)));
    ASSERT_EQ(connection.line(), audible);
    ASSERT_TRUE(connection.write(bytes.substr(cut)));
    ASSERT_EQ(bridge.output.frame(), settings) << cut;
  }
}

TEST_F(PressureTest, BytesMayComeOneByOne) {
  for (int i = 0; i < 20; ++i) {
    for (const char byte : frame(numbered(i, 20))) ASSERT_TRUE(bridge.input.write({&byte, 1}));
    for (const char byte : line(numbered(i, 20))) ASSERT_TRUE(connection.write({&byte, 1}));
  }
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(connection.line(), numbered(i, 20));
    EXPECT_EQ(bridge.output.frame(), numbered(i, 20));
  }
}

TEST_F(PressureTest, MessagesOfAllSizesKeepTheirOrder) {
  std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same sizes in each run
  std::uniform_int_distribution<std::size_t> shift(0, 17);
  for (int i = 0; i < 1000; ++i) {
    const std::string message = numbered(i, std::uint64_t{random()} >> (32 - shift(random)));
    ASSERT_TRUE(bridge.input.write(frame(message)));
    ASSERT_TRUE(connection.line() == message);
    ASSERT_TRUE(connection.write(line(message)));
    ASSERT_TRUE(bridge.output.frame() == message);
  }
}

TEST_F(PressureTest, TheLongestMessagePassesAndLeavesNothingBehind) {
  const std::string begin = R"({"a":")";
  const std::string longest = begin + std::string(longestHere - begin.size() - 2, 'x') + "\"}";
  // Written and read in turns, because neither side buffers that much.
  const std::string bytes = frame(longest);
  ASSERT_TRUE(bridge.input.write(bytes));
  const auto received = connection.line();
  ASSERT_TRUE(received.has_value());
  EXPECT_TRUE(*received == longest);
  ASSERT_TRUE(bridge.input.write(frame(audible)));
  EXPECT_EQ(connection.line(), audible);
  EXPECT_LT(grown(), little);
}

TEST_F(PressureTest, ABrowserThatDoesNotReadLosesNothingAndCostsNoMemory) {
  const std::string message = numbered(1, 1000);
  const std::string rest = connection.fill(line(message));
  EXPECT_LT(grown(), little);
  // The other direction still works.
  ASSERT_TRUE(bridge.input.write(frame(audible)));
  EXPECT_EQ(connection.line(), audible);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(bridge.output.frame(), message);
  ASSERT_TRUE(connection.write(rest + line(settings)));
  auto next = bridge.output.frame();
  while (next == message) next = bridge.output.frame();
  EXPECT_EQ(next, settings);
}

TEST_F(PressureTest, AnApplicationThatReadsLateLosesNothingAndCostsNoMemory) {
  const std::string message = numbered(1, 1000);
  const std::string rest = bridge.input.fill(frame(message));
  EXPECT_LT(grown(), little);
  ASSERT_TRUE(connection.write(line(settings)));
  EXPECT_EQ(bridge.output.frame(), settings);
  // The kernel wakes a process that waits for room in a socket only when most of the socket is free.
  for (int i = 0; i < 300; ++i) ASSERT_EQ(connection.line(), message);
  ASSERT_TRUE(bridge.input.write(rest + frame(audible)));
  auto next = connection.line();
  while (next == message) next = connection.line();
  EXPECT_EQ(next, audible);
}

TEST_F(PressureTest, TwoSidesThatDoNotReadCauseNoDeadlock) {
  const std::string message = numbered(1, 1000);
  const std::string restOfFrames = bridge.input.fill(frame(message));
  const std::string restOfLines = connection.fill(line(message));
  for (int i = 0; i < 300; ++i) ASSERT_EQ(connection.line(), message);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(bridge.output.frame(), message);
  ASSERT_TRUE(bridge.input.write(restOfFrames + frame(audible)));
  ASSERT_TRUE(connection.write(restOfLines + line(settings)));
  std::optional<std::string> next;
  while ((next = connection.line()) == message) {
  }
  EXPECT_EQ(next, audible);
  while ((next = bridge.output.frame()) == message) {
  }
  EXPECT_EQ(next, settings);
}

TEST_F(PressureTest, AnApplicationThatNeverReadsIsLeftAndConnectedToAgain) {
  ASSERT_TRUE(bridge.input.write(frame(hello)));
  EXPECT_EQ(connection.line(), hello);
  const std::string message = numbered(1, 1000);
  const std::string rest = bridge.input.fill(frame(message));
  Wire next = application.accept();
  expectIntroduced(bridge, next);
  // The old connection has ended, and the line that was not sent completely is dropped.
  EXPECT_TRUE(connection.ends());
  // The new connection gets whole lines only.
  ASSERT_TRUE(bridge.input.write(rest + frame(audible)));
  std::optional<std::string> heard;
  while ((heard = next.line()) == message) {
  }
  EXPECT_EQ(heard, audible);
}

TEST_F(PressureTest, TheBrowserMayCloseWhileTheApplicationDoesNotRead) {
  bridge.input.fill(frame(numbered(1, 1000)));
  bridge.input.close();
  EXPECT_EQ(bridge.exitCode(), 0);
}

TEST_F(PressureTest, TheBrowserMayCloseWhileItDoesNotRead) {
  connection.fill(line(numbered(1, 1000)));
  bridge.input.close();
  EXPECT_EQ(bridge.exitCode(), 0);
}

TEST_F(PressureTest, AnApplicationMayEndWhileTheBrowserDoesNotRead) {
  const std::string message = numbered(1, 1000);
  connection.fill(line(message));
  connection.close();
  Wire next;
  // The browser still gets what the first application sent, and then what the next one sends.
  for (int i = 0; i < 100; ++i) ASSERT_EQ(bridge.output.frame(), message);
  next = application.accept();
  EXPECT_EQ(next.line(), introduction);
  ASSERT_TRUE(next.write(line(settings)));
  std::optional<std::string> heard;
  while ((heard = bridge.output.frame()) == message) {
  }
  EXPECT_EQ(heard, settings);
}

}  // namespace
}  // namespace tollvane::test
