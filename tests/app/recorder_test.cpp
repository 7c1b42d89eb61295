#include "app/recorder.h"

#include <gtest/gtest.h>

#include "support/json_value.h"
#include "tests/virtual/virtual_platform.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

class RecorderTest : public testing::Test {
 protected:
  RecorderTest() {
    recorder->onChange = [this] { ++changes; };
    recorder->askWhichTabIsAudible = [this](Browser in, const auto&) { asked.push_back(in); };
  }

  std::shared_ptr<SoundEvent> sound(std::string_view app) {
    auto event = std::make_shared<SoundEvent>(system.clock.now(), app, kind::startedPlayingAudio);
    recorder->record(event);
    return event;
  }
  void report(std::optional<Browser> from, std::string_view title, std::int64_t tabId = 7) {
    recorder->tabReport(from, {{"type", "audible"}, {"title", title}, {"host", "www.example.org"}, {"tabId", tabId}});
  }
  std::string history() const {
    const auto found = system.files.contents.find("/home/user/Application Support/Tollvane/history.txt");
    return found == system.files.contents.end() ? "" : found->second;
  }

  test::VirtualPlatform system;
  Paths paths{system.locations, system.files};
  Resolver resolver{system.processes, system.workspace, system.locations, system.files};
  History file{paths, system.files, system.dates};
  std::unique_ptr<Recorder> recorder = std::make_unique<Recorder>(system.queue, system.clock, resolver, file);
  int changes = 0;
  std::vector<Browser> asked;
};

TEST_F(RecorderTest, TheNewestSoundIsFirstAndFiftyAreKept) {
  for (int i = 1; i <= 51; ++i) {
    sound("App " + std::to_string(i));
    EXPECT_LE(recorder->events.size(), 50u);
  }
  ASSERT_EQ(recorder->events.size(), 50u);
  EXPECT_EQ(recorder->events.front()->app, "App 51");
  EXPECT_EQ(recorder->events.back()->app, "App 2");
  EXPECT_EQ(changes, 51);
}

TEST_F(RecorderTest, ABrowserIsKnownByTheNameThatTheSystemGivesItOrByItsOwn) {
  system.workspace.installed["org.chromium.Chromium"] = "/usr/share/applications/chromium.desktop";
  system.workspace.displayNames["/usr/share/applications/chromium.desktop"] = "Chromium Web Browser";
  const auto browserOf = [&](std::string_view app) {
    return recorder->browser({system.clock.now(), app, kind::alertSound});
  };
  EXPECT_EQ(browserOf("Chromium Web Browser"), Browser::chromium);
  EXPECT_EQ(browserOf("Chromium"), Browser::chromium);
  EXPECT_EQ(browserOf("Firefox"), Browser::firefox);
  EXPECT_EQ(browserOf("firefox"), std::nullopt);
  EXPECT_EQ(browserOf("FIREFOX"), std::nullopt);
  EXPECT_EQ(browserOf("org.mozilla.firefox"), Browser::firefox);  // an unknown application is called by its identifier
  EXPECT_EQ(browserOf("Mail"), std::nullopt);
}

TEST_F(RecorderTest, TheEventsOwnBrowserFieldIsNotConsulted) {
  SoundEvent event(system.clock.now(), "Mail", kind::alertSound);
  event.browser = Browser::chrome;
  EXPECT_EQ(recorder->browser(event), std::nullopt);
}

TEST_F(RecorderTest, AReportFillsTheNewestSoundOfItsBrowser) {
  const auto first = sound("Google Chrome");
  system.queue.advance(2s);
  const auto second = sound("Google Chrome");
  system.queue.advance(500ms);
  changes = 0;
  report(Browser::chrome, "Video", 42);
  EXPECT_FALSE(first->hasTab());
  EXPECT_EQ(second->tabTitle, "Video");
  EXPECT_EQ(second->tabHost, "www.example.org");
  EXPECT_EQ(second->tabId, 42);
  EXPECT_EQ(second->browser, Browser::chrome);
  EXPECT_TRUE(recorder->pendingTabs.empty());
  EXPECT_EQ(changes, 1);
}

TEST_F(RecorderTest, ASecondReportFillsAnOlderSoundWithoutATab) {
  const auto first = sound("Google Chrome");
  system.queue.advance(1s);
  const auto second = sound("Google Chrome");
  report(Browser::chrome, "B");
  report(Browser::chrome, "A");
  EXPECT_EQ(second->tabTitle, "B");
  EXPECT_EQ(first->tabTitle, "A");
}

TEST_F(RecorderTest, AReportOfOneBrowserDoesNotFillASoundOfAnother) {
  const auto chrome = sound("Google Chrome");
  report(Browser::firefox, "Video");
  EXPECT_FALSE(chrome->hasTab());
  EXPECT_EQ(recorder->pendingTabs.size(), 1u);
}

TEST_F(RecorderTest, AReportJustWithinFourSecondsFillsTheSound) {
  const auto event = sound("Firefox");
  system.queue.advance(4s - 1ns);
  report(Browser::firefox, "Video");
  EXPECT_EQ(event->tabTitle, "Video");
}

TEST_F(RecorderTest, AReportOfATabThatPlayedBeforeItsExtensionRanMayComeLate) {
  const auto event = sound("Firefox");
  system.queue.advance(15s - 1ns);
  recorder->tabReport(Browser::firefox, {{"title", "Radio"}, {"restored", true}});
  EXPECT_EQ(event->tabTitle, "Radio");
  const auto other = sound("Firefox");
  system.queue.advance(15s);
  recorder->tabReport(Browser::firefox, {{"title", "Radio"}, {"restored", true}});
  EXPECT_FALSE(other->hasTab());
}

TEST_F(RecorderTest, AReportFourSecondsAfterTheSoundBecomesASoundOfItsOwn) {
  const auto event = sound("Firefox");
  system.queue.advance(4s);
  report(Browser::firefox, "Video");
  const TimePoint reported = system.clock.now();
  EXPECT_FALSE(event->hasTab());
  system.queue.advance(2500ms - 1ns);
  EXPECT_EQ(recorder->events.size(), 1u);
  system.queue.advance(1ns);
  ASSERT_EQ(recorder->events.size(), 2u);
  const auto& own = *recorder->events.front();
  EXPECT_EQ(own.date, reported);
  EXPECT_EQ(own.kind, "started playing audio");
  EXPECT_EQ(own.tabTitle, "Video");
  EXPECT_EQ(own.browser, Browser::firefox);
  EXPECT_EQ(own.app, "org.mozilla.firefox");  // not installed here, so its name is not known
}

TEST_F(RecorderTest, AReportWithoutASoundGetsTheNameOfItsBrowser) {
  system.workspace.addRunning(500, "Firefox", ActivationPolicy::regular, "org.mozilla.firefox");
  report(Browser::firefox, "Video");
  system.queue.advance(2500ms);
  ASSERT_EQ(recorder->events.size(), 1u);
  EXPECT_EQ(recorder->events.front()->app, "Firefox");
  EXPECT_EQ(history(), "2025-01-31 14:05:09\tFirefox\tstarted playing audio\tVideo  (example.org)\n");
}

TEST_F(RecorderTest, AnEditionsSoundAndItsReportFindEachOther) {
  system.workspace.installed["com.google.Chrome.beta"] = "/apps/beta.desktop";
  system.workspace.displayNames["/apps/beta.desktop"] = "Google Chrome (beta)";
  const auto event = sound("Google Chrome (beta)");
  report(*Browser::fromBundleID("com.google.Chrome.beta"), "Video");
  EXPECT_EQ(event->tabTitle, "Video");
  EXPECT_EQ(event->browser, Browser::chrome);
}

TEST_F(RecorderTest, AReportWithoutSoundIsCalledAsItsEditionIsCalled) {
  system.workspace.addRunning(500, "Firefox", ActivationPolicy::regular, "org.mozilla.firefox");
  system.workspace.addRunning(501, "Firefox Nightly", ActivationPolicy::regular, "org.mozilla.nightly");
  recorder->tabReport(Browser::firefox, {{"title", "Video"}}, "org.mozilla.nightly");
  system.queue.advance(2500ms);
  ASSERT_EQ(recorder->events.size(), 1u);
  EXPECT_EQ(recorder->events.front()->app, "Firefox Nightly");
}

TEST_F(RecorderTest, EachNameUnderWhichABrowserRunsIsTheBrowser) {
  system.workspace.addRunning(500, "Firefox ESR", ActivationPolicy::regular, "org.mozilla.firefox");
  system.workspace.addRunning(501, "My own Firefox", ActivationPolicy::regular, "org.mozilla.firefox");
  for (const char* name : {"Firefox ESR", "My own Firefox", "Firefox"})
    EXPECT_EQ(recorder->browser({system.clock.now(), name, kind::alertSound}), Browser::firefox) << name;
}

TEST_F(RecorderTest, ASoundTakesAReportThatCameBeforeIt) {
  report(Browser::firefox, "Video", 42);
  system.queue.advance(2400ms);
  const auto event = sound("Firefox");
  EXPECT_EQ(event->tabTitle, "Video");
  EXPECT_EQ(event->tabId, 42);
  EXPECT_TRUE(recorder->pendingTabs.front().used);
  system.queue.advance(1h);
  EXPECT_EQ(recorder->events.size(), 1u);
}

TEST_F(RecorderTest, ASoundTakesTheNewestReportAndOnlyOfItsBrowser) {
  report(Browser::firefox, "old");
  system.queue.advance(1s);
  report(Browser::firefox, "new");
  report(Browser::chrome, "other");
  const auto event = sound("Firefox");
  EXPECT_EQ(event->tabTitle, "new");
  const auto next = sound("Firefox");
  EXPECT_EQ(next->tabTitle, "old");
}

TEST_F(RecorderTest, AReportThatBecameASoundIsNotTakenAgain) {
  report(Browser::firefox, "Video");
  system.queue.advance(2500ms);
  const auto event = sound("Firefox");
  EXPECT_FALSE(event->hasTab());
  EXPECT_EQ(recorder->events.size(), 2u);
}

TEST_F(RecorderTest, SoundAndReportFourSecondsApartDoNotMatchInEitherDirection) {
  report(Browser::firefox, "Video");
  const TimePoint reported = system.clock.now();
  for (const Duration apart : {Duration(4s), Duration(-4s)}) {
    auto event = std::make_shared<SoundEvent>(reported + apart, "Firefox", kind::startedPlayingAudio);
    recorder->record(event);
    EXPECT_FALSE(event->hasTab());
  }
  auto early = std::make_shared<SoundEvent>(reported - 4s + 1ns, "Firefox", kind::startedPlayingAudio);
  recorder->record(early);
  EXPECT_TRUE(early->hasTab());
}

TEST_F(RecorderTest, OldReportsAreForgottenWhenANewOneComes) {
  report(Browser::firefox, "old");
  system.queue.advance(15s);
  report(Browser::firefox, "at the limit");
  EXPECT_EQ(recorder->pendingTabs.size(), 2u);
  system.queue.advance(1ns);
  report(Browser::firefox, "new");
  ASSERT_EQ(recorder->pendingTabs.size(), 2u);
  EXPECT_EQ(recorder->pendingTabs.front().title, "at the limit");
  EXPECT_EQ(recorder->pendingTabs.back().title, "new");
}

TEST_F(RecorderTest, TwoReportsAtTheSameMomentAreTwoSounds) {
  report(Browser::firefox, "A", 1);
  report(Browser::firefox, "B", 2);
  system.queue.advance(2500ms);
  ASSERT_EQ(recorder->events.size(), 2u);
  EXPECT_EQ(recorder->events[0]->tabTitle, "B");
  EXPECT_EQ(recorder->events[1]->tabTitle, "A");
}

TEST_F(RecorderTest, AReportOfAnUnknownBrowserIsIgnored) {
  sound("Firefox");
  report(std::nullopt, "Video");
  EXPECT_TRUE(recorder->pendingTabs.empty());
  EXPECT_FALSE(recorder->events.front()->hasTab());
}

TEST_F(RecorderTest, AMalformedReportDegradesToEmptyTextsAndNoId) {
  const auto event = sound("Firefox");
  recorder->tabReport(Browser::firefox, {{"title", 5}, {"host", nullptr}, {"tabId", "7"}});
  EXPECT_EQ(event->tabTitle, "");
  EXPECT_EQ(event->tabHost, "");
  EXPECT_EQ(event->tabId, std::nullopt);
  EXPECT_TRUE(event->hasTab());
  EXPECT_EQ(event->tabLabel(), "a browser tab");
}

TEST_F(RecorderTest, AReportIsOneLineOfPlainTextWhateverAnExtensionSays) {
  const auto event = sound("Firefox");
  recorder->tabReport(Browser::firefox, {{"title", "a\tb\n2025-01-31\u2028c\u202Ed"}, {"host", "h\u0085\u2066i"}});
  EXPECT_EQ(event->tabTitle, "a b 2025-01-31 cd");
  EXPECT_EQ(event->tabHost, "h i");
  system.queue.advance(4s);
  EXPECT_EQ(history(), "2025-01-31 14:05:09\tFirefox\tstarted playing audio\ta b 2025-01-31 cd  (h i)\n");
}

TEST_F(RecorderTest, ATextAsTabIdStillGivesATab) {
  const auto event = sound("Firefox");
  recorder->tabReport(Browser::firefox, {{"title", "Video"}, {"host", "h"}, {"tabId", "7"}});
  EXPECT_EQ(event->tabTitle, "Video");
  EXPECT_EQ(event->tabId, std::nullopt);
}

TEST_F(RecorderTest, SafariIsAskedAtOnceAndOnlyOnce) {
  sound("Google Chrome");
  EXPECT_TRUE(asked.empty());
  sound("Safari");
  EXPECT_EQ(asked, std::vector<Browser>{Browser::safari});
  system.queue.advance(299ms);
  EXPECT_EQ(asked, std::vector<Browser>{Browser::safari});
}

TEST_F(RecorderTest, SafariIsNotAskedForATabThatIsKnown) {
  report(Browser::safari, "Video");
  const auto event = sound("Safari");
  EXPECT_TRUE(event->hasTab());
  EXPECT_TRUE(asked.empty());
}

TEST_F(RecorderTest, AnOrdinarySoundIsInTheHistoryAtOnce) {
  sound("Mail");
  EXPECT_EQ(history(), "");
  system.queue.runDue();
  EXPECT_EQ(history(), "2025-01-31 14:05:09\tMail\tstarted playing audio\t\n");
}

TEST_F(RecorderTest, ABrowserSoundWaitsFourSecondsForItsTab) {
  sound("Firefox");
  system.queue.advance(3s);
  report(Browser::firefox, "Video");
  system.queue.advance(1s - 1ns);
  EXPECT_EQ(history(), "");
  system.queue.advance(1ns);
  EXPECT_EQ(history(), "2025-01-31 14:05:09\tFirefox\tstarted playing audio\tVideo  (example.org)\n");
}

TEST_F(RecorderTest, ABrowserSoundThatFoundItsTabIsInTheHistoryAtOnce) {
  report(Browser::firefox, "Video");
  sound("Firefox");
  system.queue.runDue();
  EXPECT_EQ(history(), "2025-01-31 14:05:09\tFirefox\tstarted playing audio\tVideo  (example.org)\n");
}

TEST_F(RecorderTest, ABrowserSoundWithoutATabIsStillInTheHistory) {
  sound("Firefox");
  system.queue.advance(4s);
  EXPECT_EQ(history(), "2025-01-31 14:05:09\tFirefox\tstarted playing audio\t\n");
}

TEST_F(RecorderTest, NothingIsWrittenOnceTheRecorderIsGone) {
  sound("Mail");
  sound("Firefox");
  report(Browser::chrome, "Video");
  recorder.reset();
  system.queue.advance(1h);
  EXPECT_EQ(history(), "");
}

TEST_F(RecorderTest, AnEventThatFellOffTheListIsStillWritten) {
  sound("Firefox");
  for (int i = 0; i < 60; ++i) sound("Mail");
  system.queue.advance(4s);
  EXPECT_NE(history().find("\tFirefox\t"), std::string::npos);
}

TEST_F(RecorderTest, AFloodOfReportsHarmsNoOtherBrowserAndMakesNoFloodOfSounds) {
  report(Browser::chrome, "Quiet", 1);
  for (int i = 0; i < 100'000; ++i) report(Browser::firefox, "Flood " + std::to_string(i), i);
  EXPECT_EQ(recorder->pendingTabs.size(), 51u);
  EXPECT_EQ(recorder->pendingTabs.front().title, "Quiet");
  EXPECT_EQ(recorder->pendingTabs.back().title, "Flood 99999");
  EXPECT_EQ(system.queue.waiting(), 1u) << "one timer for all of them";
  system.queue.advance(2500ms);
  EXPECT_EQ(recorder->events.size(), 50u);
  const std::string lines = history();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 51);
}

TEST_F(RecorderTest, EachReportWaitsForItsSoundEquallyLong) {
  report(Browser::chrome, "First", 1);
  system.queue.advance(1s);
  report(Browser::firefox, "Second", 2);
  system.queue.advance(1500ms);
  ASSERT_EQ(recorder->events.size(), 1u);
  EXPECT_EQ(recorder->events[0]->tabTitle, "First");
  system.queue.advance(999ms);
  EXPECT_EQ(recorder->events.size(), 1u);
  system.queue.advance(1ms);
  ASSERT_EQ(recorder->events.size(), 2u);
  EXPECT_EQ(recorder->events[0]->tabTitle, "Second");
}

TEST_F(RecorderTest, LongTitlesAreCutOnReceipt) {
  report(Browser::chrome, std::string(1 << 20, 'x'));
  EXPECT_EQ(recorder->pendingTabs.back().title, std::string(1000, 'x'));
  std::string marks = "a";
  for (int i = 0; i < 100'000; ++i) marks += "\u0301";
  report(Browser::chrome, marks);
  EXPECT_LE(recorder->pendingTabs.back().title.size(), 16'003u);
}

TEST_F(RecorderTest, LinesThatWaitForTheirTabAreWrittenAtTheEnd) {
  sound("Firefox");
  sound("Mail");
  recorder->finish();
  EXPECT_EQ(history(),
            "2025-01-31 14:05:09\tFirefox\tstarted playing audio\t\n"
            "2025-01-31 14:05:09\tMail\tstarted playing audio\t\n");
  const std::string written = history();
  system.queue.advance(10s);
  EXPECT_EQ(history(), written) << "each line once";
}

}  // namespace
}  // namespace tollvane
