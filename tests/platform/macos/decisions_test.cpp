// Tests of what the roles on macOS decide.
#include "platform/macos/decisions/decisions.h"

#include <gtest/gtest.h>

namespace tollvane {
namespace {

class LogRefusalTest : public testing::Test {
 protected:
  LogRefusal refusal{"/usr/bin/log", [this] { ++timesTold; }};
  int timesTold = 0;
};

TEST_F(LogRefusalTest, TheUserIsToldOnceThatTheSystemLogMayNotBeRead) {
  EXPECT_TRUE(refusal.mayStart("/usr/bin/log"));
  refusal.ended("/usr/bin/log", 77);
  EXPECT_EQ(timesTold, 1);
  refusal.ended("/usr/bin/log", 77);
  EXPECT_EQ(timesTold, 1);
}

TEST_F(LogRefusalTest, AfterARefusalTheLogToolIsNotStartedAgain) {
  refusal.ended("/usr/bin/log", 77);
  EXPECT_FALSE(refusal.mayStart("/usr/bin/log"));
  EXPECT_TRUE(refusal.mayStart("/usr/bin/true"));
}

TEST_F(LogRefusalTest, AnyOtherEndIsNoRefusal) {
  for (const int status : {0, 1, 64, 76, 78}) refusal.ended("/usr/bin/log", status);
  refusal.ended("/usr/bin/true", 77);  // another program means something else by it
  EXPECT_EQ(timesTold, 0);
  EXPECT_TRUE(refusal.mayStart("/usr/bin/log"));
}

TEST(LoginDecisionsTest, EachStatusOfTheSystemHasItsMeaning) {
  EXPECT_EQ(loginStatus(0), LoginStatus::notRegistered);
  EXPECT_EQ(loginStatus(1), LoginStatus::enabled);
  EXPECT_EQ(loginStatus(2), LoginStatus::requiresApproval);
  EXPECT_EQ(loginStatus(3), LoginStatus::notFound);
  EXPECT_EQ(loginStatus(4), LoginStatus::notRegistered) << "of a later system";
}

TEST(LoginDecisionsTest, OnlyARegisteredProgramHasToBeUnregistered) {
  EXPECT_TRUE(isRegistered(LoginStatus::enabled));
  EXPECT_TRUE(isRegistered(LoginStatus::requiresApproval));
  EXPECT_FALSE(isRegistered(LoginStatus::notRegistered));
  EXPECT_FALSE(isRegistered(LoginStatus::notFound));
}

TEST(LoginDecisionsTest, OnlyAUserWhoAsksIsTakenToTheSystemsSettings) {
  EXPECT_TRUE(showsSystemSettings(LoginStatus::requiresApproval, AskedBy::user));
  EXPECT_FALSE(showsSystemSettings(LoginStatus::requiresApproval, AskedBy::program));
  EXPECT_FALSE(showsSystemSettings(LoginStatus::enabled, AskedBy::user));
}

TEST(LoginDecisionsTest, AnApplicationThatWasNotMovedAfterItsDownloadIsKnown) {
  EXPECT_TRUE(
      isTranslocated("/private/var/folders/x1/y/T/AppTranslocation/8A1F/d/Tollvane.app/Contents/MacOS/Tollvane"));
  EXPECT_FALSE(isTranslocated("/Applications/Tollvane.app/Contents/MacOS/Tollvane"));
  EXPECT_FALSE(isTranslocated(""));
}

TEST(ActivationTest, AnApplicationIsAskedAndThenOpenedUntilItIsTheActiveOne) {
  constexpr bool isActive = true, hasBundle = true, wasAsked = true;
  EXPECT_EQ(nextStep(!isActive, hasBundle, !wasAsked), ActivationStep::ask);
  EXPECT_EQ(nextStep(!isActive, hasBundle, wasAsked), ActivationStep::open);
  EXPECT_EQ(nextStep(isActive, hasBundle, !wasAsked), ActivationStep::none);
  EXPECT_EQ(nextStep(isActive, hasBundle, wasAsked), ActivationStep::none);
}

TEST(ActivationTest, AnApplicationWithoutABundleCannotBeOpened) {
  constexpr bool isActive = true, hasBundle = true, wasAsked = true;
  EXPECT_EQ(nextStep(!isActive, !hasBundle, !wasAsked), ActivationStep::ask);
  EXPECT_EQ(nextStep(!isActive, !hasBundle, wasAsked), ActivationStep::none);
}

TEST(ActivationTest, AProcessThatHasTheNumberOfAnEndedOneIsAnother) {
  EXPECT_TRUE(isSameProcess(7, 7));
  EXPECT_FALSE(isSameProcess(7, 8));
  EXPECT_FALSE(isSameProcess(7, 0)) << "the process has just ended";
  EXPECT_TRUE(isSameProcess(0, 8)) << "nobody knows when the one that is meant started";
}

TEST(AlertButtonsTest, TheAnswerNamesTheButton) {
  EXPECT_EQ(chosenButton(1000, 1000, 2), 0u);
  EXPECT_EQ(chosenButton(1001, 1000, 2), 1u);
}

TEST(AlertButtonsTest, AnyOtherAnswerIsTheLastButton) {
  for (const long answer : {-1001L, -1000L, 0L, 999L, 1002L}) EXPECT_EQ(chosenButton(answer, 1000, 2), 1u) << answer;
  EXPECT_EQ(chosenButton(-1001, 1000, 1), 0u);
  EXPECT_EQ(chosenButton(1000, 1000, 0), 0u);
}

TEST(AlertButtonsTest, EscapeIsTheLastButtonOfSeveral) {
  EXPECT_TRUE(takesEscape(1, 2));
  EXPECT_FALSE(takesEscape(0, 2));
  EXPECT_FALSE(takesEscape(0, 1)) << "which keeps Return";
}

}  // namespace
}  // namespace tollvane
