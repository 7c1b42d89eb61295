#include "soundlog/output_queue.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>

#include "platform/posix/unique_fd.h"

namespace tollvane::soundlog {
namespace {

struct Ends {
  UniqueFd reader, writer;
};

Ends makePipe() {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

Ends makeSockets() {
  std::array<int, 2> ends{};
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

// Everything that the reader can read now.
std::string drain(const UniqueFd& reader) {
  const int flags = fcntl(reader.get(), F_GETFL);
  fcntl(reader.get(), F_SETFL, flags | O_NONBLOCK);
  std::string bytes;
  std::array<char, 4096> buffer{};
  ssize_t size = 0;
  while ((size = read(reader.get(), buffer.data(), buffer.size())) > 0) {
    bytes.append(buffer.data(), static_cast<std::size_t>(size));
  }
  return bytes;
}

OutputQueue::Line says(std::string line) {
  return [line = std::move(line)] { return line; };
}

std::string numbered(int number, std::size_t size = 100) {
  std::string line = std::to_string(number) + ' ';
  line.resize(size - 1, 'x');
  return line + '\n';
}

// Reads until nothing is left, and expects whole lines with growing numbers. Returns how many there were.
int readWholeLines(OutputQueue& queue, const UniqueFd& reader, int* last = nullptr) {
  std::string all = drain(reader);
  while (queue.pending()) {
    queue.flush();
    all += drain(reader);
  }
  int count = 0;
  int previous = -1;
  for (std::size_t at = 0; at < all.size(); ++count) {
    const std::size_t end = all.find('\n', at);
    const int number = std::stoi(all.substr(at));
    EXPECT_EQ(all.substr(at, end + 1 - at), numbered(number, end + 1 - at));
    EXPECT_GT(number, previous);
    previous = number;
    at = end + 1;
  }
  if (last) *last = previous;
  return count;
}

class OutputQueueTest : public ::testing::Test {
 protected:
  void SetUp() override { std::signal(SIGPIPE, SIG_IGN); }
};

TEST_F(OutputQueueTest, ALineIsWrittenAtOnce) {
  const Ends ends = makePipe();
  OutputQueue queue(ends.writer.get());
  queue.push(says("one\n"));
  EXPECT_FALSE(queue.pending());
  EXPECT_EQ(drain(ends.reader), "one\n");
}

TEST_F(OutputQueueTest, AReaderThatStopsReadingBlocksNothingAndLosesNothing) {
  const Ends ends = makePipe();
  OutputQueue queue(ends.writer.get());
  for (int i = 0; i < 500; ++i) queue.push(says(numbered(i)));
  EXPECT_TRUE(queue.pending());
  int last = 0;
  EXPECT_EQ(readWholeLines(queue, ends.reader, &last), 500);
  EXPECT_EQ(last, 499);
}

TEST_F(OutputQueueTest, BeyondTheLimitTheOldestLinesAreDroppedWhole) {
  const Ends ends = makePipe();
  OutputQueue queue(ends.writer.get(), 100);
  for (int i = 0; i < 1000; ++i) {
    queue.push(says(numbered(i)));
    ASSERT_LE(queue.size(), 100u);
  }
  int last = 0;
  const int count = readWholeLines(queue, ends.reader, &last);
  EXPECT_EQ(last, 999) << "the newest line is kept";
  EXPECT_EQ(count, 101) << "the lines in the queue and the one in the pipe";
}

TEST_F(OutputQueueTest, ALineThatIsHalfReadIsNeverDropped) {
  const Ends ends = makeSockets();
  const int small = 4096;
  setsockopt(ends.writer.get(), SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
  OutputQueue queue(ends.writer.get(), 3);
  for (int i = 0; i < 300; ++i) queue.push(says(numbered(i, 9'999)));
  int last = 0;
  EXPECT_LT(readWholeLines(queue, ends.reader, &last), 300);
  EXPECT_EQ(last, 299);
}

TEST_F(OutputQueueTest, ALineIsComposedWhenTheReaderHasTakenTheOneBeforeIt) {
  const Ends ends = makePipe();
  OutputQueue queue(ends.writer.get());
  std::string truth = "then\n";
  const auto line = [&truth] { return truth; };
  queue.push(line);
  queue.push(line);
  queue.flush();
  truth = "now\n";
  EXPECT_EQ(drain(ends.reader), "then\n");
  queue.flush();
  EXPECT_EQ(drain(ends.reader), "now\n");
  EXPECT_FALSE(queue.pending());
}

TEST_F(OutputQueueTest, AReaderThatIsGoneIsNoticed) {
  Ends ends = makePipe();
  OutputQueue queue(ends.writer.get());
  ends.reader.reset();
  queue.push(says("one\n"));
  EXPECT_TRUE(queue.broken());
  EXPECT_FALSE(queue.pending());
  queue.push(says("two\n"));
  EXPECT_EQ(queue.size(), 0u);
}

TEST_F(OutputQueueTest, AReaderThatGoesWhileLinesWaitIsNoticed) {
  for (Ends (*make)() : {makePipe, makeSockets}) {
    Ends ends = make();
    OutputQueue queue(ends.writer.get());
    for (int i = 0; !queue.pending(); ++i) queue.push(says(numbered(i)));
    ends.reader.reset();
    queue.flush();
    EXPECT_TRUE(queue.broken());
  }
}

TEST_F(OutputQueueTest, TheDescriptorIsLeftAsItWas) {
  const Ends ends = makePipe();
  const int before = fcntl(ends.writer.get(), F_GETFL);
  OutputQueue queue(ends.writer.get());
  for (int i = 0; i < 1000; ++i) queue.push(says(numbered(i)));
  EXPECT_EQ(fcntl(ends.writer.get(), F_GETFL), before);
}

}  // namespace
}  // namespace tollvane::soundlog
