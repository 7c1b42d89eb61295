// Tests of what the roles on macOS decide.
#include <gtest/gtest.h>

#include "catalogue/browsers.h"
#include "platform/macos/decisions/activation.h"
#include "platform/macos/decisions/alert_buttons.h"
#include "platform/macos/decisions/log_refusal.h"
#include "platform/macos/decisions/login.h"
#include "platform/macos/decisions/manifest_folders.h"
#include "platform/macos/decisions/web_address.h"

namespace tollvane {
namespace {

TEST(LogRefusalTest, TheUserIsToldOnceThatTheSystemLogMayNotBeRead) {
  LogRefusal refusal("/usr/bin/log");
  EXPECT_TRUE(refusal.mayStart("/usr/bin/log"));
  EXPECT_TRUE(refusal.ended("/usr/bin/log", 77));
  EXPECT_FALSE(refusal.ended("/usr/bin/log", 77));
}

TEST(LogRefusalTest, AfterARefusalTheLogToolIsNotStartedAgain) {
  LogRefusal refusal("/usr/bin/log");
  refusal.ended("/usr/bin/log", 77);
  EXPECT_FALSE(refusal.mayStart("/usr/bin/log"));
  EXPECT_TRUE(refusal.mayStart("/usr/bin/true"));
}

TEST(LogRefusalTest, AnyOtherEndIsNoRefusal) {
  LogRefusal refusal("/usr/bin/log");
  for (const int status : {0, 1, 64, 76, 78}) EXPECT_FALSE(refusal.ended("/usr/bin/log", status)) << status;
  EXPECT_FALSE(refusal.ended("/usr/bin/true", 77)) << "another program means something else by it";
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

TEST(ActivationTest, FromMacOS14OnTollvaneLetsTheApplicationComeForward) {
  const ActivationTarget running{.isRunning = true, .hasBundle = true};
  EXPECT_EQ(activationSteps(running, true), (std::vector{ActivationStep::yieldAndActivate, ActivationStep::open}));
  EXPECT_EQ(activationSteps(running, false),
            (std::vector{ActivationStep::activateIgnoringOthers, ActivationStep::open}));
}

TEST(ActivationTest, AnApplicationWithoutABundleCannotBeOpened) {
  EXPECT_EQ(activationSteps({.isRunning = true}, true), std::vector{ActivationStep::yieldAndActivate});
}

TEST(ActivationTest, NothingIsTriedForAnApplicationThatHasEnded) {
  EXPECT_TRUE(activationSteps({.isRunning = false, .hasBundle = true}, true).empty());
  EXPECT_TRUE(activationSteps({.isRunning = true, .isSame = false, .hasBundle = true}, true).empty())
      << "another process has its number";
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

TEST(WebAddressTest, OnlyHttpsIsAskedExceptOnThisComputer) {
  EXPECT_TRUE(mayAsk("https", "tollvane.example"));
  EXPECT_FALSE(mayAsk("http", "tollvane.example"));
  for (const char* host : {"localhost", "127.0.0.1", "::1"}) EXPECT_TRUE(mayAsk("http", host)) << host;
  for (const char* scheme : {"file", "ftp", ""}) EXPECT_FALSE(mayAsk(scheme, "localhost")) << scheme;
}

TEST(WebAddressTest, NamesThatNeverExistAreNotAsked) {
  EXPECT_FALSE(mayAsk("https", "tollvane.invalid"));
  EXPECT_FALSE(mayAsk("https", ""));
}

TEST(WebAddressTest, ARedirectionThatWasNotFollowedIsNoAnswer) {
  for (const long status : {200L, 204L, 404L, 500L}) EXPECT_TRUE(isAnswer(status)) << status;
  for (const long status : {0L, 100L, 301L, 307L}) EXPECT_FALSE(isAnswer(status)) << status;
}

TEST(ManifestFoldersTest, EveryBrowserWithOurExtensionHasAFolderExceptSafari) {
  for (const BrowserEdition& edition : browserEditions()) {
    if (edition.family.empty()) continue;
    EXPECT_EQ(manifestFolder(edition.bundleID).empty(), edition.family == "safari") << edition.bundleID;
  }
}

TEST(ManifestFoldersTest, TheFoldersAreThoseOfTheBrowsersMakers) {
  EXPECT_EQ(manifestFolder("com.google.Chrome"), "Google/Chrome/NativeMessagingHosts");
  EXPECT_EQ(manifestFolder("com.brave.Browser"), "BraveSoftware/Brave-Browser/NativeMessagingHosts");
  EXPECT_EQ(manifestFolder("company.thebrowser.Browser"), "Arc/User Data/NativeMessagingHosts");
  EXPECT_EQ(manifestFolder("org.mozilla.nightly"), "Mozilla/NativeMessagingHosts");
  EXPECT_EQ(manifestFolder("com.example.Unknown"), "");
}

}  // namespace
}  // namespace tollvane
