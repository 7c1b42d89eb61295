// The link's real socket, with bridges that behave and bridges that do not. The queue is the virtual one, which looks
// at the real descriptors.
#include "browser/bridge_socket.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <fstream>

#include "browser/browser_link.h"
#include "support/json_value.h"
#include "tests/support/temporary_directory.h"
#include "tests/virtual/core_parts.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::chrono_literals;

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, 103);
  return address;
}

// A bridge's end of the socket.
class Bridge {
 public:
  explicit Bridge(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_un address = addressOf(path);
    connected = ::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  explicit Bridge(UniqueFd socket) : connected(true), socket_(std::move(socket)) {}

  void write(std::string_view bytes) const {
    ASSERT_EQ(::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
  }
  // What has arrived by now.
  std::string read() const {
    std::string all;
    std::array<char, 65536> bytes;
    ssize_t size = 0;
    while ((size = ::recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT)) > 0)
      all.append(bytes.data(), static_cast<std::size_t>(size));
    return all;
  }
  bool closed() const {
    char byte = 0;
    return ::recv(socket_.get(), &byte, 1, MSG_DONTWAIT | MSG_PEEK) == 0;
  }
  void close() { socket_.reset(); }
  int fd() const { return socket_.get(); }

  bool connected = false;

 private:
  UniqueFd socket_;
};

class BridgeSocketTest : public testing::Test {
 protected:
  BridgeSocketTest() {
    system.locations.support = directory.path();
    std::filesystem::create_directories(directory.path() / "Tollvane");
    system.files.createDirectories(directory.path() / "Tollvane");
    link->onChange = [this] { ++changes; };
    link->onTab = [this](BrowserConnection&, const Message& report) { reports.push_back(report); };
  }
  std::string path() const { return directory.path() / "Tollvane/bridge.sock"; }
  Bridge connect() {
    Bridge bridge(path());
    EXPECT_TRUE(bridge.connected);
    system.queue.drainDescriptors();
    return bridge;
  }

  test::TemporaryDirectory directory;
  test::VirtualPlatform system;
  Paths paths{system.locations, system.files};
  std::unique_ptr<BrowserLink> link = std::unique_ptr<BrowserLink>(new BrowserLink(test::makeLink(system, paths)));
  int changes = 0;
  std::vector<Message> reports;
};

TEST_F(BridgeSocketTest, ABridgeIntroducesItsBrowserAndItsExtension) {
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

TEST_F(BridgeSocketTest, ABridgeThatGoesAwayBeforeItsExtensionAnswersMakesTheTabUnreachableAtOnce) {
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

TEST_F(BridgeSocketTest, TheSocketIsItsUsersOnly) {
  link->start();
  struct stat status {};
  ASSERT_EQ(::stat(path().c_str(), &status), 0);
  EXPECT_TRUE(S_ISSOCK(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(BridgeSocketTest, ASocketThatACrashLeftBehindIsReplaced) {
  {
    const UniqueFd stale(::socket(AF_UNIX, SOCK_STREAM, 0));
    const sockaddr_un address = addressOf(path());
    ASSERT_EQ(::bind(stale.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  link->start();
  EXPECT_TRUE(Bridge(path()).connected);
}

TEST_F(BridgeSocketTest, AFileInTheSocketsPlaceIsReplaced) {
  std::ofstream(path()) << "not a socket";
  link->start();
  EXPECT_TRUE(Bridge(path()).connected);
}

TEST_F(BridgeSocketTest, ASocketThatIsAnsweredIsNotTakenFromItsOwner) {
  link->start();
  BrowserLink second = test::makeLink(system, paths);
  second.start();
  const Bridge bridge = connect();
  EXPECT_THAT(second.connections, IsEmpty());
  // The first link saw the second one's question and the bridge.
  bridge.write("{\"type\":\"hello\"}\n");
  system.queue.drainDescriptors();
  EXPECT_THAT(bridge.read(), testing::StartsWith("{"));
  second.stop();
  EXPECT_TRUE(std::filesystem::exists(path()));
}

TEST_F(BridgeSocketTest, ALongPathIsCutAtAHundredAndThreeBytes) {
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

TEST_F(BridgeSocketTest, MessagesOfOneReadAreHandledInOrderAndASplitOneWhenItIsWhole) {
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

TEST_F(BridgeSocketTest, BrokenLinesAreDroppedAndLaterOnesHandled) {
  link->start();
  const Bridge bridge = connect();
  const std::string noise("\x00\xff\xfe{}\n", 6);
  bridge.write("no json\n\n[1,2]\n7\n\"text\"\nnull\n{\"type\":\n" + noise + std::string(1'000, '[') +
               "\n{\"type\":\"audible\"}\n");
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, SizeIs(1));
}

TEST_F(BridgeSocketTest, AMillionNewlinesAreNothing) {
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

TEST_F(BridgeSocketTest, ALineOfSixtyFourMebibytesIsRead) {
  link->start();
  const Bridge bridge = connect();
  const std::string piece(64 * 1024, 'x');
  bridge.write("{\"type\":\"audible\",\"title\":\"");
  for (int i = 0; i < 1024; ++i) {
    bridge.write(piece);
    system.queue.drainDescriptors();
  }
  bridge.write("\"}\n");
  system.queue.drainDescriptors();
  ASSERT_THAT(reports, SizeIs(1));
  EXPECT_EQ(reports[0]["title"].get<std::string>().size(), 64u << 20);
}

TEST_F(BridgeSocketTest, ABridgeThatGoesIsForgottenAndToldOfOnce) {
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

TEST_F(BridgeSocketTest, WritingToABridgeThatHasGoneKillsNobody) {
  link->start();
  Bridge bridge = connect();
  bridge.close();
  link->connections[0]->send({{"type", "settings"}});
  link->connections[0]->send({{"type", "settings"}});
  system.queue.drainDescriptors();
  EXPECT_THAT(link->connections, IsEmpty());
}

TEST_F(BridgeSocketTest, ABridgeThatNeverReadsIsShutDownAndNeverGetsHalfAMessage) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
  const Bridge bridge{UniqueFd(ends[1])};
  const auto connection = std::make_shared<BridgeConnection>(LocalStream(UniqueFd(ends[0])), 20ms);
  bool closed = false;
  connection->onClosed = [&] { closed = true; };
  connection->startReading(system.queue);
  const Message message = {{"type", "settings"}, {"filler", std::string(10'000, 'x')}};
  const std::string line = message.dump() + "\n";
  for (int i = 0; i < 1000; ++i) connection->send(message);
  const std::string received = bridge.read();
  EXPECT_GT(received.size(), line.size());
  EXPECT_LT(received.size(), 1000 * line.size());
  for (std::size_t at = 0; at < received.size(); at += line.size())
    ASSERT_TRUE(line.starts_with(received.substr(at, line.size()))) << "behind half a message nothing may come";
  EXPECT_TRUE(bridge.closed());
  system.queue.drainDescriptors();
  EXPECT_TRUE(closed);
}

TEST_F(BridgeSocketTest, AStormOfHellosFromABridgeThatNeverReadsEndsThatBridgeOnly) {
  link->writePatience = 20ms;
  link->start();
  const Bridge stormy = connect();
  const Bridge calm = connect();
  std::string hellos;
  for (int i = 0; i < 1000; ++i) hellos += "{\"type\":\"hello\"}\n";
  stormy.write(hellos);
  calm.write("{\"type\":\"hello\"}\n");
  system.queue.drainDescriptors();
  const std::string answers = stormy.read();
  EXPECT_LT(std::count(answers.begin(), answers.end(), '\n'), 1000);
  EXPECT_TRUE(stormy.closed());
  EXPECT_EQ(calm.read(), "{\"type\":\"settings\"}\n");
  EXPECT_THAT(link->connections, SizeIs(1));
}

// As many descriptors as a test needs, until it ends.
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

TEST_F(BridgeSocketTest, AThousandBridgesAreHeard) {
  const DescriptorLimit enough(4096);  // both ends are this process's
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

TEST_F(BridgeSocketTest, WhoFindsNoRoomInTheProcessIsLetInLater) {
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

TEST_F(BridgeSocketTest, StoppingClosesEverythingAndTakesTheSocketAway) {
  link->start();
  const Bridge bridge = connect();
  link->stop();
  EXPECT_TRUE(bridge.closed());
  EXPECT_FALSE(std::filesystem::exists(path()));
  EXPECT_FALSE(Bridge(path()).connected);
}

TEST_F(BridgeSocketTest, ALinkThatEndsLeavesNothingBehind) {
  link->start();
  const Bridge bridge = connect();
  link.reset();
  EXPECT_TRUE(bridge.closed());
  EXPECT_FALSE(std::filesystem::exists(path()));
  system.queue.drainDescriptors();
}

TEST_F(BridgeSocketTest, AConnectionThatOutlivesTheLinkDoesNothing) {
  link->start();
  const Bridge bridge = connect();
  const auto connection = link->connections[0];
  link.reset();
  bridge.write("{\"type\":\"audible\"}\n");
  system.queue.drainDescriptors();
  EXPECT_THAT(reports, IsEmpty());
}

TEST_F(BridgeSocketTest, WithoutASupportDirectoryThereIsNoListener) {
  system.locations.support = "/proc/no/such/place";
  Paths nowhere(system.locations, system.files);
  BrowserLink deaf = test::makeLink(system, nowhere);
  deaf.start();
  deaf.stop();
  EXPECT_THAT(deaf.connections, IsEmpty());
}

TEST_F(BridgeSocketTest, ProgramsStartedFromHereDoNotInheritTheSockets) {
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
