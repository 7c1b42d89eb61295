#include "doctor/diagnosis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "support/json_value.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using testing::HasSubstr;
using testing::Not;

class DiagnosisTest : public testing::Test {
 protected:
  // A computer on which everything works.
  DiagnosisTest() {
    bundle.info["CFBundleShortVersionString"] = "0.2.0";
    found.home = "/home/ada";
    found.bundle = "/usr/lib/tollvane";
    found.hasSessionBus = true;
    found.running.emplace();
    found.running->version = "0.2.0";
    found.running->extensions = {{"org.mozilla.firefox", "0.2.0", "2026-11-22 10:00:00"}};
    found.soundServers = {"PipeWire"};
    found.lastSound = "2026-11-22 09:00:00";
    found.notificationService = "dunst";
    found.bellPlace = BellPlace::statusBar;
    found.windowWay = WindowWay::x11;
    found.browsers.resize(1);
    browser().bundleID = "org.mozilla.firefox";
    browser().name = "Firefox";
    browser().packagings = {BrowserPackaging::ordinary};
    browser().isRunning = true;
    browser().ownManifest = browser().systemManifest = ManifestState::right;
    found.login = LoginStatus::enabled;
    found.supportFolder = "/home/ada/.local/share/Tollvane";
    found.supportFolderIsWritable = true;
    found.settingsFile = "/home/ada/.config/Tollvane/defaults.json";
  }
  ExaminedBrowser& browser() { return found.browsers.front(); }

  Finding about(const std::string& subject) const {
    const auto findings = diagnose(found, bundle);
    const auto one = std::ranges::find(findings, subject, &Finding::subject);
    return one == findings.end() ? Finding{"not said: " + subject} : *one;
  }
  Finding aboutBrowser() const { return about("browser org.mozilla.firefox"); }

  test::VirtualBundle bundle;
  Examination found;
};

TEST_F(DiagnosisTest, OnAGoodComputerEverythingIsGoodAndNothingIsToBeDone) {
  for (const Finding& finding : diagnose(found, bundle)) {
    EXPECT_EQ(finding.health, Health::good) << finding.sentence;
    EXPECT_EQ(finding.mend, "") << finding.sentence;
  }
  EXPECT_THAT(asText(diagnose(found, bundle), "0.2.0"), HasSubstr("\nNothing is wrong.\n"));
}

TEST_F(DiagnosisTest, WhatIsBadAlwaysHasAMend) {
  Examination broken;
  broken.missingParts = {"TollvaneLog"};
  broken.hasSessionBus = true;
  broken.running.emplace();
  broken.browsers.push_back({.bundleID = "org.mozilla.firefox", .name = "Firefox"});
  broken.settingsAreReadable = false;
  for (const auto state : {ManifestState::none, ManifestState::noBridge, ManifestState::unreadable}) {
    broken.browsers.front().ownManifest = state;
    const auto findings = diagnose(broken, bundle);
    EXPECT_GE(std::ranges::count(findings, Health::bad, &Finding::health), 7);
    for (const Finding& finding : findings) EXPECT_TRUE(finding.health != Health::bad || !finding.mend.empty());
    EXPECT_FALSE(isHealthy(findings));
  }
}

TEST_F(DiagnosisTest, ATollvaneThatDoesNotRunIsNotBad) {
  found.running.reset();
  EXPECT_EQ(about("running").health, Health::note);
  EXPECT_EQ(aboutBrowser().health, Health::good);
  EXPECT_THAT(aboutBrowser().sentence, HasSubstr("Tollvane does not run, so nothing is linked."));
}

TEST_F(DiagnosisTest, AReplacedProgramIsToBeStartedAgain) {
  found.running->isOutdated = true;
  EXPECT_EQ(about("running").mend, "Quit Tollvane in its menu, and start it again.");
  found.running->isOutdated = false;
  EXPECT_EQ(about("running").health, Health::good);
  found.running->version = "0.1.0";
  EXPECT_THAT(about("running").sentence, HasSubstr("Tollvane 0.1.0 runs, but its program has been replaced"));
}

TEST_F(DiagnosisTest, AProgramThatDoesNotAnswerIsBad) {
  found.running->version = "";
  EXPECT_EQ(about("running").health, Health::bad);
}

TEST_F(DiagnosisTest, ASoundServerThatTollvaneDoesNotReachIsBad) {
  found.running->hearsSoundServer = false;
  EXPECT_EQ(about("sound").health, Health::bad);
  found.running->hearsLogTool = false;
  EXPECT_THAT(about("sound").mend, HasSubstr("TollvaneLog stream"));
  found.running.reset();
  EXPECT_EQ(about("sound").health, Health::good);
  found.soundServers.clear();
  EXPECT_EQ(about("sound").health, Health::bad);
}

TEST_F(DiagnosisTest, WithoutABusOnlyTheBusIsBad) {
  found.hasSessionBus = false;
  found.running.reset();
  found.notificationService.reset();
  found.bellPlace = BellPlace::none;
  found.windowWay = WindowWay::none;
  const auto findings = diagnose(found, bundle);
  EXPECT_EQ(std::ranges::count(findings, Health::bad, &Finding::health), 1);
}

TEST_F(DiagnosisTest, GnomeIsToldOfItsExtensionAndOtherDesktopsOfTheirPanel) {
  found.bellPlace = BellPlace::none;
  found.desktop = "ubuntu:GNOME";
  EXPECT_THAT(about("bell").mend, HasSubstr("Tollvane's extension of GNOME Shell"));
  found.windowWay = WindowWay::others;
  EXPECT_THAT(about("windows").mend, HasSubstr("Tollvane's extension of GNOME Shell"));
  found.bellPlace = BellPlace::shell;
  found.windowWay = WindowWay::shell;
  for (const char* topic : {"bell", "windows"}) EXPECT_EQ(about(topic).health, Health::good) << topic;
  found.windowWay = WindowWay::kwin;
  EXPECT_THAT(about("windows").sentence, HasSubstr("KWin"));
  found.desktop = "XFCE";
  EXPECT_THAT(about("bell").mend, Not(HasSubstr("gnome")));
}

TEST_F(DiagnosisTest, ALinkedExtensionIsNamedWithItsVersionAndItsLastReport) {
  EXPECT_EQ(aboutBrowser().sentence, "Firefox: the extension 0.2.0 (last report on 2026-11-22 10:00:00) is linked.");
  found.running->extensions.push_back({"org.mozilla.firefox", "0.1.0", ""});
  EXPECT_THAT(aboutBrowser().sentence, HasSubstr(", 0.1.0 (no report yet) is linked."));
}

TEST_F(DiagnosisTest, AnExtensionThatIsNotLinkedInABrowserThatRunsIsNoted) {
  found.running->extensions.front().bundleID = "org.chromium.Chromium";
  EXPECT_EQ(aboutBrowser().health, Health::note);
  EXPECT_THAT(aboutBrowser().mend, HasSubstr("start the browser again"));
  browser().isRunning = false;
  EXPECT_EQ(aboutBrowser().health, Health::good);
}

// Browsers look into the user's home first.
TEST_F(DiagnosisTest, TheUsersOwnManifestCountsBeforeTheOneForAllUsers) {
  found.running->extensions.clear();
  browser().ownManifest = ManifestState::noBridge;
  EXPECT_EQ(aboutBrowser().health, Health::bad);
  browser().ownManifest = ManifestState::none;
  EXPECT_EQ(aboutBrowser().health, Health::note);
  browser().systemManifest = ManifestState::noBridge;
  EXPECT_EQ(aboutBrowser().health, Health::bad);
}

TEST_F(DiagnosisTest, ABrowserInASandboxIsNotedUnlessAnotherPackageOfItIsThere) {
  found.running->extensions.clear();
  browser().packagings = {BrowserPackaging::snap};
  EXPECT_THAT(aboutBrowser().sentence, HasSubstr("as a Snap, which cannot start Tollvane's bridge"));
  browser().packagings = {BrowserPackaging::flatpak};
  EXPECT_THAT(aboutBrowser().sentence, HasSubstr("as a Flatpak"));
  browser().packagings = {BrowserPackaging::flatpak, BrowserPackaging::ordinary};
  EXPECT_THAT(aboutBrowser().sentence, HasSubstr("the extension is not linked"));
}

TEST_F(DiagnosisTest, TheUsersHomeIsNotNamed) {
  found.bundle = "/home/ada/programs/Tollvane";
  const auto findings = diagnose(found, bundle);
  EXPECT_THAT(asText(findings, "0.2.0"), Not(HasSubstr("ada")));
  EXPECT_THAT(asJson(findings, "0.2.0"), Not(HasSubstr("ada")));
  EXPECT_THAT(about("program").sentence, HasSubstr("~/programs/Tollvane"));
  found.bundle = "/home/adam/Tollvane";
  EXPECT_THAT(about("program").sentence, HasSubstr("/home/adam/Tollvane"));
}

TEST_F(DiagnosisTest, NamesFromOutsideStayOnTheirLine) {
  browser().name = "Fire\nfox\x1b[31m";
  EXPECT_THAT(aboutBrowser().sentence, testing::StartsWith("Fire fox [31m: "));
}

TEST_F(DiagnosisTest, NoLineIsLongerThanAHundredCharactersAndNoWordIsLost) {
  found.bellPlace = BellPlace::none;
  found.desktop = "GNOME";
  const auto findings = diagnose(found, bundle);
  const std::string text = asText(findings, "0.2.0");
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 100u) << line;
  std::istringstream said(text);
  const std::vector<std::string> words{std::istream_iterator<std::string>(said), {}};
  for (const Finding& finding : findings) {
    std::istringstream expected(finding.sentence + " " + finding.mend);
    for (std::string word; expected >> word;) EXPECT_THAT(words, testing::Contains(word));
  }
}

TEST_F(DiagnosisTest, JsonHoldsEveryFinding) {
  found.soundServers.clear();
  const auto findings = diagnose(found, bundle);
  const auto json = nlohmann::json::parse(asJson(findings, "0.2.0"));
  EXPECT_EQ(json["version"], "0.2.0");
  EXPECT_EQ(json["healthy"], false);
  ASSERT_EQ(json["findings"].size(), findings.size());
  EXPECT_EQ(json["findings"][2]["subject"], "sound");
  EXPECT_EQ(json["findings"][2]["health"], "bad");
  EXPECT_EQ(json["findings"][2]["mend"], about("sound").mend);
}

TEST_F(DiagnosisTest, WithoutAHomeNothingIsSaidAboutFilesThere) {
  found.home.reset();
  EXPECT_EQ(about("home").health, Health::bad);
  EXPECT_EQ(about("history").sentence, "");
  EXPECT_EQ(about("settings").sentence, "");
}

TEST_F(DiagnosisTest, ABuildWithoutASiteSaysThatItAsksNone) {
  bundle.info["TollvaneSite"] = "https://tollvane.invalid";
  EXPECT_EQ(about("updates").health, Health::note);
}

}  // namespace
}  // namespace tollvane
