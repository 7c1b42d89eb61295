#include <gtest/gtest.h>

#include <fstream>

#include "soundlog/connection/reconnector.h"
#include "tests/support/process.h"

namespace tollvane::soundlog {
namespace {

class SocketWatchTest : public ::testing::Test {
 protected:
  SocketWatchTest() {
    std::string name = (std::filesystem::temp_directory_path() / "tollvane-watch-XXXXXX").string();
    directory_ = mkdtemp(name.data());
    socket_ = directory_ / "run" / "pulse" / "native";
  }
  ~SocketWatchTest() override { std::filesystem::remove_all(directory_); }

  void make(const std::filesystem::path& file) { std::ofstream(file) << "x"; }

  // Handles everything that the kernel has reported by now.
  void settle() {
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
  }
  bool appears() {
    return test::waitUntil([this] {
      settle();
      return appeared_ > 0;
    });
  }

  std::filesystem::path directory_;
  std::filesystem::path socket_;
  int appeared_ = 0;
};

TEST_F(SocketWatchTest, ASocketThatIsMadeIsNoticed) {
  std::filesystem::create_directories(socket_.parent_path());
  const SocketWatch watch(socket_, [this] { ++appeared_; });
  make(socket_);
  EXPECT_TRUE(appears());
}

TEST_F(SocketWatchTest, ASocketThatIsMovedThereIsNoticed) {
  std::filesystem::create_directories(socket_.parent_path());
  make(directory_ / "other");
  const SocketWatch watch(socket_, [this] { ++appeared_; });
  std::filesystem::rename(directory_ / "other", socket_);
  EXPECT_TRUE(appears());
}

TEST_F(SocketWatchTest, ASocketWhoseDirectoriesAreMissingIsNoticed) {
  const SocketWatch watch(socket_, [this] { ++appeared_; });
  std::filesystem::create_directories(socket_.parent_path());
  make(socket_);
  EXPECT_TRUE(appears());
}

TEST_F(SocketWatchTest, ASocketWhoseDirectoriesAreMadeStepByStepIsNoticed) {
  const SocketWatch watch(socket_, [this] { ++appeared_; });
  for (const auto& step : {directory_ / "run", directory_ / "run" / "pulse"}) {
    std::filesystem::create_directory(step);
    settle();
  }
  EXPECT_EQ(appeared_, 0);
  make(socket_);
  EXPECT_TRUE(appears());
}

TEST_F(SocketWatchTest, OtherFilesAreNoSocket) {
  std::filesystem::create_directories(socket_.parent_path());
  const SocketWatch watch(socket_, [this] { ++appeared_; });
  make(socket_.parent_path() / "native.lock");
  make(directory_ / "run" / "else");
  settle();
  EXPECT_EQ(appeared_, 0);
  make(socket_);
  EXPECT_TRUE(appears());
}

TEST_F(SocketWatchTest, ADirectoryThatIsReplacedIsFollowed) {
  std::filesystem::create_directories(socket_.parent_path());
  const SocketWatch watch(socket_, [this] { ++appeared_; });
  std::filesystem::remove_all(directory_ / "run");
  settle();
  std::filesystem::create_directories(socket_.parent_path());
  make(socket_);
  EXPECT_TRUE(appears());
}

TEST_F(SocketWatchTest, ASocketThatIsMadeAnewIsNoticedAgain) {
  std::filesystem::create_directories(socket_.parent_path());
  const SocketWatch watch(socket_, [this] { ++appeared_; });
  make(socket_);
  ASSERT_TRUE(appears());
  std::filesystem::remove(socket_);
  settle();
  appeared_ = 0;
  make(socket_);
  EXPECT_TRUE(appears());
}

TEST_F(SocketWatchTest, AFileInPlaceOfADirectoryIsNotExaminedForEver) {
  make(directory_ / "run");
  const SocketWatch watch(socket_, [this] { ++appeared_; });
  EXPECT_TRUE(watch.watching());
  std::filesystem::remove(directory_ / "run");
  std::filesystem::create_directories(socket_.parent_path());
  make(socket_);
  EXPECT_TRUE(appears());
}

}  // namespace
}  // namespace tollvane::soundlog
