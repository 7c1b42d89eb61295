#include "detect/resolver.h"

#include <gtest/gtest.h>

#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

class ResolverTest : public testing::Test {
 protected:
  // Makes the process `first` and `ancestors` ancestors, whose ids count down: the parent of 100 is 99.
  void makeChain(Pid first, int ancestors) {
    for (int i = 0; i < ancestors; ++i) processes.parents[first - i] = first - i - 1;
  }

  test::VirtualProcessTable processes;
  test::VirtualWorkspace workspace;
  test::VirtualLocations locations;
  test::VirtualFiles files;
  Resolver resolver{processes, workspace, locations, files};
};

TEST_F(ResolverTest, TheProcessItselfIsCreditedWhenItIsRegular) {
  workspace.addRunning(100, "Mail");
  EXPECT_EQ(resolver.appName(100, "mail-bin"), "Mail");
}

TEST_F(ResolverTest, AHelperIsCreditedToTheApplicationThatOwnsIt) {
  makeChain(100, 3);
  workspace.addRunning(100, "Web Content", ActivationPolicy::accessory);
  workspace.addRunning(98, "Firefox");
  EXPECT_EQ(resolver.appName(100, "firefox-helper"), "Firefox");
}

TEST_F(ResolverTest, SevenAncestorsAreExaminedAndNotTheEighth) {
  makeChain(100, 8);
  workspace.addRunning(92, "Eighth ancestor");
  EXPECT_EQ(resolver.appName(100, "player"), "player");
  workspace.addRunning(93, "Seventh ancestor");
  EXPECT_EQ(resolver.appName(100, "player"), "Seventh ancestor");
}

TEST_F(ResolverTest, NoMoreThanEightParentsAreAsked) {
  makeChain(100, 50);
  resolver.appName(100, "player");
  EXPECT_LE(processes.parentsAsked, 8);
}

TEST_F(ResolverTest, AProcessThatIsItsOwnParentEndsTheSearch) {
  processes.parents[100] = 100;
  EXPECT_EQ(resolver.appName(100, "player"), "player");
  EXPECT_EQ(processes.parentsAsked, 1);
}

TEST_F(ResolverTest, TheKernelAndTheFirstProcessAreNotCredited) {
  workspace.addRunning(1, "init");
  for (const Pid pid : {0, -1, -2147483647 - 1}) EXPECT_EQ(resolver.appName(pid, "afplay"), "Terminal sound (afplay)");
  EXPECT_EQ(resolver.regularApp(1), std::nullopt);
}

TEST_F(ResolverTest, TheFirstProcessIsCreditedOnlyByItsOwnName) {
  EXPECT_EQ(resolver.appName(1, "NotificationCent"), "Notification Center");
  EXPECT_EQ(resolver.appName(0, ""), "Unknown app");
}

TEST_F(ResolverTest, TheResponsibleProcessGoesFirst) {
  processes.responsible[100] = 50;
  workspace.addRunning(50, "Terminal");
  workspace.addRunning(100, "Player");
  EXPECT_EQ(resolver.appName(100, "player"), "Terminal");
}

TEST_F(ResolverTest, AResponsibleProcessThatIsNotRegularIsSkipped) {
  processes.responsible[100] = 50;
  workspace.addRunning(50, "Agent", ActivationPolicy::accessory);
  workspace.addRunning(100, "Player");
  EXPECT_EQ(resolver.appName(100, "player"), "Player");
}

TEST_F(ResolverTest, AResponsiblePidBelowOneMeansThatThereIsNone) {
  processes.responsible[100] = 0;
  processes.responsible[101] = -5;
  processes.responsible[102] = 1;
  EXPECT_EQ(resolver.responsiblePid(100), std::nullopt);
  EXPECT_EQ(resolver.responsiblePid(101), std::nullopt);
  EXPECT_EQ(resolver.responsiblePid(102), 1);
  EXPECT_EQ(resolver.responsiblePid(103), std::nullopt);
}

TEST_F(ResolverTest, AnAccessoryWithoutRegularOwnerKeepsItsOwnNameThroughTheTable) {
  workspace.addRunning(100, "screencapture", ActivationPolicy::accessory);
  workspace.addRunning(101, "Dock", ActivationPolicy::accessory);
  EXPECT_EQ(resolver.appName(100, "fallback"), "Screenshot");
  EXPECT_EQ(resolver.appName(101, "fallback"), "Dock");
}

TEST_F(ResolverTest, ARegularApplicationIsNotRenamedByTheTable) {
  workspace.addRunning(100, "imagent");
  EXPECT_EQ(resolver.appName(100, ""), "imagent");
}

TEST_F(ResolverTest, IfAnApplicationHasNoNameTheNextRuleDecides) {
  workspace.addRunning(100, std::nullopt);
  EXPECT_EQ(resolver.appName(100, "player"), "player");
}

TEST_F(ResolverTest, TheTableIsExactAndCaseSensitive) {
  const std::pair<const char*, const char*> rows[] = {
      {"afplay", "Terminal sound (afplay)"},
      {"osascript", "Script (osascript)"},
      {"NotificationCent", "Notification Center"},
      {"systemsoundserve", "macOS system sound"},
      {"imagent", "Messages"},
      {"PowerChime", "Charger chime"},
      {"screencapture", "Screenshot"},
      {"", "Unknown app"},
      {"NotificationCenter", "NotificationCenter"},
      {"Afplay", "Afplay"},
      {" ", " "},
  };
  for (const auto& [reported, shown] : rows) EXPECT_EQ(resolver.appName(4242, reported), shown);
}

TEST_F(ResolverTest, ABundleGetsTheNameOfItsFirstRunningApplication) {
  workspace.addRunning(100, "Mail", ActivationPolicy::accessory, "com.example.mail");
  workspace.addRunning(101, "Mail 2", ActivationPolicy::regular, "com.example.mail");
  workspace.installed["com.example.mail"] = "/Applications/Other.app";
  EXPECT_EQ(resolver.appName("com.example.mail"), "Mail");
}

TEST_F(ResolverTest, ABundleThatDoesNotRunGetsTheNameOfItsFileWithoutApp) {
  workspace.installed["com.example.mail"] = "/Applications/Mail.app";
  EXPECT_EQ(resolver.appName("com.example.mail"), "Mail");
  workspace.displayNames["/Applications/Mail.app"] = "My.apple Mail.app";
  EXPECT_EQ(resolver.appName("com.example.mail"), "Myle Mail");
}

TEST_F(ResolverTest, ARunningApplicationWithoutANameGetsTheNameOfItsFile) {
  workspace.addRunning(100, std::nullopt, ActivationPolicy::regular, "com.example.mail");
  workspace.installed["com.example.mail"] = "/Applications/Mail.app";
  EXPECT_EQ(resolver.appName("com.example.mail"), "Mail");
}

TEST_F(ResolverTest, AnUnknownBundleIsCalledByItsIdentifier) {
  EXPECT_EQ(resolver.appName("com.example.nobody"), "com.example.nobody");
}

TEST_F(ResolverTest, ApplicationsAreFoundInTheirFoldersInOrder) {
  files.directories["/home/user/Applications/Mail.app"] = true;
  EXPECT_EQ(resolver.appURL("Mail"), "/home/user/Applications/Mail.app");
  files.directories["/System/Applications/Utilities/Mail.app"] = true;
  EXPECT_EQ(resolver.appURL("Mail"), "/System/Applications/Utilities/Mail.app");
  files.directories["/System/Applications/Mail.app"] = true;
  EXPECT_EQ(resolver.appURL("Mail"), "/System/Applications/Mail.app");
  files.directories["/Applications/Mail.app"] = true;
  EXPECT_EQ(resolver.appURL("Mail"), "/Applications/Mail.app");
  EXPECT_EQ(resolver.appURL("mail"), std::nullopt);
  EXPECT_EQ(resolver.appURL(" Mail"), std::nullopt);
}

TEST_F(ResolverTest, ASystemWithoutSuchFoldersIsAskedByName) {
  workspace.displayNames["/usr/share/applications/mail.desktop"] = "Mail";
  EXPECT_EQ(resolver.appURL("Mail"), "/usr/share/applications/mail.desktop");
}

TEST_F(ResolverTest, TheMainProcessIsTheOneThatStartedTheApplicationsOthers) {
  processes.parents = {{30, 20}, {20, 10}, {10, 5}, {5, 1}};
  for (const Pid pid : {10, 20, 30}) workspace.addRunning(pid, "Browser");
  workspace.addRunning(5, "Terminal");
  for (const Pid pid : {10, 20, 30}) EXPECT_EQ(resolver.mainProcess(*resolver.regularApp(pid)).pid, 10);
}

}  // namespace
}  // namespace tollvane
