#include "model/sound_event.h"

#include <gtest/gtest.h>

namespace tollvane {
namespace {

SoundEvent someEvent() { return {TimePoint(), "Firefox", kind::startedPlayingAudio}; }

std::string labelOf(std::string_view title, std::string_view host = "") {
  SoundEvent event = someEvent();
  event.tabTitle = title;
  event.tabHost = host;
  return event.tabLabel().value_or("(absent)");
}

std::string repeated(std::string_view piece, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += piece;
  return result;
}

TEST(SoundEventTest, ANewEventIsUnseenAndHasNoTab) {
  const SoundEvent event = someEvent();
  EXPECT_EQ(event.app, "Firefox");
  EXPECT_EQ(event.kind, "started playing audio");
  EXPECT_FALSE(event.hasTab());
  EXPECT_FALSE(event.seen);
  EXPECT_EQ(event.tabLabel(), std::nullopt);
}

TEST(SoundEventTest, AnyTabFieldMakesATabButTheBrowserAloneDoesNot) {
  SoundEvent event = someEvent();
  event.browser = Browser::firefox;
  EXPECT_FALSE(event.hasTab());
  EXPECT_EQ(event.tabLabel(), std::nullopt);

  SoundEvent titled = someEvent();
  titled.tabTitle = "";
  EXPECT_TRUE(titled.hasTab());
  SoundEvent hosted = someEvent();
  hosted.tabHost = "";
  EXPECT_TRUE(hosted.hasTab());
}

TEST(SoundEventTest, OnlyATabIdIsABrowserTab) {
  SoundEvent event = someEvent();
  event.tabId = 0;
  EXPECT_TRUE(event.hasTab());
  EXPECT_EQ(event.tabLabel(), "a browser tab");
}

TEST(SoundEventTest, FortyEightCharactersAreKeptAndFortyNineAreCutTo47AndAnEllipsis) {
  EXPECT_EQ(labelOf(std::string(48, 'x')), std::string(48, 'x'));
  EXPECT_EQ(labelOf(std::string(49, 'x')), std::string(47, 'x') + "…");
  EXPECT_EQ(labelOf(std::string(10'000, 'x')), std::string(47, 'x') + "…");
}

TEST(SoundEventTest, WhatAPersonSeesAsOneCharacterCountsAsOne) {
  const std::string_view flag = "🇳🇴";
  const std::string_view family = "👩‍👩‍👧‍👦";
  const std::string_view accented = "e\u0301\u0323";
  for (const auto one : {flag, family, accented}) {
    EXPECT_EQ(labelOf(repeated(one, 48)), repeated(one, 48));
    EXPECT_EQ(labelOf(repeated(one, 49)), repeated(one, 47) + "…");
  }
  std::string heaped = "a";
  heaped += repeated("\u0301", 5000);
  EXPECT_EQ(labelOf(heaped), heaped);
}

TEST(SoundEventTest, TitlesAreTrimmedBeforeTheyAreMeasured) {
  EXPECT_EQ(labelOf(" \t\r\n\u00A0\u2003\u2028Inbox\u3000\u0085 "), "Inbox");
  EXPECT_EQ(labelOf(std::string(20, ' ') + std::string(48, 'x') + "\n"), std::string(48, 'x'));
}

TEST(SoundEventTest, TitleAndHostAreSeparatedByTwoBlanks) {
  EXPECT_EQ(labelOf("Inbox", "www.example.org"), "Inbox  (example.org)");
  EXPECT_EQ(labelOf("Inbox", "mail.example.org"), "Inbox  (mail.example.org)");
}

TEST(SoundEventTest, ABlankTitleLeavesTheHostWithoutItsWww) {
  EXPECT_EQ(labelOf("   ", "www.example.org"), "example.org");
  EXPECT_EQ(labelOf("", "www.www.org"), "www.org");
  EXPECT_EQ(labelOf("", "WWW.example.org"), "WWW.example.org");
}

TEST(SoundEventTest, ATitleAloneIsTheLabelAndWithoutBothItIsABrowserTab) {
  EXPECT_EQ(labelOf("Inbox"), "Inbox");
  EXPECT_EQ(labelOf("Inbox", "www."), "Inbox");
  EXPECT_EQ(labelOf(" ", ""), "a browser tab");
  EXPECT_EQ(labelOf(" ", "www."), "a browser tab");
}

TEST(SoundEventTest, BytesThatAreNotTextAreKept) { EXPECT_EQ(labelOf("a\xff\xfe z"), "a\xff\xfe z"); }

}  // namespace
}  // namespace tollvane
