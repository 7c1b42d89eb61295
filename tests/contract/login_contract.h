// What every implementation of LoginService must do. `System` makes one for a program that is not registered:
//
//   struct System {
//     LoginService& login;
//     void refuse();    // from now on the system allows no change
//     void turnOff();   // turns a registered program off, as the user can in the system's own settings
//   };
#pragma once

#include <gtest/gtest.h>

#include "platform/login_service.h"

namespace tollvane::test {

template <typename System>
class LoginContract : public ::testing::Test {
 protected:
  System system;
  LoginService& login = system.login;
};

TYPED_TEST_SUITE_P(LoginContract);

TYPED_TEST_P(LoginContract, AProgramIsEnabledOnceItIsRegisteredUntilItNoLongerIs) {
  EXPECT_EQ(this->login.status(), LoginStatus::notRegistered);
  EXPECT_EQ(this->login.registerApplication(AskedBy::program), std::nullopt);
  EXPECT_EQ(this->login.status(), LoginStatus::enabled);
  EXPECT_EQ(this->login.unregisterApplication(), std::nullopt);
  EXPECT_EQ(this->login.status(), LoginStatus::notRegistered);
}

TYPED_TEST_P(LoginContract, TheSameChangeTwiceIsNoFailure) {
  EXPECT_EQ(this->login.unregisterApplication(), std::nullopt);
  EXPECT_EQ(this->login.registerApplication(AskedBy::program), std::nullopt);
  EXPECT_EQ(this->login.registerApplication(AskedBy::program), std::nullopt);
  EXPECT_EQ(this->login.status(), LoginStatus::enabled);
}

TYPED_TEST_P(LoginContract, AProgramThatTheUserTurnedOffNeedsTheUsersApproval) {
  ASSERT_EQ(this->login.registerApplication(AskedBy::program), std::nullopt);
  this->system.turnOff();
  EXPECT_EQ(this->login.status(), LoginStatus::requiresApproval);
  EXPECT_EQ(this->login.registerApplication(AskedBy::program), std::nullopt);
  EXPECT_EQ(this->login.status(), LoginStatus::requiresApproval) << "only the user turns it on again";
}

TYPED_TEST_P(LoginContract, ARefusalHasAReasonAndChangesNothing) {
  this->system.refuse();
  const auto reason = this->login.registerApplication(AskedBy::program);
  ASSERT_TRUE(reason);
  EXPECT_FALSE(reason->empty());
  EXPECT_EQ(this->login.status(), LoginStatus::notRegistered);
}

REGISTER_TYPED_TEST_SUITE_P(LoginContract, AProgramIsEnabledOnceItIsRegisteredUntilItNoLongerIs,
                            TheSameChangeTwiceIsNoFailure, AProgramThatTheUserTurnedOffNeedsTheUsersApproval,
                            ARefusalHasAReasonAndChangesNothing);

}  // namespace tollvane::test
