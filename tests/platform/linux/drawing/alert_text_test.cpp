#include <gtest/gtest.h>

#include "platform/linux/drawing/plain_text.h"

namespace tollvane {
namespace {

std::string drawn(std::string_view text, qsizetype most = 20) { return shortenedInside(text, most).toStdString(); }

TEST(AlertText, TextThatFitsIsDrawnAsItIs) {
  EXPECT_EQ(drawn("Mail is <b>closed</b> & gone", 40), "Mail is <b>closed</b> & gone");
  EXPECT_EQ(drawn("12345678901234567890"), "12345678901234567890");
  EXPECT_EQ(drawn(""), "");
}

TEST(AlertText, TextThatDoesNotFitLosesItsMiddleAndKeepsItsEnd) {
  EXPECT_EQ(drawn(std::string(500, 'x').append(" is closed")), "xxxxxxxxxx\u2026is closed");
  std::string vast;
  vast.resize(10'000'000, 'x');
  EXPECT_EQ(shortenedInside(vast, 20).size(), 20);
}

TEST(AlertText, ControlCharactersBecomeBlanksAndNothingReversesTheLine) {
  EXPECT_EQ(drawn("a\tb\nc\x7f\u2028d"), "a b c  d");
  EXPECT_EQ(drawn("\u202Eabc\u2066\u200F"), "abc");
}

TEST(AlertText, BytesThatAreNotTextBecomeReplacementCharacters) { EXPECT_EQ(drawn("caf\xe9"), "caf\uFFFD"); }

TEST(AlertText, CharactersAreNotCutApart) {
  std::string flags;
  for (int i = 0; i < 100; ++i) flags += "\U0001F1E6\U0001F1FA";
  const QString text = shortenedInside(flags, 10);
  EXPECT_TRUE(text.contains(u'\u2026'));
  EXPECT_FALSE(text.contains(QChar(QChar::ReplacementCharacter)));
  EXPECT_TRUE(QString::fromUtf8(text.toUtf8()) == text) << "no surrogate pair is cut in two";
  EXPECT_EQ(text.indexOf(u'\u2026') % 4, 0) << "no flag is cut in two";
}

TEST(AlertText, StackedMarksAreLimited) {
  std::string mountain = "a";
  for (int i = 0; i < 100'000; ++i) mountain += "\u0301";
  EXPECT_LE(shortenedInside(mountain, 20).size(), 20 * 8);
}

TEST(AlertText, LongWordsMayBreakAndOthersStay) {
  EXPECT_EQ(breakable("a few words that are short").toStdString(), "a few words that are short");
  const QString word(100, u'x');
  QString broken = breakable(word);
  EXPECT_EQ(broken.count(QChar(0x200B)), 3);
  EXPECT_EQ(broken.remove(QChar(0x200B)), word);
}

}  // namespace
}  // namespace tollvane
