#include "bridge/application_socket.h"

#include <gtest/gtest.h>

#include <string>

namespace tollvane::bridge {
namespace {

TEST(ApplicationSocketTest, ItIsInTheApplicationsOwnDirectory) {
  EXPECT_EQ(applicationSocket("/home/u/.local/share"), "/home/u/.local/share/Tollvane/bridge.sock");
}

TEST(ApplicationSocketTest, APathIsCutAfter103Bytes) {
  const std::size_t rest = std::string("/Tollvane/bridge.sock").size();
  for (const std::size_t length : {102u, 103u, 104u, 105u, 300u}) {
    std::string data = "/";
    data.resize(length - rest, 'd');
    const std::string whole = data + "/Tollvane/bridge.sock";
    ASSERT_EQ(whole.size(), length);
    EXPECT_EQ(applicationSocket(data), whole.substr(0, 103)) << length;
  }
}

}  // namespace
}  // namespace tollvane::bridge
