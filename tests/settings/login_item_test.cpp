#include "settings/login_item.h"

#include <gtest/gtest.h>

#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

class LoginItemTest : public testing::Test {
 protected:
  LoginItemTest() {
    system.files.createDirectories(agent.parent_path());
    system.files.contents[agent] = "plist";
  }
  bool agentExists() const { return system.files.contents.contains(agent); }

  const std::filesystem::path agent = "/home/user/Library/LaunchAgents/com.vostrel.tollvane.plist";
  test::VirtualPlatform system;
  LoginItem item{system.login, system.files, system.locations};
};

TEST_F(LoginItemTest, IsEnabledExactlyIfTheStatusSaysSo) {
  for (const LoginStatus status :
       {LoginStatus::notRegistered, LoginStatus::enabled, LoginStatus::requiresApproval, LoginStatus::notFound}) {
    system.login.state = status;
    EXPECT_EQ(item.isEnabled(), status == LoginStatus::enabled);
  }
}

TEST_F(LoginItemTest, TheLegacyAgentIsInTheUsersLaunchAgents) { EXPECT_EQ(item.legacyAgent(), agent); }

TEST_F(LoginItemTest, MigrationPutsTheLoginItemInTheAgentsPlace) {
  item.migrateFromLegacyAgent();
  EXPECT_TRUE(item.isEnabled());
  EXPECT_FALSE(agentExists());
}

TEST_F(LoginItemTest, ARefusedMigrationLeavesTheAgent) {
  system.login.refusal = "no";
  item.migrateFromLegacyAgent();
  EXPECT_TRUE(agentExists());
}

TEST_F(LoginItemTest, TheAgentIsRemovedIfTheLoginItemIsEnabledAlready) {
  system.login.refusal = "no";
  system.login.state = LoginStatus::enabled;
  item.migrateFromLegacyAgent();
  EXPECT_FALSE(agentExists());
}

TEST_F(LoginItemTest, WithoutAnAgentNothingIsRegistered) {
  system.files.contents.clear();
  item.migrateFromLegacyAgent();
  EXPECT_EQ(system.login.changes, 0);
}

TEST_F(LoginItemTest, AnAgentThatCannotBeRemovedIsLeft) {
  system.files.readOnly = true;
  item.migrateFromLegacyAgent();
  EXPECT_TRUE(agentExists());
  EXPECT_TRUE(item.isEnabled());
}

}  // namespace
}  // namespace tollvane
