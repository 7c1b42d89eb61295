#include "bridge/application_sockets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tollvane::bridge {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ApplicationSocketsTest, TheOneBesideTheBridgeComesFirst) {
  EXPECT_THAT(applicationSockets("/home/me/.local/share/Tollvane/bin/TollvaneBridge", "/other"),
              ElementsAre("/home/me/.local/share/Tollvane/bridge.sock", "/other/Tollvane/bridge.sock"));
}

TEST(ApplicationSocketsTest, TwoWaysToTheSamePlaceAreOne) {
  EXPECT_THAT(applicationSockets("/data/Tollvane/bin/TollvaneBridge", "/data"),
              ElementsAre("/data/Tollvane/bridge.sock"));
}

TEST(ApplicationSocketsTest, WithoutAHomeTheOneBesideTheBridgeIsLeft) {
  EXPECT_THAT(applicationSockets("/data/Tollvane/bin/TollvaneBridge", std::nullopt),
              ElementsAre("/data/Tollvane/bridge.sock"));
  EXPECT_THAT(applicationSockets("/opt/Tollvane/TollvaneBridge", std::nullopt), IsEmpty());
}

TEST(ApplicationSocketsTest, BesideABridgeThatIsElsewhereThereIsNone) {
  for (const char* program : {"", "TollvaneBridge", "/TollvaneBridge", "/opt/Tollvane/TollvaneBridge",
                              "/usr/bin/TollvaneBridge", "/data/Tollvane/sbin/TollvaneBridge"})
    EXPECT_THAT(applicationSockets(program, "/data"), ElementsAre("/data/Tollvane/bridge.sock")) << program;
}

}  // namespace
}  // namespace tollvane::bridge
