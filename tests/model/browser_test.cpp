#include "model/browser.h"

#include <gtest/gtest.h>

#include "catalogue/browsers.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

TEST(BrowserTest, AllBrowsersAreListedInOrderWithTheirNames) {
  struct Row {
    Browser::Case browser;
    std::string_view rawValue, bundleID, appName;
  };
  const Row rows[] = {
      {Browser::chrome, "chrome", "com.google.Chrome", "Google Chrome"},
      {Browser::edge, "edge", "com.microsoft.edgemac", "Microsoft Edge"},
      {Browser::brave, "brave", "com.brave.Browser", "Brave Browser"},
      {Browser::arc, "arc", "company.thebrowser.Browser", "Arc"},
      {Browser::chromium, "chromium", "org.chromium.Chromium", "Chromium"},
      {Browser::firefox, "firefox", "org.mozilla.firefox", "Firefox"},
      {Browser::safari, "safari", "com.apple.Safari", "Safari"},
  };
  ASSERT_EQ(Browser::allCases.size(), std::size(rows));
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const Browser browser = Browser::allCases[i];
    EXPECT_EQ(browser, rows[i].browser);
    EXPECT_EQ(browser.rawValue(), rows[i].rawValue);
    EXPECT_EQ(browser.bundleID(), rows[i].bundleID);
    EXPECT_EQ(browser.appName(), rows[i].appName);
    EXPECT_EQ(Browser::fromRawValue(rows[i].rawValue), browser);
    EXPECT_EQ(Browser::fromBundleID(rows[i].bundleID), browser);
    EXPECT_EQ(Browser::fromAppName(rows[i].appName), browser);
    EXPECT_EQ(browser.isGecko(), rows[i].browser == Browser::firefox);
  }
}

TEST(BrowserTest, LookUpsAreExact) {
  EXPECT_EQ(Browser::fromBundleID("com.google.chrome"), std::nullopt);
  EXPECT_EQ(Browser::fromBundleID(std::nullopt), std::nullopt);
  EXPECT_EQ(Browser::fromAppName("Brave"), std::nullopt);
  EXPECT_EQ(Browser::fromAppName("firefox"), std::nullopt);
  EXPECT_EQ(Browser::fromRawValue("Chrome"), std::nullopt);
  EXPECT_EQ(Browser::fromRawValue(""), std::nullopt);
}

TEST(BrowserTest, EveryEditionIsItsBrowser) {
  const std::pair<std::string_view, Browser::Case> editions[] = {
      {"com.google.Chrome.beta", Browser::chrome},
      {"com.google.Chrome.dev", Browser::chrome},
      {"com.google.Chrome.canary", Browser::chrome},
      {"com.microsoft.edgemac.Beta", Browser::edge},
      {"com.microsoft.edgemac.Dev", Browser::edge},
      {"com.brave.Browser.beta", Browser::brave},
      {"com.brave.Browser.nightly", Browser::brave},
      {"org.mozilla.firefoxbeta", Browser::firefox},
      {"org.mozilla.firefoxdeveloperedition", Browser::firefox},
      {"org.mozilla.nightly", Browser::firefox},
  };
  for (const auto& [bundleID, browser] : editions) {
    EXPECT_EQ(Browser::fromBundleID(bundleID), Browser(browser)) << bundleID;
    test::VirtualWorkspace workspace;
    workspace.installed[std::string(bundleID)] = "/apps/edition.desktop";
    workspace.addRunning(100, "Edition", ActivationPolicy::regular, std::string(bundleID));
    for (const Browser each : Browser::allCases) {
      EXPECT_EQ(each.isInstalled(workspace), each == browser) << bundleID;
      EXPECT_EQ(each.isRunning(workspace), each == browser) << bundleID;
    }
  }
  for (const char* other : {"com.vivaldi.Vivaldi", "com.operasoftware.Opera", "org.example.Other", ""})
    EXPECT_EQ(Browser::fromBundleID(other), std::nullopt) << other;
}

TEST(BrowserTest, TheMainReleaseIsTheFirstOfTheEditions) {
  for (const Browser browser : Browser::allCases) EXPECT_EQ(browser.editions().front(), browser.bundleID());
}

TEST(BrowserTest, ABrowserIsInstalledIfTheSystemKnowsWhere) {
  test::VirtualWorkspace workspace;
  EXPECT_FALSE(Browser(Browser::firefox).isInstalled(workspace));
  workspace.installed["org.mozilla.firefox"] = "/Applications/Firefox.app";
  EXPECT_TRUE(Browser(Browser::firefox).isInstalled(workspace));
  EXPECT_FALSE(Browser(Browser::chrome).isInstalled(workspace));
}

TEST(BrowserTest, ABrowserRunsIfOneOfItsProcessesRuns) {
  test::VirtualWorkspace workspace;
  EXPECT_FALSE(Browser(Browser::chrome).isRunning(workspace));
  workspace.addRunning(100, "Google Chrome", ActivationPolicy::regular, "com.google.Chrome");
  EXPECT_TRUE(Browser(Browser::chrome).isRunning(workspace));
  EXPECT_FALSE(Browser(Browser::chromium).isRunning(workspace));
}

TEST(BrowserTest, EveryBrowserWithOurExtensionHasAFolderForManifestsOnMacOSExceptSafari) {
  for (const BrowserEdition& edition : browserEditions()) {
    const bool needsOne = !edition.family.empty() && edition.family != "safari";
    EXPECT_EQ(!edition.macManifests.empty(), needsOne) << edition.bundleID;
  }
}

TEST(BrowserTest, TheFoldersForManifestsOnMacOSAreThoseOfTheBrowsersMakers) {
  const auto folder = [](std::string_view bundleID) { return editionOfBundle(bundleID)->macManifests; };
  EXPECT_EQ(folder("com.google.Chrome"), "Google/Chrome/NativeMessagingHosts");
  EXPECT_EQ(folder("com.brave.Browser"), "BraveSoftware/Brave-Browser/NativeMessagingHosts");
  EXPECT_EQ(folder("company.thebrowser.Browser"), "Arc/User Data/NativeMessagingHosts");
  EXPECT_EQ(folder("org.mozilla.nightly"), "Mozilla/NativeMessagingHosts");
}

}  // namespace
}  // namespace tollvane
