#include "settings/extension_pick.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

class ExtensionPickTest : public testing::Test {
 protected:
  ExtensionPickTest() { system.bundle.info["TollvaneSite"] = "https://example.org"; }
  void open(const std::vector<ExtensionPick>& picks) {
    ExtensionPick::open(picks, system.bundle, system.queue, system.workspace);
  }

  test::VirtualPlatform system;
};

TEST_F(ExtensionPickTest, ChromeEdgeAndFirefoxAreOfferedInThisOrder) {
  EXPECT_THAT(ExtensionPick::offered, ElementsAre(Browser::chrome, Browser::edge, Browser::firefox));
}

TEST_F(ExtensionPickTest, EveryOtherBrowserUsesTheChromeStore) {
  for (const Browser browser : Browser::allCases) {
    const std::string expected = browser == Browser::firefox ? "firefox" : browser == Browser::edge ? "edge" : "chrome";
    EXPECT_EQ((ExtensionPick{browser}.storeLink(system.bundle)), "https://example.org/go/" + expected);
  }
}

TEST_F(ExtensionPickTest, ThreePagesOpenASecondAndAHalfApart) {
  open({{Browser::chrome}, {Browser::edge}, {Browser::firefox}});
  system.queue.runDue();
  EXPECT_EQ(system.workspace.opened.size(), 1u);
  system.queue.advance(1499ms);
  EXPECT_EQ(system.workspace.opened.size(), 1u);
  system.queue.advance(1ms);
  EXPECT_EQ(system.workspace.opened.size(), 2u);
  system.queue.advance(1500ms);
  EXPECT_THAT(system.workspace.opened, ElementsAre("https://example.org/go/chrome", "https://example.org/go/edge",
                                                   "https://example.org/go/firefox"));
}

TEST_F(ExtensionPickTest, APageOpensInItsOwnBrowserOrElseInTheDefaultOne) {
  system.workspace.installed["org.mozilla.firefox"] = "/apps/firefox.desktop";
  system.workspace.installed["com.google.Chrome"] = "/apps/chrome.desktop";
  system.workspace.broken.insert("/apps/chrome.desktop");
  open({{Browser::firefox}});
  open({{Browser::chrome}});
  system.queue.runDue();
  EXPECT_THAT(system.workspace.opened,
              ElementsAre("https://example.org/go/firefox in /apps/firefox.desktop",
                          "https://example.org/go/chrome in /apps/chrome.desktop", "https://example.org/go/chrome"));
}

TEST_F(ExtensionPickTest, WithoutASiteThePageInTheBundleOpensOnce) {
  system.bundle.info.erase("TollvaneSite");
  system.bundle.resources.insert("Extensions/adding.html");
  open({{Browser::chrome}, {Browser::firefox}});
  EXPECT_THAT(system.workspace.opened, ElementsAre(system.bundle.resource("Extensions/adding.html")->string()));
  EXPECT_TRUE(system.queue.idle());
}

TEST_F(ExtensionPickTest, WithoutPicksNothingIsOpened) {
  open({});
  EXPECT_TRUE(system.queue.idle());
}

}  // namespace
}  // namespace tollvane
