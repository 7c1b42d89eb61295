// A place for an application's socket, and the words that both sides say.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "bridge/frames.h"
#include "fake_application.h"
#include "running_bridge.h"
#include "support/temporary_directory.h"

namespace tollvane::test {

using bridge::frame;

inline constexpr std::string_view kIntroduction = R"({"type":"bridge"})";
inline constexpr std::string_view kHello = R"({"type":"hello","version":"1.0"})";
inline constexpr std::string_view kAudible = R"({"type":"audible","tabId":7,"title":"a","host":"b"})";
inline constexpr std::string_view kSettings = R"({"markTabs":true,"type":"settings"})";

inline std::string line(std::string_view text) { return std::string(text) + "\n"; }

class BridgeTest : public ::testing::Test {
 protected:
  std::filesystem::path dataHome() const { return directory / "data"; }
  std::filesystem::path socket() const { return dataHome() / "Tollvane" / "bridge.sock"; }

  // Whether the conversation begins as it must, in both directions.
  void expectIntroduced(RunningBridge& bridge, Wire& application) {
    EXPECT_EQ(application.line(), kIntroduction);
    EXPECT_EQ(application.line(), kHello);
    EXPECT_TRUE(application.write(line(kSettings)));
    EXPECT_EQ(bridge.output.frame(), kSettings);
  }

  TemporaryDirectory directory;
};

}  // namespace tollvane::test
