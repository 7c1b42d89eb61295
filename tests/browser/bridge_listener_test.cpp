#include "browser/bridge_listener.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <fstream>

#include "platform/posix/posix_files.h"
#include "tests/browser/bridge_fixture.h"

namespace tollvane {
namespace {

using testing::IsEmpty;
using testing::SizeIs;
using namespace std::chrono_literals;

using BridgeListenerTest = BridgeSocketTest;

TEST_F(BridgeListenerTest, OnlyTheUserCanUseTheSocket) {
  link->start();
  struct stat status {};
  ASSERT_EQ(::stat(path().c_str(), &status), 0);
  EXPECT_TRUE(S_ISSOCK(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(BridgeListenerTest, ASocketThatACrashLeftBehindIsReplaced) {
  {
    const UniqueFd stale(::socket(AF_UNIX, SOCK_STREAM, 0));
    const sockaddr_un address = addressOf(path());
    ASSERT_EQ(::bind(stale.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  link->start();
  EXPECT_TRUE(Bridge(path()).connected);
}

TEST_F(BridgeListenerTest, AFileInTheSocketsPlaceIsReplaced) {
  std::ofstream(path()) << "not a socket";
  link->start();
  EXPECT_TRUE(Bridge(path()).connected);
}

TEST_F(BridgeListenerTest, TheLastLinkThatStartsHearsTheBrowsers) {
  link->start();
  const Bridge early = connect();
  BrowserLink second = test::makeLink(system, paths);
  second.start();
  const Bridge late = connect();
  EXPECT_THAT(second.connections, SizeIs(1));
  EXPECT_THAT(link->connections, SizeIs(1));
  early.write("{\"type\":\"hello\"}\n");
  system.queue.drainDescriptors();
  EXPECT_THAT(early.read(), testing::StartsWith("{")) << "connections that are made stay";
  second.stop();
}

TEST_F(BridgeListenerTest, ASocketWhoseOwnerHangsIsTakenOver) {
  const UniqueFd hung(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_un address = addressOf(path());
  ASSERT_EQ(::bind(hung.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(hung.get(), 1), 0);
  link->start();
  connect();
  EXPECT_THAT(link->connections, SizeIs(1));
}

TEST_F(BridgeListenerTest, IfTheHomeCanHoldNoSocketBridgesComeThroughThatOfThisComputer) {
  system.locations.runtime = directory.path() / "run";
  std::filesystem::create_directories(directory.path() / "run/Tollvane");
  std::filesystem::remove(directory.path() / "Tollvane");
  std::ofstream(directory.path() / "Tollvane") << "not a folder";
  link->start();
  EXPECT_FALSE(Bridge(path()).connected);
  const Bridge bridge(directory.path() / "run/Tollvane/bridge.sock");
  EXPECT_TRUE(bridge.connected);
  system.queue.drainDescriptors();
  EXPECT_THAT(link->connections, SizeIs(1));
}

TEST_F(BridgeListenerTest, AHomeThatNeverCanHoldTheSocketIsTriedLessAndLessOften) {
  std::filesystem::remove(directory.path() / "Tollvane");
  std::ofstream(directory.path() / "Tollvane") << "not a folder";
  link->start();
  system.queue.advance(BridgeListener::retryDelay);
  std::filesystem::remove(directory.path() / "Tollvane");
  std::filesystem::create_directories(directory.path() / "Tollvane");
  system.queue.advance(BridgeListener::retryDelay);
  EXPECT_FALSE(Bridge(path()).connected);
  system.queue.advance(BridgeListener::retryDelay);
  EXPECT_TRUE(Bridge(path()).connected);
}

// The socket is there, but nobody on this computer listens.
TEST_F(BridgeListenerTest, IfAnotherComputerHasTakenTheHomesSocketBridgesComeThroughThatOfThisComputer) {
  system.locations.runtime = directory.path() / "run";
  std::filesystem::create_directories(directory.path() / "run/Tollvane");
  link->start();
  std::filesystem::remove(path());
  {
    const UniqueFd elsewhere(::socket(AF_UNIX, SOCK_STREAM, 0));
    const sockaddr_un address = addressOf(path());
    ASSERT_EQ(::bind(elsewhere.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  EXPECT_FALSE(Bridge(path()).connected);
  const std::string local = directory.path() / "run/Tollvane/bridge.sock";
  EXPECT_TRUE(Bridge(local).connected);
  link->stop();
  EXPECT_FALSE(std::filesystem::exists(local));
  EXPECT_TRUE(std::filesystem::exists(path())) << "it is not ours";
}

TEST_F(BridgeListenerTest, ASocketThatVanishesIsMadeAgain) {
  link->start();
  std::filesystem::remove(path());
  system.queue.directoryChanged(directory.path() / "Tollvane");
  EXPECT_FALSE(Bridge(path()).connected);
  system.queue.advance(BridgeListener::settling);
  connect();
  EXPECT_THAT(link->connections, SizeIs(1));
}

TEST_F(BridgeListenerTest, AFolderThatVanishesIsMadeAgain) {
  PosixFiles files;
  const auto folder = directory.path() / "Tollvane";
  const auto elsewhere = directory.path() / "elsewhere";
  BridgeListener listener(system.queue, files);
  listener.open(path());
  const auto remove = [&] { std::filesystem::remove_all(folder); };
  const auto move = [&] { std::filesystem::rename(folder, elsewhere); };
  for (const std::function<void()>& vanish : {std::function<void()>(remove), std::function<void()>(move)}) {
    vanish();
    system.queue.directoryChanged(folder);
    system.queue.advance(BridgeListener::settling);
    EXPECT_TRUE(Bridge(path()).connected);
  }
}

TEST_F(BridgeListenerTest, AFolderThatCannotBeMadeIsTriedAgain) {
  link->start();
  std::filesystem::remove_all(directory.path() / "Tollvane");
  system.queue.directoryChanged(directory.path() / "Tollvane");
  system.queue.advance(BridgeListener::settling);
  EXPECT_FALSE(std::filesystem::exists(path()));
  std::filesystem::create_directories(directory.path() / "Tollvane");
  system.queue.advance(BridgeListener::retryDelay);
  EXPECT_TRUE(Bridge(path()).connected);
}

TEST_F(BridgeListenerTest, ASocketThatWasReplacedIsMadeAgainWhenItsOwnerQuits) {
  link->start();
  BrowserLink second = test::makeLink(system, paths);
  second.start();
  system.queue.directoryChanged(directory.path() / "Tollvane");
  system.queue.advance(1min);
  system.queue.drainDescriptors();
  EXPECT_THAT(second.connections, SizeIs(1)) << "the first link waits for the end of the second";
  second.stop();
  system.queue.drainDescriptors();
  system.queue.advance(BridgeListener::settling);
  connect();
  EXPECT_THAT(link->connections, SizeIs(1));
}

TEST_F(BridgeListenerTest, ASocketThatWasReplacedIsMadeAgainWhenItsOwnerCrashes) {
  link->start();
  std::filesystem::remove(path());
  UniqueFd other(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_un address = addressOf(path());
  ASSERT_EQ(::bind(other.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(other.get(), 16), 0);
  system.queue.directoryChanged(directory.path() / "Tollvane");
  system.queue.advance(1min);
  EXPECT_TRUE(std::filesystem::exists(path()));
  other.reset();  // its file stays
  system.queue.drainDescriptors();
  system.queue.advance(BridgeListener::settling);
  connect();
  EXPECT_THAT(link->connections, SizeIs(1));
}

TEST_F(BridgeListenerTest, AStoppedLinkDoesNotComeBack) {
  link->start();
  std::filesystem::remove(path());
  system.queue.directoryChanged(directory.path() / "Tollvane");
  link->stop();
  system.queue.advance(1min);
  EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(BridgeListenerTest, ALongPathIsCutAtAHundredAndThreeBytes) {
  const std::filesystem::path deep = directory.path() / std::string(120, 'd');
  std::filesystem::create_directories(deep / "Tollvane");
  system.locations.support = deep;
  Paths longPaths(system.locations, system.files);
  BrowserLink deepLink = test::makeLink(system, longPaths);
  deepLink.start();
  const std::string cut = (deep / "Tollvane/bridge.sock").string().substr(0, 103);
  EXPECT_TRUE(Bridge(cut).connected);
  struct stat status {};
  ASSERT_EQ(::stat(cut.c_str(), &status), 0);
  EXPECT_TRUE(S_ISSOCK(status.st_mode));
}

// Sets the limit of this process's descriptors for as long as the object lives.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(rlim_t limit) {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit wanted{std::min(limit, before_.rlim_max), before_.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &wanted), 0);
  }
  ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &before_); }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;

 private:
  rlimit before_{};
};

TEST_F(BridgeListenerTest, AThousandBridgesAreHeard) {
  const DescriptorLimit enough(4096);  // both ends of each connection are in this process
  link->start();
  std::vector<Bridge> bridges;
  for (int i = 0; i < 1000; ++i) bridges.push_back(connect());
  for (const Bridge& bridge : bridges) bridge.write("{\"type\":\"audible\"}\n");
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, SizeIs(1000));
  bridges.clear();
  system.queue.drainDescriptors();
  EXPECT_THAT(link->connections, IsEmpty());
  EXPECT_EQ(changes, 1000);
}

TEST_F(BridgeListenerTest, ABridgeThatFindsNoFreeDescriptorIsAcceptedLater) {
#ifdef TOLLVANE_SANITIZED
  GTEST_SKIP() << "the sanitizer's checks of types need descriptors themselves";
#endif
  link->start();
  const Bridge waiting(path());
  ASSERT_TRUE(waiting.connected);
  {
    const DescriptorLimit none(static_cast<rlim_t>(waiting.fd()) + 1);
    system.queue.drainDescriptors();  // returns, although the bridge waits
    EXPECT_THAT(link->connections, IsEmpty());
  }
  system.queue.advance(1s);
  system.queue.drainDescriptors();
  EXPECT_THAT(link->connections, SizeIs(1));
}

TEST_F(BridgeListenerTest, StoppingClosesEverythingAndTakesTheSocketAway) {
  link->start();
  const Bridge bridge = connect();
  link->stop();
  EXPECT_TRUE(bridge.closed());
  EXPECT_FALSE(std::filesystem::exists(path()));
  EXPECT_FALSE(Bridge(path()).connected);
}

TEST_F(BridgeListenerTest, WithoutASupportDirectoryThereIsNoListener) {
  system.locations.support = "/proc/no/such/place";
  Paths nowhere(system.locations, system.files);
  BrowserLink deaf = test::makeLink(system, nowhere);
  deaf.start();
  deaf.stop();
  EXPECT_THAT(deaf.connections, IsEmpty());
}

TEST_F(BridgeListenerTest, ProgramsStartedFromHereDoNotInheritTheSockets) {
  link->start();
  const Bridge bridge = connect();
  int counted = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    const int fd = std::stoi(entry.path().filename());
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISSOCK(status.st_mode) || fd == bridge.fd()) continue;
    ++counted;
    EXPECT_TRUE(::fcntl(fd, F_GETFD) & FD_CLOEXEC) << fd;
  }
  EXPECT_GE(counted, 2);
}

}  // namespace
}  // namespace tollvane
