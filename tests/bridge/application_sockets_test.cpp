#include "bridge/application_sockets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tollvane::bridge {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ApplicationSocketsTest, TheOneBesideTheBridgeComesFirstAndThatOfThisComputerLast) {
  EXPECT_THAT(applicationSockets("/home/me/.local/share/Tollvane/bin/TollvaneBridge", "/other", "/run/me"),
              ElementsAre("/home/me/.local/share/Tollvane/bridge.sock", "/other/Tollvane/bridge.sock",
                          "/run/me/Tollvane/bridge.sock"));
}

TEST(ApplicationSocketsTest, WaysToTheSamePlaceAreOne) {
  EXPECT_THAT(applicationSockets("/data/Tollvane/bin/TollvaneBridge", "/data", "/data"),
              ElementsAre("/data/Tollvane/bridge.sock"));
}

TEST(ApplicationSocketsTest, WithoutAHomeTheOthersAreLeft) {
  EXPECT_THAT(applicationSockets("/data/Tollvane/bin/TollvaneBridge", std::nullopt, std::nullopt),
              ElementsAre("/data/Tollvane/bridge.sock"));
  EXPECT_THAT(applicationSockets("/opt/Tollvane/TollvaneBridge", std::nullopt, std::nullopt), IsEmpty());
  EXPECT_THAT(applicationSockets("/opt/Tollvane/TollvaneBridge", std::nullopt, "/run/me"),
              ElementsAre("/run/me/Tollvane/bridge.sock"));
}

TEST(ApplicationSocketsTest, BesideABridgeThatIsElsewhereThereIsNone) {
  for (const char* program : {"", "TollvaneBridge", "/TollvaneBridge", "/opt/Tollvane/TollvaneBridge",
                              "/usr/bin/TollvaneBridge", "/data/Tollvane/sbin/TollvaneBridge"}) {
    EXPECT_THAT(applicationSockets(program, "/data", std::nullopt), ElementsAre("/data/Tollvane/bridge.sock"))
        << program;
  }
}

}  // namespace
}  // namespace tollvane::bridge
