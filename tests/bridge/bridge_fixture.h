// What the tests of the running bridge share: a place for the application's socket, and the messages of both sides.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "bridge/frames.h"
#include "tests/bridge/fake_application.h"
#include "tests/bridge/running_bridge.h"
#include "tests/support/temporary_directory.h"

namespace tollvane::test {

using bridge::frame;

inline constexpr std::string_view introduction = R"({"type":"bridge"})";
inline constexpr std::string_view hello = R"({"type":"hello","version":"1.0"})";
inline constexpr std::string_view audible = R"({"type":"audible","tabId":7,"title":"a","host":"b"})";
inline constexpr std::string_view settings = R"({"markTabs":true,"type":"settings"})";

inline std::string line(std::string_view text) { return std::string(text) + "\n"; }

class BridgeTest : public ::testing::Test {
 protected:
  std::filesystem::path dataHome() const { return directory / "data"; }
  std::filesystem::path socket() const { return dataHome() / "Tollvane" / "bridge.sock"; }

  // Expects that a conversation begins as it must, in both directions.
  void expectIntroduced(RunningBridge& bridge, Wire& application) {
    EXPECT_EQ(application.line(), introduction);
    EXPECT_EQ(application.line(), hello);
    EXPECT_TRUE(application.write(line(settings)));
    EXPECT_EQ(bridge.output.frame(), settings);
  }

  TemporaryDirectory directory;
};

}  // namespace tollvane::test
