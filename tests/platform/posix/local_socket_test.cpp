#include "platform/posix/local_socket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <string>

#include "tests/support/temporary_directory.h"

namespace tollvane {
namespace {

std::string received(const LocalStream& stream) {
  std::array<char, 64> buffer;
  std::string_view bytes;
  return stream.read(buffer.data(), buffer.size(), bytes) == LocalStream::Reading::some ? std::string(bytes) : "";
}

class LocalSocketTest : public ::testing::Test {
 protected:
  std::string path() const { return folder / "s"; }

  test::TemporaryDirectory folder;
};

TEST(SocketPathTest, IsCutAfter103Bytes) {
  for (const std::size_t length : {102U, 103U, 104U, 105U, 300U}) {
    const std::string path = "/" + std::string(length - 1, 'd');
    EXPECT_EQ(fittingSocketPath(path), path.substr(0, 103)) << length;
  }
}

TEST_F(LocalSocketTest, BothEndsFindEachOtherUnderAPathThatIsTooLong) {
  const std::string path = (folder / std::string(200, 'd')).string();
  const LocalListener listener = LocalListener::at(path);
  ASSERT_TRUE(listener);
  EXPECT_TRUE(LocalStream::to(path));
}

TEST_F(LocalSocketTest, WhatOneEndSendsTheOtherReads) {
  const LocalListener listener = LocalListener::at(path());
  const LocalStream one = LocalStream::to(path());
  const LocalStream other = listener.accept().stream;
  ASSERT_TRUE(one);
  ASSERT_TRUE(other);
  std::array<char, 8> buffer;
  std::string_view bytes;
  EXPECT_EQ(other.read(buffer.data(), buffer.size(), bytes), LocalStream::Reading::nothingYet);
  EXPECT_EQ(one.send("hello"), 5U);
  EXPECT_EQ(received(other), "hello");
  EXPECT_EQ(other.send("you"), 3U);
  EXPECT_EQ(received(one), "you");
}

TEST_F(LocalSocketTest, BothReaderAndWriterAreToldThatTheOtherEndIsGone) {
  const LocalListener listener = LocalListener::at(path());
  LocalStream one = LocalStream::to(path());
  const LocalStream other = listener.accept().stream;
  one.close();
  std::array<char, 8> buffer;
  std::string_view bytes;
  EXPECT_EQ(other.read(buffer.data(), buffer.size(), bytes), LocalStream::Reading::ended);
  EXPECT_EQ(other.send("lost"), std::nullopt) << "and no signal may end this process";
}

TEST_F(LocalSocketTest, OnlyBytesThatFitAreSent) {
  const LocalListener listener = LocalListener::at(path());
  const LocalStream one = LocalStream::to(path());
  const LocalStream other = listener.accept().stream;
  const std::string much(8 << 20, 'x');
  const auto sent = one.send(much);
  ASSERT_TRUE(sent);
  EXPECT_GT(*sent, 0U);
  EXPECT_LT(*sent, much.size());
  EXPECT_EQ(one.send("x"), 0U);
  while (!received(other).empty()) {
  }
  EXPECT_EQ(one.send("x"), 1U);
}

TEST_F(LocalSocketTest, AConnectionWithoutAListenerFails) {
  EXPECT_FALSE(LocalStream::to(path()));
  folder.write("s", "a file");
  EXPECT_FALSE(LocalStream::to(path()));
}

TEST_F(LocalSocketTest, TheFileIsForTheUserOnlyAndGoesWithTheListener) {
  LocalListener listener = LocalListener::at(path());
  struct stat status {};
  ASSERT_EQ(::stat(path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  listener.close();
  EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(LocalSocketTest, AFileThatACrashLeftBehindIsReplaced) {
  {
    LocalListener crashed = LocalListener::at(path());
    std::filesystem::rename(path(), folder / "kept");
  }
  std::filesystem::rename(folder / "kept", path());
  EXPECT_TRUE(LocalListener::at(path()));
}

TEST_F(LocalSocketTest, ASecondListenerTakesThePathAndTheFirstKnows) {
  const LocalListener first = LocalListener::at(path());
  EXPECT_EQ(first.standing(), LocalListener::Standing::own);
  LocalListener second = LocalListener::at(path());
  EXPECT_EQ(first.standing(), LocalListener::Standing::replaced);
  const LocalStream stream = LocalStream::to(path());
  EXPECT_TRUE(second.accept().stream);
  EXPECT_FALSE(first.accept().stream);
  EXPECT_TRUE(isAnswered(path()));
  second.close();
  EXPECT_EQ(first.standing(), LocalListener::Standing::missing);
  EXPECT_FALSE(isAnswered(path()));
}

TEST_F(LocalSocketTest, AFileThatAnotherListenerMadeMeanwhileStays) {
  LocalListener first = LocalListener::at(path());
  std::filesystem::remove(path());
  const LocalListener second = LocalListener::at(path());
  first.close();
  EXPECT_TRUE(LocalStream::to(path()));
}

TEST_F(LocalSocketTest, NoDescriptorReachesStartedPrograms) {
  const LocalListener listener = LocalListener::at(path());
  const LocalStream one = LocalStream::to(path());
  const LocalStream other = listener.accept().stream;
  for (const int descriptor : {listener.descriptor(), one.descriptor(), other.descriptor()})
    EXPECT_TRUE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
}

}  // namespace
}  // namespace tollvane
