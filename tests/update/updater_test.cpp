#include "update/updater.h"

#include <gtest/gtest.h>

#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

class UpdaterTest : public testing::Test {
 protected:
  UpdaterTest() { system.bundle.info["CFBundleShortVersionString"] = "1.0"; }

  void learn(std::string body, int status = 200) {
    updater.check();
    system.http.answer(HttpResponse{status, std::move(body)});
  }
  double lastCheck() const {
    const auto value = system.defaults.object("updateLastCheck");
    return value ? std::get<double>(*value) : 0;
  }

  test::VirtualPlatform system;
  Updater updater{system.http, system.clock, Prefs(system.defaults), system.bundle};
};

TEST_F(UpdaterTest, AsksTheFeedOfTheSiteForJsonAndWaitsTwentySeconds) {
  updater.check();
  ASSERT_EQ(system.http.requests.size(), 1u);
  EXPECT_EQ(system.http.requests[0].url, "https://www.example.org/tollvane/latest.json");
  EXPECT_EQ(system.http.requests[0].headers, (std::map<std::string, std::string>{{"Accept", "application/json"}}));
  EXPECT_EQ(system.http.requests[0].timeout, 20s);
}

TEST_F(UpdaterTest, ABundleWithoutASiteAsksNobodyAndSaysSo) {
  system.bundle.info["TollvaneSite"] = "https://tollvane.invalid";
  updater.check();
  updater.checkIfDue();
  EXPECT_EQ(system.http.requests.size(), 0u);
  EXPECT_EQ(updater.alert(), (Alert{"This version doesn't look for updates",
                                    "It was built without a website that it could ask. Tollvane 1.0 stays as it is."}));
}

TEST_F(UpdaterTest, OneQuestionIsAskedAtATime) {
  updater.check();
  updater.check();
  EXPECT_EQ(system.http.requests.size(), 1u);
  system.http.answer(std::nullopt);
  updater.check();
  EXPECT_EQ(system.http.requests.size(), 2u);
}

TEST_F(UpdaterTest, ANewerReleaseIsAvailable) {
  int changes = 0;
  updater.onChange = [&] { ++changes; };
  EXPECT_FALSE(updater.available());
  learn(R"({"version":"1.1"})");
  EXPECT_EQ(updater.available()->version, "1.1");
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(lastCheck(), 1738332309.0);
}

TEST_F(UpdaterTest, TheSameOrAnOlderReleaseIsKnownButNotAvailable) {
  learn(R"({"version":"1.0.0"})");
  EXPECT_TRUE(updater.latest);
  EXPECT_FALSE(updater.available());
  learn(R"({"version":"0.9"})");
  EXPECT_FALSE(updater.available());
}

TEST_F(UpdaterTest, AProgramThatDoesNotKnowItsVersionIsOlderThanAnyRelease) {
  system.bundle.info.erase("CFBundleShortVersionString");
  EXPECT_EQ(updater.current(), "0");
  learn(R"({"version":"0.1"})");
  EXPECT_TRUE(updater.available());
}

TEST_F(UpdaterTest, AnErrorChangesNothing) {
  learn(R"({"version":"1.1"})");
  int changes = 0;
  updater.onChange = [&] { ++changes; };
  const double before = lastCheck();
  system.clock.advance(1h);
  learn(R"({"version":"1.2"})", 500);
  learn("", 200);
  updater.check();
  system.http.answer(std::nullopt);
  EXPECT_EQ(updater.latest->version, "1.1");
  EXPECT_EQ(lastCheck(), before);
  EXPECT_EQ(changes, 0);
}

TEST_F(UpdaterTest, AnAnswerWithoutAReleaseClearsTheLatest) {
  for (const char* body : {"[]", "{}", "no json", R"({"version":7})"}) {
    learn(R"({"version":"1.1"})");
    system.clock.advance(1h);
    learn(body);
    EXPECT_FALSE(updater.latest) << body;
    EXPECT_EQ(lastCheck(), std::chrono::duration<double>(system.clock.now().time_since_epoch()).count());
  }
}

TEST_F(UpdaterTest, WhileNoReleaseIsKnownEveryCheckAsks) {
  updater.checkIfDue();
  system.http.answer(std::nullopt);
  updater.checkIfDue();
  system.http.answer(HttpResponse{200, "{}"});
  updater.checkIfDue();
  EXPECT_EQ(system.http.requests.size(), 3u);
}

TEST_F(UpdaterTest, OnceAReleaseIsKnownItAsksOnceADay) {
  learn(R"({"version":"1.1"})");
  system.clock.advance(86400s);
  updater.checkIfDue();
  EXPECT_EQ(system.http.requests.size(), 1u);
  system.clock.advance(1ms);
  updater.checkIfDue();
  EXPECT_EQ(system.http.requests.size(), 2u);
}

TEST_F(UpdaterTest, AnAnswerForAnUpdaterThatIsGoneIsDropped) {
  auto gone = std::make_unique<Updater>(system.http, system.clock, Prefs(system.defaults), system.bundle);
  gone->check();
  gone.reset();
  system.http.answer(HttpResponse{200, R"({"version":"1.1"})"});
  EXPECT_EQ(lastCheck(), 0);
}

TEST_F(UpdaterTest, TheAlertSaysWhatIsKnown) {
  EXPECT_EQ(updater.alert(), (Alert{"Couldn't check for updates",
                                    "The website didn't answer. Check your internet connection and try again later."}));
  learn(R"({"version":"1.0"})");
  EXPECT_EQ(updater.alert(), (Alert{"You're up to date", "Tollvane 1.0 is the newest version."}));
  learn(R"({"version":"2.5"})");
  EXPECT_EQ(updater.alert(),
            (Alert{"Version 2.5 is available", "Choose \"Update available\" in the Tollvane menu to get it."}));
}

}  // namespace
}  // namespace tollvane
