#include "platform/posix/outbox.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "platform/posix/unique_fd.h"

namespace tollvane {
namespace {

class OutboxTest : public ::testing::Test {
 protected:
  OutboxTest() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_NONBLOCK | O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    reader = UniqueFd(ends[0]);
    writer = UniqueFd(ends[1]);
    std::signal(SIGPIPE, SIG_IGN);
  }

  std::string read(std::size_t most) {
    std::string bytes(most, '\0');
    const ssize_t size = ::read(reader.get(), bytes.data(), most);
    bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return bytes;
  }

  UniqueFd reader, writer;
  Outbox outbox;
};

TEST_F(OutboxTest, MessagesAreSentInOrder) {
  outbox.push("one ");
  outbox.push("two");
  EXPECT_EQ(outbox.size(), 7u);
  EXPECT_TRUE(outbox.flush(writer.get()));
  EXPECT_TRUE(outbox.empty());
  EXPECT_EQ(read(100), "one two");
}

TEST_F(OutboxTest, AReaderThatTakesLittleGetsEveryByteOnce) {
  std::string expected, received;
  for (int i = 0; i < 3000; ++i) {
    std::string message = std::to_string(i) + std::string(static_cast<std::size_t>(i), 'x');
    expected += message;
    outbox.push(std::move(message));
    ASSERT_TRUE(outbox.flush(writer.get()));
    received += read(777);
  }
  while (received.size() < expected.size()) {
    ASSERT_TRUE(outbox.flush(writer.get()));
    received += read(4096);
  }
  EXPECT_TRUE(received == expected);
  EXPECT_TRUE(outbox.empty());
}

TEST_F(OutboxTest, AReaderThatIsGoneIsNoticed) {
  reader.reset();
  outbox.push("x");
  EXPECT_FALSE(outbox.flush(writer.get()));
}

TEST_F(OutboxTest, ClearedMessagesAreNeverSent) {
  outbox.push("old");
  outbox.clear();
  outbox.push("new");
  EXPECT_TRUE(outbox.flush(writer.get()));
  EXPECT_EQ(read(100), "new");
}

}  // namespace
}  // namespace tollvane
