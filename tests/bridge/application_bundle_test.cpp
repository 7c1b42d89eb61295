#include "bridge/application_bundle.h"

#include <gtest/gtest.h>

#include "bridge/introduction.h"

namespace tollvane::bridge {
namespace {

TEST(ApplicationBundleTest, AProgramBelongsToTheBundleAroundIt) {
  EXPECT_EQ(applicationBundle("/Applications/Firefox.app/Contents/MacOS/firefox"), "/Applications/Firefox.app");
  EXPECT_EQ(applicationBundle("/Users/u/My Apps/Google Chrome.app/Contents/MacOS/Google Chrome"),
            "/Users/u/My Apps/Google Chrome.app");
}

TEST(ApplicationBundleTest, AHelperBelongsToTheOutermostBundle) {
  EXPECT_EQ(applicationBundle("/Applications/Google Chrome.app/Contents/Frameworks/Google Chrome Framework.framework/"
                              "Helpers/Google Chrome Helper.app/Contents/MacOS/Google Chrome Helper"),
            "/Applications/Google Chrome.app");
}

TEST(ApplicationBundleTest, OtherProgramsBelongToNone) {
  for (const char* program : {"", "/bin/zsh", "/Applications/Firefox.application/firefox", "/usr/local/bin/x.app"})
    EXPECT_EQ(applicationBundle(program), "") << program;
}

TEST(IntroductionTest, NamesTheBrowserIfItHasAnIdentifier) {
  EXPECT_EQ(introductionOf("org.mozilla.firefox"), R"({"type":"bridge","bundleID":"org.mozilla.firefox"})");
  for (const auto& text : {std::string(), std::string("a\"b"), std::string("a b"), std::string(256, 'x')})
    EXPECT_EQ(introductionOf(text), R"({"type":"bridge"})") << text;
}

}  // namespace
}  // namespace tollvane::bridge
