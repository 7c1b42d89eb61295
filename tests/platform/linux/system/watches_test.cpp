// The main queue's watches, on real descriptors and directories.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <QCoreApplication>
#include <array>
#include <fstream>

#include "platform/linux/system/qt_main_queue.h"
#include "platform/posix/unique_fd.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_application.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

class WatchesTest : public testing::Test {
 protected:
  // Runs the event loop until `done()`, or until a long time has passed.
  void runUntil(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (!done() && std::chrono::steady_clock::now() < deadline)
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    EXPECT_TRUE(done());
  }
  // Runs everything that is due by now.
  void settle() {
    bool settled = false;
    queue.after(20ms, [&] { settled = true; });
    runUntil([&] { return settled; });
  }

  test::TestApplication application;
  QtMainQueue queue;
};

class SocketWatchTest : public WatchesTest {
 protected:
  SocketWatchTest() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    ours = UniqueFd(ends[0]);
    theirs = UniqueFd(ends[1]);
  }
  void readOne() {
    char byte = 0;
    EXPECT_EQ(::read(ours.get(), &byte, 1), 1);
  }

  UniqueFd ours, theirs;
};

TEST_F(SocketWatchTest, EachReadableByteIsReported) {
  int told = 0;
  const auto watch = queue.watchReadable(ours.get(), [&] {
    ++told;
    readOne();
  });
  ASSERT_EQ(::write(theirs.get(), "ab", 2), 2);
  runUntil([&] { return told == 2; });
  settle();
  EXPECT_EQ(told, 2);
}

TEST_F(SocketWatchTest, AWatchMayEndInsideItsOwnBlock) {
  int told = 0;
  std::unique_ptr<MainQueue::Watch> watch;
  watch = queue.watchReadable(ours.get(), [&, big = std::string(1000, 'x')] {
    ++told;
    watch.reset();
    EXPECT_EQ(big.size(), 1000u) << "what the block holds must live until it returns";
  });
  ASSERT_EQ(::write(theirs.get(), "ab", 2), 2);
  runUntil([&] { return told > 0; });
  settle();
  EXPECT_EQ(told, 1);
}

TEST_F(WatchesTest, AFileThatAppearsInADirectoryIsReported) {
  const test::TemporaryDirectory directory;
  int told = 0;
  const auto watch = queue.watchDirectory(directory.path(), [&] { ++told; });
  ASSERT_NE(watch, nullptr);
  std::ofstream(directory / "a") << "x";
  runUntil([&] { return told > 0; });
  settle();
  const int before = told;
  std::filesystem::rename(directory / "a", directory / "b");
  runUntil([&] { return told > before; });
}

TEST_F(WatchesTest, ADirectoryThatIsNotThereCannotBeWatched) {
  const test::TemporaryDirectory directory;
  EXPECT_EQ(queue.watchDirectory(directory / "nowhere", [] {}), nullptr);
  std::ofstream(directory / "file") << "x";
  EXPECT_EQ(queue.watchDirectory(directory / "file", [] {}), nullptr);
}

TEST_F(WatchesTest, ADirectoryWatchMayEndInsideItsOwnBlock) {
  const test::TemporaryDirectory directory;
  int told = 0;
  std::unique_ptr<MainQueue::Watch> watch;
  watch = queue.watchDirectory(directory.path(), [&] {
    ++told;
    watch.reset();
  });
  std::ofstream(directory / "a") << "x";
  std::ofstream(directory / "b") << "x";
  runUntil([&] { return told > 0; });
  settle();
  EXPECT_EQ(told, 1);
}

}  // namespace
}  // namespace tollvane
