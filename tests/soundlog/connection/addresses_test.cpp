#include "soundlog/connection/addresses.h"

#include <gtest/gtest.h>

#include <map>

namespace tollvane::soundlog {
namespace {

Environment environment(std::map<std::string, std::string> values) {
  return [values = std::move(values)](const char* name) -> std::optional<std::string> {
    const auto found = values.find(name);
    if (found == values.end()) return std::nullopt;
    return found->second;
  };
}

TEST(Addresses, PipeWireListensInTheRuntimeDirectory) {
  EXPECT_EQ(pipeWireSocket(environment({{"XDG_RUNTIME_DIR", "/run/user/7"}, {"HOME", "/home/a"}})),
            "/run/user/7/pipewire-0");
  EXPECT_EQ(pipeWireSocket(environment({{"PIPEWIRE_RUNTIME_DIR", "/pw"}, {"XDG_RUNTIME_DIR", "/run/user/7"}})),
            "/pw/pipewire-0");
  EXPECT_EQ(pipeWireSocket(environment({})), std::nullopt);
}

TEST(Addresses, PipeWiresRemoteIsANameOrAPath) {
  EXPECT_EQ(pipeWireSocket(environment({{"XDG_RUNTIME_DIR", "/r"}, {"PIPEWIRE_REMOTE", "other"}})), "/r/other");
  EXPECT_EQ(pipeWireSocket(environment({{"PIPEWIRE_REMOTE", "/tmp/pw"}})), "/tmp/pw");
  EXPECT_EQ(pipeWireSocket(environment({{"XDG_RUNTIME_DIR", "/r"}, {"PIPEWIRE_REMOTE", ""}})), "/r/pipewire-0");
}

TEST(Addresses, PulseAudioListensBelowTheRuntimeDirectory) {
  EXPECT_EQ(pulseSocket(environment({{"XDG_RUNTIME_DIR", "/r"}})), "/r/pulse/native");
  EXPECT_EQ(pulseSocket(environment({{"PULSE_RUNTIME_PATH", "/p"}, {"XDG_RUNTIME_DIR", "/r"}})), "/p/native");
  EXPECT_EQ(pulseSocket(environment({})), std::nullopt);
}

TEST(Addresses, TheEnvironmentMayNamePulseAudiosServer) {
  EXPECT_EQ(pulseSocket(environment({{"PULSE_SERVER", "unix:/s"}, {"XDG_RUNTIME_DIR", "/r"}})), "/s");
  EXPECT_EQ(pulseSocket(environment({{"PULSE_SERVER", "/s"}})), "/s");
  EXPECT_EQ(pulseSocket(environment({{"PULSE_SERVER", "{0123abcd}unix:/s tcp:host"}})), "/s");
  EXPECT_EQ(pulseSocket(environment({{"PULSE_SERVER", "tcp:host"}, {"XDG_RUNTIME_DIR", "/r"}})), std::nullopt);
  EXPECT_EQ(pulseSocket(environment({{"PULSE_SERVER", "{broken"}})), std::nullopt);
}

TEST(Addresses, TheSessionBusIsInTheRuntimeDirectoryUnlessItIsNamed) {
  const auto usual = sessionBus(environment({{"XDG_RUNTIME_DIR", "/r"}}));
  ASSERT_TRUE(usual);
  EXPECT_EQ(usual->address, "unix:path=/r/bus");
  EXPECT_EQ(usual->socket, "/r/bus");
  EXPECT_FALSE(sessionBus(environment({})));
}

TEST(Addresses, ANamedBusIsFoundAgainAfterARestart) {
  const auto bus = sessionBus(environment({{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/a%20b/bus,guid=0123"}}));
  ASSERT_TRUE(bus);
  EXPECT_EQ(bus->address, "unix:path=/a%20b/bus");
  EXPECT_EQ(bus->socket, "/a b/bus");
}

TEST(Addresses, ServersOfOtherComputersAreToldFromLocalOnes) {
  EXPECT_TRUE(areLocal(environment({})));
  EXPECT_TRUE(areLocal(environment({{"PULSE_SERVER", "{abc}unix:/run/p  /run/q"},
                                    {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/run/bus;unix:abstract=/tmp/b"}})));
  for (const char* server : {"tcp:music.example", "music.example", "unix:/run/p tcp4:192.0.2.1"})
    EXPECT_FALSE(areLocal(environment({{"PULSE_SERVER", server}}))) << server;
  for (const char* bus : {"tcp:host=192.0.2.1,port=4000", "unix:path=/run/bus;nonce-tcp:host=192.0.2.1"})
    EXPECT_FALSE(areLocal(environment({{"DBUS_SESSION_BUS_ADDRESS", bus}}))) << bus;
}

TEST(Addresses, ABusOutsideTheFileSystemHasNoSocketToWaitFor) {
  const auto bus = sessionBus(environment({{"DBUS_SESSION_BUS_ADDRESS", "unix:abstract=/tmp/x,guid=1;tcp:host=a"}}));
  ASSERT_TRUE(bus);
  EXPECT_EQ(bus->address, "unix:abstract=/tmp/x;tcp:host=a");
  EXPECT_EQ(bus->socket, std::nullopt);
}

}  // namespace
}  // namespace tollvane::soundlog
