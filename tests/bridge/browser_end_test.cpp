// How a bridge begins and ends with its browser.
#include <sys/types.h>

#include <csignal>
#include <fstream>

#include "tests/bridge/bridge_fixture.h"

namespace tollvane::test {
namespace {

class BrowserEndTest : public BridgeTest {};

pid_t onlyChildOf(pid_t parent) {
  pid_t child = 0;
  waitUntil([&] {
    const std::string text = std::to_string(parent);
    std::ifstream stream("/proc/" + text + "/task/" + text + "/children");
    return static_cast<bool>(stream >> child);
  });
  return child;
}

TEST_F(BrowserEndTest, ItEndsWhenTheBrowserClosesItsEnd) {
  RunningBridge bridge(dataHome());
  bridge.input.close();
  EXPECT_EQ(bridge.exitCode(), 0);
  EXPECT_EQ(bridge.output.frame(), std::nullopt);
  EXPECT_TRUE(bridge.output.ends());
  EXPECT_EQ(bridge.output.unread(), "");
}

TEST_F(BrowserEndTest, ItEndsEvenIfAnApplicationIsConnected) {
  FakeApplication application(socket());
  RunningBridge bridge(dataHome());
  Wire connection = application.accept();
  EXPECT_EQ(connection.line(), introduction);
  bridge.input.close();
  EXPECT_EQ(bridge.exitCode(), 0);
  EXPECT_TRUE(connection.ends());
}

TEST_F(BrowserEndTest, WhatTheBrowserSaidLastIsStillPassedOn) {
  FakeApplication application(socket());
  RunningBridge bridge(dataHome());
  Wire connection = application.accept();
  EXPECT_EQ(connection.line(), introduction);
  EXPECT_TRUE(bridge.input.write(frame(audible)));
  bridge.input.close();
  EXPECT_EQ(connection.line(), audible);
}

TEST_F(BrowserEndTest, ItEndsWhenTheBrowserReadsNoMore) {
  RunningBridge bridge(dataHome());
  bridge.output.close();
  EXPECT_EQ(bridge.exitCode(), 0);
}

#ifndef TOLLVANE_SANITIZED
// The line of /proc that begins with this word and a colon, without them.
std::string statusOf(pid_t process, const std::string& word) {
  std::ifstream stream("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(stream, line);)
    if (line.starts_with(word + ":\t")) return line.substr(word.size() + 2);
  return "no " + word;
}

TEST_F(BrowserEndTest, ItHasGivenUpItsRightsBeforeItSpeaksToAnApplication) {
  FakeApplication application(socket());
  RunningBridge bridge(dataHome());
  Wire connection = application.accept();
  EXPECT_EQ(statusOf(bridge.pid(), "NoNewPrivs"), "1");
  EXPECT_EQ(statusOf(bridge.pid(), "Seccomp"), "2");
}
#endif

TEST_F(BrowserEndTest, ItEndsWithTheBrowserEvenIfOthersHoldItsPipesOpen) {
  FakeApplication application(socket());
  RunningBridge bridge(dataHome(), {.browser = directory / "browser"});
  Wire connection = application.accept();
  EXPECT_EQ(connection.line(), introduction);
  const pid_t itself = onlyChildOf(bridge.pid());
  ASSERT_GT(itself, 0);
  bridge.kill();
  EXPECT_TRUE(connection.ends());
  EXPECT_TRUE(bridge.output.ends());
  EXPECT_TRUE(waitUntil([&] {
    std::ifstream status("/proc/" + std::to_string(itself) + "/stat");
    std::string text;
    // Its new parent may not have reaped it yet.
    return !std::getline(status, text) || text.find(") Z ") != std::string::npos;
  }));
}

TEST_F(BrowserEndTest, ItNamesTheBrowserThatStartedIt) {
  FakeApplication application(socket());
  const RunningBridge bridge(dataHome(), {.browser = directory / "google/chrome/chrome"});
  EXPECT_EQ(application.accept().line(), R"({"type":"bridge","bundleID":"com.google.Chrome"})");
}

TEST_F(BrowserEndTest, ItUsesTheHintIfTheBrowserIsUnknown) {
  FakeApplication application(socket());
  const RunningBridge bridge(dataHome(), {.variables = {{"CHROME_DESKTOP", "chromium.desktop"}}});
  EXPECT_EQ(application.accept().line(), R"({"type":"bridge","bundleID":"org.chromium.Chromium"})");
}

TEST_F(BrowserEndTest, ADescriptorThatItInheritsIsNeitherReadNorClosed) {
  FakeApplication application(socket());
  RunningBridge bridge(dataHome(), {.arguments = {"/manifest.json", "tollvane@example.com"}, .strayDescriptor = true});
  Wire connection = application.accept();
  EXPECT_EQ(connection.line(), introduction);
  EXPECT_EQ(bridge.stray.line(std::chrono::milliseconds(0)), std::nullopt);
  EXPECT_TRUE(std::filesystem::exists("/proc/" + std::to_string(bridge.pid()) + "/fd/3"));
  bridge.input.close();
  EXPECT_TRUE(bridge.stray.ends());
  EXPECT_EQ(bridge.stray.unread(), "");
}

TEST_F(BrowserEndTest, ItRunsEvenIfTheDataDirectoryIsAFile) {
  std::filesystem::create_directories(dataHome().parent_path());
  std::ofstream(dataHome()) << "a file where a directory should be";
  RunningBridge bridge(dataHome());
  EXPECT_TRUE(bridge.input.write(frame(hello) + frame(audible)));
  EXPECT_TRUE(bridge.readsAll());
  bridge.input.close();
  EXPECT_EQ(bridge.exitCode(), 0);
}

}  // namespace
}  // namespace tollvane::test
