// How a bridge finds its application, loses it and finds it again.
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/bridge/bridge_fixture.h"

namespace tollvane::test {
namespace {

class ReconnectionTest : public BridgeTest {};

TEST_F(ReconnectionTest, ARunningApplicationIsFoundAtOnce) {
  FakeApplication application(socket());
  RunningBridge bridge(dataHome());
  Wire connection = application.accept();
  EXPECT_TRUE(bridge.input.write(frame(hello)));
  expectIntroduced(bridge, connection);
}

TEST_F(ReconnectionTest, AnApplicationWhoseDirectoriesAreMissingIsFoundWhenItComes) {
  RunningBridge bridge(dataHome());
  EXPECT_TRUE(bridge.input.write(frame(audible) + frame(hello) + frame(audible)));
  EXPECT_TRUE(bridge.readsAll());
  FakeApplication application(socket());
  Wire connection = application.accept();
  expectIntroduced(bridge, connection);
}

TEST_F(ReconnectionTest, ASocketThatDoesNotListenYetIsTriedAgain) {
  std::filesystem::create_directories(socket().parent_path());
  RunningBridge bridge(dataHome());
  EXPECT_TRUE(bridge.input.write(frame(hello)));
  EXPECT_TRUE(bridge.readsAll());
  const UniqueFd listener = boundSocket(socket());
  // The bridge may or may not have tried to connect meanwhile; the test cannot see that. Both must end well.
  listen(listener.get(), 1);
  Wire connection(UniqueFd(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC)));
  expectIntroduced(bridge, connection);
}

TEST_F(ReconnectionTest, TheExtensionIsIntroducedToEachNewApplication) {
  RunningBridge bridge(dataHome());
  EXPECT_TRUE(bridge.input.write(frame(hello)));
  EXPECT_TRUE(bridge.readsAll());
  for (int i = 0; i < 5; ++i) {
    FakeApplication application(socket());
    Wire connection = application.accept();
    expectIntroduced(bridge, connection);
    EXPECT_TRUE(bridge.input.write(frame(audible)));
    EXPECT_EQ(connection.line(), audible);
  }
}

TEST_F(ReconnectionTest, AnApplicationThatClosesOnlyTheConnectionIsConnectedToAgain) {
  FakeApplication application(socket());
  RunningBridge bridge(dataHome());
  EXPECT_TRUE(bridge.input.write(frame(hello)));
  for (int i = 0; i < 3; ++i) {
    Wire connection = application.accept();
    expectIntroduced(bridge, connection);
  }
}

TEST_F(ReconnectionTest, ALineThatOneApplicationBeganNeverReachesTheBrowser) {
  RunningBridge bridge(dataHome());
  {
    FakeApplication application(socket());
    Wire connection = application.accept();
    EXPECT_TRUE(connection.write(line(settings) + R"({"type":"foc)"));
    EXPECT_EQ(bridge.output.frame(), settings);
  }
  FakeApplication application(socket());
  Wire connection = application.accept();
  EXPECT_TRUE(connection.write("us\"}\n" + line(settings)));
  EXPECT_EQ(bridge.output.frame(), settings);
  bridge.input.close();
  EXPECT_EQ(bridge.output.frame(), std::nullopt);
  EXPECT_TRUE(bridge.output.ends());
}

// The text of a member of a message, with the quotation marks of a text.
std::string member(const std::optional<std::string>& message, const std::string& name) {
  if (!message) return "no message";
  const auto begin = message->find("\"" + name + "\":");
  if (begin == std::string::npos) return "no " + name;
  const auto value = begin + name.size() + 3;
  return message->substr(value, message->find_first_of(",}", value) - value);
}

TEST_F(ReconnectionTest, TheExtensionIsToldWhenTheApplicationComesAndGoes) {
  RunningBridge bridge(dataHome());
  EXPECT_EQ(member(bridge.output.link(), "open"), "false");
  for (int i = 0; i < 3; ++i) {
    {
      FakeApplication application(socket());
      Wire connection = application.accept();
      EXPECT_EQ(member(bridge.output.link(), "open"), "true");
    }
    EXPECT_EQ(member(bridge.output.link(), "open"), "false");
  }
}

TEST_F(ReconnectionTest, TheExtensionIsToldWhichProcessTheBrowserIs) {
  FakeApplication application(socket());
  RunningBridge first(dataHome()), second(dataHome());
  const std::string browser = member(first.output.link(), "browser");
  EXPECT_NE(browser.find("-" + std::to_string(getpid()) + "-"), std::string::npos) << browser;
  EXPECT_EQ(member(second.output.link(), "browser"), browser);
  RunningBridge other(dataHome(), {.browser = directory / "browser"});
  const std::string another = member(other.output.link(), "browser");
  EXPECT_NE(another.find("-" + std::to_string(other.pid()) + "-"), std::string::npos) << another;
}

TEST_F(ReconnectionTest, AThousandApplicationsLeakNoDescriptor) {
  RunningBridge bridge(dataHome());
  EXPECT_TRUE(bridge.input.write(frame(hello)));
  EXPECT_TRUE(bridge.readsAll());
  std::size_t atFirst = 0;
  for (int i = 0; i < 1000 && !HasFailure(); ++i) {
    FakeApplication application(socket());
    Wire connection = application.accept();
    expectIntroduced(bridge, connection);
    if (i == 0) atFirst = bridge.descriptors();
    EXPECT_EQ(bridge.descriptors(), atFirst);
  }
}

class OtherEnvironmentTest : public BridgeTest {
 protected:
  std::filesystem::path besideSocket() const { return directory / "home/Tollvane/bridge.sock"; }

  RunningBridge::Options installed{.copy = directory / "home/Tollvane/bin/TollvaneBridge"};
};

TEST_F(OtherEnvironmentTest, AnApplicationBesideTheBridgeIsFound) {
  FakeApplication application(besideSocket());
  RunningBridge bridge(dataHome(), installed);
  EXPECT_EQ(application.accept().line(), introduction);
}

TEST_F(OtherEnvironmentTest, TheApplicationBesideTheBridgeComesFirstAndTheOtherOneAfterIt) {
  FakeApplication other(socket());
  std::optional<FakeApplication> beside(besideSocket());
  RunningBridge bridge(dataHome(), installed);
  Wire connection = beside->accept();
  EXPECT_EQ(connection.line(), introduction);
  beside.reset();
  connection.close();
  EXPECT_EQ(other.accept().line(), introduction);
}

TEST_F(OtherEnvironmentTest, AnApplicationThatComesLaterIsFoundInEitherPlace) {
  RunningBridge bridge(dataHome(), installed);
  for (const auto& place : {besideSocket(), socket(), besideSocket()}) {
    FakeApplication application(place);
    EXPECT_EQ(application.accept().line(), introduction) << place;
  }
}

TEST_F(OtherEnvironmentTest, AnApplicationWhoseHomeCanHoldNoSocketIsFoundInTheFolderOfThisComputer) {
  installed.variables = {{"XDG_RUNTIME_DIR", directory / "run"}};
  FakeApplication application(directory / "run/Tollvane/bridge.sock");
  RunningBridge bridge(dataHome(), installed);
  EXPECT_EQ(application.accept().line(), introduction);
}

TEST_F(OtherEnvironmentTest, AnApplicationOfAnotherUserBesideTheBridgeHearsNothing) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can be another user";
  std::filesystem::create_directories(besideSocket().parent_path());
  for (const auto& folder : {directory.path(), directory / "home", directory / "home/Tollvane"})
    std::filesystem::permissions(folder, std::filesystem::perms::all);
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t other = fork();
  if (other == 0) {
    if (setuid(65534) != 0) _exit(2);
    FakeApplication stranger(besideSocket());
    if (write(ready[1], "x", 1) != 1) _exit(3);
    Wire connection = stranger.accept();
    _exit(connection.ends() && connection.unread().empty() ? 0 : 1);
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  FakeApplication own(socket());
  RunningBridge bridge(dataHome(), installed);
  EXPECT_EQ(own.accept().line(), introduction);
  int status = -1;
  ASSERT_TRUE(waitUntil([&] { return waitpid(other, &status, WNOHANG) != 0; }));
  EXPECT_EQ(status, 0);
  close(ready[0]);
  close(ready[1]);
}

TEST_F(ReconnectionTest, ALongSocketPathIsCutAsTheApplicationCutsIt) {
  const std::filesystem::path deep = directory / std::string(103 - directory.path().native().size() - 14, 'd');
  const std::string whole = deep / "Tollvane" / "bridge.sock";
  ASSERT_GT(whole.size(), 103u);
  FakeApplication application(whole.substr(0, 103));
  const RunningBridge bridge(deep);
  EXPECT_EQ(application.accept().line(), introduction);
}

TEST_F(ReconnectionTest, AnApplicationOfAnotherUserHearsNothing) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can be another user";
  std::filesystem::permissions(directory.path(), std::filesystem::perms::all);
  std::filesystem::create_directories(socket().parent_path());
  std::filesystem::permissions(socket().parent_path(), std::filesystem::perms::all);
  const pid_t other = fork();
  if (other == 0) {
    // The exit code of the other user's process is the result: 0 if the bridge connected and left without a word.
    if (setuid(65534) != 0) _exit(2);
    FakeApplication stranger(socket());
    Wire connection = stranger.accept();
    _exit(connection.ends() && connection.unread().empty() ? 0 : 1);
  }
  ASSERT_TRUE(waitUntil([this] { return std::filesystem::exists(socket()); }));
  const RunningBridge bridge(dataHome());
  int status = -1;
  ASSERT_TRUE(waitUntil([&] { return waitpid(other, &status, WNOHANG) != 0; }));
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace tollvane::test
